// Cap'n Proto. The builder's one segment, in memory that is used again, is the message: nothing is copied out of it.
#include "peers.h"

#include "records.capnp.h"

#include <capnp/message.h>

namespace bench {

namespace {

template <typename Sequence>
capnp::Data::Reader View(const Sequence& sequence)
{
    return {reinterpret_cast<const kj::byte*>(sequence.data()), sequence.size()};
}
std::string ToText(capnp::Data::Reader data)
{
    return {reinterpret_cast<const char*>(data.begin()), data.size()};
}
std::vector<std::uint8_t> ToBlob(capnp::Data::Reader data)
{
    return {data.begin(), data.end()};
}

void Fill(const ServerConnectionParameters& record, capn::Server::Builder message)
{
    message.setAddress(View(record.address));
    if (record.proxy.has_value()) {
        auto proxy = message.initProxy();
        proxy.setAddress(View(record.proxy->address));
        proxy.setPort(record.proxy->port);
        auto credentials = proxy.initCredentials();
        credentials.setUserName(View(record.proxy->credentials.userName));
        credentials.setPassword(View(record.proxy->credentials.password));
    }
    if (record.ssl.has_value()) {
        auto ssl = message.initSsl();
        ssl.setField1(record.ssl->field1);
        ssl.setField2(View(record.ssl->field2));
        ssl.setField3(View(record.ssl->field3));
        ssl.setField4(View(record.ssl->field4));
        ssl.setField5(View(record.ssl->field5));
    }
    if (record.timeouts.has_value()) {
        auto timeouts = message.initTimeouts();
        timeouts.setField1(record.timeouts->field1);
        timeouts.setField2(record.timeouts->field2);
    }
}
ServerConnectionParameters Take(capn::Server::Reader message)
{
    ServerConnectionParameters record;
    record.address = ToText(message.getAddress());
    if (message.hasProxy()) {
        const auto proxy = message.getProxy();
        const auto credentials = proxy.getCredentials();
        record.proxy = ProxySettings{ToText(proxy.getAddress()),
                                     proxy.getPort(),
                                     {ToText(credentials.getUserName()), ToText(credentials.getPassword())}};
    }
    if (message.hasSsl()) {
        const auto ssl = message.getSsl();
        record.ssl = SslSettings{ssl.getField1(), ToText(ssl.getField2()), ToText(ssl.getField3()),
                                 ToText(ssl.getField4()), ToText(ssl.getField5())};
    }
    if (message.hasTimeouts())
        record.timeouts = VynRequestsTimeouts{message.getTimeouts().getField1(), message.getTimeouts().getField2()};
    return record;
}

void Fill(const LicenseKeyInfo& key, capn::Key::Builder message)
{
    message.setField1(key.field1);
    message.setField2(key.field2);
    message.setField3(key.field3);
    message.setHasField4(key.field4.has_value());
    if (key.field4.has_value()) message.setField4(key.field4->count);
    message.setHasField5(key.field5.has_value());
    if (key.field5.has_value()) message.setField5(key.field5->count);
    message.setField6(key.field6);
    message.setField7(key.field7);
    if (key.field8.has_value()) message.setField8(View(*key.field8));
}
LicenseKeyInfo Take(capn::Key::Reader message)
{
    LicenseKeyInfo key;
    key.field1 = message.getField1();
    key.field2 = message.getField2();
    key.field3 = message.getField3();
    if (message.getHasField4()) key.field4.emplace(message.getField4());
    if (message.getHasField5()) key.field5.emplace(message.getField5());
    key.field6 = message.getField6();
    key.field7 = message.getField7();
    if (message.hasField8()) key.field8 = ToText(message.getField8());
    return key;
}

template <typename Element>
void FillPairs(const std::vector<Element>& elements, capnp::List<capn::Pair>::Builder pairs)
{
    unsigned i = 0;
    for (const Element& element : elements) {
        auto pair = pairs[i++];
        pair.setField1(View(element.field1));
        pair.setField2(View(element.field2));
    }
}
template <typename Element>
void TakePairs(capnp::List<capn::Pair>::Reader pairs, std::vector<Element>& elements)
{
    elements.reserve(pairs.size());
    for (const auto pair : pairs)
        elements.push_back({ToText(pair.getField1()), ToText(pair.getField2())});
}

void Fill(const AppInfo& record, capn::App::Builder message)
{
    const ProductInfo& product = record.productInfo;
    auto p = message.initProduct();
    p.setField1(View(product.field1));
    p.setField2(View(product.field2));
    p.setField3(product.field3);
    p.setField4(View(product.field4));
    p.setField5(View(product.field5));
    FillPairs(product.updCfgArray.items, p.initItems(static_cast<unsigned>(product.updCfgArray.items.size())));
    p.setHsdpField1(product.hsdpInfo.field1);
    FillPairs(product.hsdpInfo.statuses, p.initStatuses(static_cast<unsigned>(product.hsdpInfo.statuses.size())));
    p.setField6(product.field6);

    if (record.licenseInfo.keyInfo1.has_value()) Fill(*record.licenseInfo.keyInfo1, message.initKeyInfo1());
    if (record.licenseInfo.keyInfo2.has_value()) Fill(*record.licenseInfo.keyInfo2, message.initKeyInfo2());

    const DeviceInfo& device = record.deviceInfo;
    auto d = message.initDevice();
    d.setField1(View(device.field1));
    d.setField2(View(device.field2));
    d.setField3(device.field3);
    d.setField4(device.field4);
    d.setField5(device.field5);
    d.setField6(View(device.field6));
    d.setField7(View(device.field7));
    d.setField8(device.field8);
    d.setField9(View(device.field9));
    d.setField10(View(device.field10));
    d.setField11(View(device.field11));
    d.setField12(View(device.field12));
    d.setField13(View(device.field13));
    d.setField14(View(device.field14));
    d.setField15(View(device.field15));
}
AppInfo Take(capn::App::Reader message)
{
    AppInfo record;
    ProductInfo& product = record.productInfo;
    const auto p = message.getProduct();
    product.field1 = ToText(p.getField1());
    product.field2 = ToText(p.getField2());
    product.field3 = p.getField3();
    product.field4 = ToText(p.getField4());
    product.field5 = ToText(p.getField5());
    TakePairs(p.getItems(), product.updCfgArray.items);
    product.hsdpInfo.field1 = p.getHsdpField1();
    TakePairs(p.getStatuses(), product.hsdpInfo.statuses);
    product.field6 = p.getField6();

    if (message.hasKeyInfo1()) record.licenseInfo.keyInfo1 = Take(message.getKeyInfo1());
    if (message.hasKeyInfo2()) record.licenseInfo.keyInfo2 = Take(message.getKeyInfo2());

    DeviceInfo& device = record.deviceInfo;
    const auto d = message.getDevice();
    device.field1 = ToText(d.getField1());
    device.field2 = ToText(d.getField2());
    device.field3 = d.getField3();
    device.field4 = d.getField4();
    device.field5 = d.getField5();
    device.field6 = ToText(d.getField6());
    device.field7 = ToText(d.getField7());
    device.field8 = d.getField8();
    device.field9 = ToText(d.getField9());
    device.field10 = ToText(d.getField10());
    device.field11 = ToText(d.getField11());
    device.field12 = ToText(d.getField12());
    device.field13 = ToText(d.getField13());
    const auto field14 = d.getField14();
    if (field14.size() != device.field14.size()) throw std::runtime_error("field14 has another size");
    std::memcpy(device.field14.data(), field14.begin(), device.field14.size());
    device.field15 = ToText(d.getField15());
    return record;
}

void Fill(const FileChunk& record, capn::Chunk::Builder message)
{
    message.setFileName(View(record.fileName));
    message.setChunkOffset(record.chunkOffset);
    message.setChunkSize(record.chunkSize);
    message.setData(View(record.data));
}
FileChunk Take(capn::Chunk::Reader message)
{
    return {0, ToText(message.getFileName()), message.getChunkOffset(), message.getChunkSize(),
            ToBlob(message.getData())};
}

void Fill(const Parameters& record, capn::Parameters::Builder message)
{
    auto params = message.initParams(static_cast<unsigned>(record.size()));
    unsigned i = 0;
    for (const common::RawVynParam& parameter : record) {
        auto to = params[i++];
        to.setName(View(parameter.name));
        to.setValue(View(parameter.value));
    }
}
Parameters Take(capn::Parameters::Reader message)
{
    Parameters record;
    record.reserve(message.getParams().size());
    for (const auto from : message.getParams())
        record.push_back({ToBlob(from.getValue()), ToText(from.getName())});
    return record;
}

template <typename Record, typename Message>
class CapnProtoCodec final : public Codec<Record> {
public:
    // A builder takes its memory zeroed, and leaves what it has used zeroed; so the message of the call before goes
    // only now.
    Bytes Encode(const Record& record) override
    {
        builder.emplace(kj::arrayPtr(segment.data(), segment.size()));
        Fill(record, builder->template initRoot<Message>());
        const auto segments = builder->getSegmentsForOutput();
        if (segments.size() != 1) throw std::length_error("the message is larger than the segment");
        return {reinterpret_cast<const std::uint8_t*>(segments[0].begin()), segments[0].size() * sizeof(capnp::word)};
    }
    Record Decode(Bytes message) override
    {
        const kj::ArrayPtr<const capnp::word> words(reinterpret_cast<const capnp::word*>(message.data),
                                                    message.size / sizeof(capnp::word));
        capnp::SegmentArrayMessageReader reader(kj::arrayPtr(&words, 1));
        return Take(reader.getRoot<Message>());
    }

private:
    std::vector<capnp::word> segment = std::vector<capnp::word>(std::size_t{1} << 17U);
    std::optional<capnp::MallocMessageBuilder> builder;
};

} // namespace

Peer CapnProto()
{
    return {"Cap'n Proto",
            {std::make_shared<CapnProtoCodec<ServerConnectionParameters, capn::Server>>(),
             std::make_shared<CapnProtoCodec<AppInfo, capn::App>>(),
             std::make_shared<CapnProtoCodec<FileChunk, capn::Chunk>>(),
             std::make_shared<CapnProtoCodec<Parameters, capn::Parameters>>()}};
}

} // namespace bench
