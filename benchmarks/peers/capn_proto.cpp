// Cap'n Proto. The builder's one segment, in memory that is used again, is the message: nothing is copied out of it. It
// has no verifier: its reader tests each pointer that it follows, within limits for the message as a whole.
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

void Add(Sum& sum, capnp::Data::Reader data)
{
    sum.AddBytes(data.begin(), data.size());
}
std::uint64_t SumOf(capnp::Data::Reader data)
{
    Sum sum;
    Add(sum, data);
    return sum.Total();
}

void Add(Sum& sum, capn::Server::Reader message)
{
    Add(sum, message.getAddress());
    if (message.hasProxy()) {
        const auto proxy = message.getProxy();
        Add(sum, proxy.getAddress());
        sum.Add(proxy.getPort());
        const auto credentials = proxy.getCredentials();
        Add(sum, credentials.getUserName());
        Add(sum, credentials.getPassword());
    }
    if (message.hasSsl()) {
        const auto ssl = message.getSsl();
        sum.Add(ssl.getField1());
        Add(sum, ssl.getField2());
        Add(sum, ssl.getField3());
        Add(sum, ssl.getField4());
        Add(sum, ssl.getField5());
    }
    if (message.hasTimeouts()) {
        const auto timeouts = message.getTimeouts();
        sum.Add(timeouts.getField1());
        sum.Add(timeouts.getField2());
    }
}
std::uint64_t OneText(capn::Server::Reader message)
{
    return message.hasProxy() ? SumOf(message.getProxy().getCredentials().getPassword()) : 0;
}

void Add(Sum& sum, capnp::List<capn::Pair>::Reader pairs)
{
    for (const auto pair : pairs) {
        Add(sum, pair.getField1());
        Add(sum, pair.getField2());
    }
}
void Add(Sum& sum, capn::Key::Reader key)
{
    sum.Add(key.getField1());
    sum.Add(key.getField2());
    sum.Add(key.getField3());
    if (key.getHasField4()) sum.Add(key.getField4());
    if (key.getHasField5()) sum.Add(key.getField5());
    sum.Add(key.getField6());
    sum.Add(key.getField7());
    Add(sum, key.getField8());
}
void Add(Sum& sum, capn::App::Reader message)
{
    const auto product = message.getProduct();
    Add(sum, product.getField1());
    Add(sum, product.getField2());
    sum.Add(product.getField3());
    Add(sum, product.getField4());
    Add(sum, product.getField5());
    Add(sum, product.getItems());
    sum.Add(product.getHsdpField1());
    Add(sum, product.getStatuses());
    sum.Add(product.getField6());

    if (message.hasKeyInfo1()) Add(sum, message.getKeyInfo1());
    if (message.hasKeyInfo2()) Add(sum, message.getKeyInfo2());

    const auto device = message.getDevice();
    Add(sum, device.getField1());
    Add(sum, device.getField2());
    sum.Add(device.getField3());
    sum.Add(device.getField4());
    sum.Add(device.getField5());
    Add(sum, device.getField6());
    Add(sum, device.getField7());
    sum.Add(device.getField8());
    Add(sum, device.getField9());
    Add(sum, device.getField10());
    Add(sum, device.getField11());
    Add(sum, device.getField12());
    Add(sum, device.getField13());
    Add(sum, device.getField14());
    Add(sum, device.getField15());
}
std::uint64_t OneText(capn::App::Reader message)
{
    const auto items = message.getProduct().getItems();
    return items.size() <= entryAskedFor ? 0 : SumOf(items[entryAskedFor].getField2());
}

void Add(Sum& sum, capn::Chunk::Reader message)
{
    Add(sum, message.getFileName());
    sum.Add(message.getChunkOffset());
    sum.Add(message.getChunkSize());
    Add(sum, message.getData());
}
std::uint64_t OneText(capn::Chunk::Reader message)
{
    return SumOf(message.getFileName());
}

void Add(Sum& sum, capn::Parameters::Reader message)
{
    for (const auto parameter : message.getParams()) {
        Add(sum, parameter.getName());
        Add(sum, parameter.getValue());
    }
}
std::uint64_t OneText(capn::Parameters::Reader message)
{
    const auto params = message.getParams();
    return params.size() == 0 ? 0 : SumOf(params[params.size() - 1].getName());
}

using Stored = std::vector<std::uint8_t>;
using Words = kj::ArrayPtr<const capnp::word>;

Words WordsOf(Bytes message)
{
    return {reinterpret_cast<const capnp::word*>(message.data), message.size / sizeof(capnp::word)};
}

// A reader for each message: its default limits are those of one.
template <typename Message>
bool IsGood(const Stored& message)
{
    const Words words = WordsOf({message.data(), message.size()});
    capnp::SegmentArrayMessageReader reader(kj::arrayPtr(&words, 1));
    return reader.getRoot<Message>().totalSize().wordCount != 0;
}
template <typename Message>
std::uint64_t Touch(const Stored& message)
{
    const Words words = WordsOf({message.data(), message.size()});
    capnp::SegmentArrayMessageReader reader(kj::arrayPtr(&words, 1));
    Sum sum;
    Add(sum, reader.getRoot<Message>());
    return sum.Total();
}
template <typename Message>
std::uint64_t OneTextOf(const Stored& message)
{
    const Words words = WordsOf({message.data(), message.size()});
    capnp::SegmentArrayMessageReader reader(kj::arrayPtr(&words, 1));
    return OneText(reader.getRoot<Message>());
}

template <typename Record, typename Message>
class CapnProtoCodec final : public Codec<Record> {
public:
    ~CapnProtoCodec() noexcept override = default; // a builder's own destructor may throw

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
        const Words words = WordsOf(message);
        capnp::SegmentArrayMessageReader reader(kj::arrayPtr(&words, 1));
        return Take(reader.getRoot<Message>());
    }
    std::vector<Looks<Stored>> WaysToLook() const override
    {
        return {{"Cap'n Proto", IsGood<Message>, Touch<Message>, OneTextOf<Message>}};
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
