// Protocol Buffers. A message is used again, so that its strings keep their room while writing; on reading, the strings
// are moved out of it.
#include "peers.h"

#include "records.pb.h"

namespace bench {

namespace {

// A text, or bytes, of the record.
template <typename Sequence>
std::string_view View(const Sequence& sequence)
{
    return {reinterpret_cast<const char*>(sequence.data()), sequence.size()};
}
void Set(std::string* text, std::string_view value)
{
    text->assign(value);
}

void Fill(const ServerConnectionParameters& record, proto::Server& message)
{
    Set(message.mutable_address(), record.address);
    if (record.proxy.has_value()) {
        proto::Proxy& proxy = *message.mutable_proxy();
        Set(proxy.mutable_address(), record.proxy->address);
        proxy.set_port(record.proxy->port);
        Set(proxy.mutable_credentials()->mutable_user_name(), record.proxy->credentials.userName);
        Set(proxy.mutable_credentials()->mutable_password(), record.proxy->credentials.password);
    }
    if (record.ssl.has_value()) {
        proto::Ssl& ssl = *message.mutable_ssl();
        ssl.set_field1(record.ssl->field1);
        Set(ssl.mutable_field2(), record.ssl->field2);
        Set(ssl.mutable_field3(), record.ssl->field3);
        Set(ssl.mutable_field4(), record.ssl->field4);
        Set(ssl.mutable_field5(), record.ssl->field5);
    }
    if (record.timeouts.has_value()) {
        message.mutable_timeouts()->set_field1(record.timeouts->field1);
        message.mutable_timeouts()->set_field2(record.timeouts->field2);
    }
}
ServerConnectionParameters Take(proto::Server& message)
{
    ServerConnectionParameters record;
    record.address = std::move(*message.mutable_address());
    if (message.has_proxy()) {
        proto::Proxy& proxy = *message.mutable_proxy();
        record.proxy = ProxySettings{std::move(*proxy.mutable_address()),
                                     static_cast<std::uint16_t>(proxy.port()),
                                     {std::move(*proxy.mutable_credentials()->mutable_user_name()),
                                      std::move(*proxy.mutable_credentials()->mutable_password())}};
    }
    if (message.has_ssl()) {
        proto::Ssl& ssl = *message.mutable_ssl();
        record.ssl = SslSettings{static_cast<std::uint16_t>(ssl.field1()), std::move(*ssl.mutable_field2()),
                                 std::move(*ssl.mutable_field3()), std::move(*ssl.mutable_field4()),
                                 std::move(*ssl.mutable_field5())};
    }
    if (message.has_timeouts())
        record.timeouts = VynRequestsTimeouts{message.timeouts().field1(), message.timeouts().field2()};
    return record;
}

void Fill(const std::optional<LicenseKeyInfo>& key, proto::License& license,
          proto::Key* (proto::License::*mutableKey)())
{
    if (!key.has_value()) return;
    proto::Key& message = *(license.*mutableKey)();
    message.set_field1(key->field1);
    message.set_field2(key->field2);
    message.set_field3(key->field3);
    if (key->field4.has_value()) message.set_field4(static_cast<std::uint64_t>(key->field4->count));
    if (key->field5.has_value()) message.set_field5(static_cast<std::uint64_t>(key->field5->count));
    message.set_field6(key->field6);
    message.set_field7(key->field7);
    if (key->field8.has_value()) Set(message.mutable_field8(), *key->field8);
}
LicenseKeyInfo Take(proto::Key& message)
{
    LicenseKeyInfo key;
    key.field1 = message.field1();
    key.field2 = message.field2();
    key.field3 = message.field3();
    if (message.has_field4()) key.field4.emplace(static_cast<std::int64_t>(message.field4()));
    if (message.has_field5()) key.field5.emplace(static_cast<std::int64_t>(message.field5()));
    key.field6 = message.field6();
    key.field7 = message.field7();
    if (message.has_field8()) key.field8 = std::move(*message.mutable_field8());
    return key;
}

void Fill(const AppInfo& record, proto::App& message)
{
    const ProductInfo& product = record.productInfo;
    proto::Product& p = *message.mutable_product();
    Set(p.mutable_field1(), product.field1);
    Set(p.mutable_field2(), product.field2);
    p.set_field3(product.field3);
    Set(p.mutable_field4(), product.field4);
    Set(p.mutable_field5(), product.field5);
    const auto fillPair = [](const auto& from, proto::Pair& to) {
        Set(to.mutable_field1(), from.field1);
        Set(to.mutable_field2(), from.field2);
    };
    for (const ProductUpdCfg& item : product.updCfgArray.items)
        fillPair(item, *p.add_items());
    p.set_hsdp_field1(product.hsdpInfo.field1);
    for (const ProductHsdpStatus& status : product.hsdpInfo.statuses)
        fillPair(status, *p.add_statuses());
    p.set_field6(product.field6);

    Fill(record.licenseInfo.keyInfo1, *message.mutable_license(), &proto::License::mutable_key_info1);
    Fill(record.licenseInfo.keyInfo2, *message.mutable_license(), &proto::License::mutable_key_info2);

    const DeviceInfo& device = record.deviceInfo;
    proto::Device& d = *message.mutable_device();
    Set(d.mutable_field1(), device.field1);
    Set(d.mutable_field2(), device.field2);
    d.set_field3(device.field3);
    d.set_field4(device.field4);
    d.set_field5(device.field5);
    Set(d.mutable_field6(), device.field6);
    Set(d.mutable_field7(), device.field7);
    d.set_field8(device.field8);
    Set(d.mutable_field9(), device.field9);
    Set(d.mutable_field10(), device.field10);
    Set(d.mutable_field11(), device.field11);
    Set(d.mutable_field12(), device.field12);
    Set(d.mutable_field13(), device.field13);
    Set(d.mutable_field14(), View(device.field14));
    Set(d.mutable_field15(), device.field15);
}
AppInfo Take(proto::App& message)
{
    AppInfo record;
    ProductInfo& product = record.productInfo;
    proto::Product& p = *message.mutable_product();
    product.field1 = std::move(*p.mutable_field1());
    product.field2 = std::move(*p.mutable_field2());
    product.field3 = p.field3();
    product.field4 = std::move(*p.mutable_field4());
    product.field5 = std::move(*p.mutable_field5());
    product.updCfgArray.items.reserve(static_cast<std::size_t>(p.items_size()));
    for (proto::Pair& item : *p.mutable_items())
        product.updCfgArray.items.push_back({std::move(*item.mutable_field1()), std::move(*item.mutable_field2())});
    product.hsdpInfo.field1 = p.hsdp_field1();
    product.hsdpInfo.statuses.reserve(static_cast<std::size_t>(p.statuses_size()));
    for (proto::Pair& item : *p.mutable_statuses())
        product.hsdpInfo.statuses.push_back({std::move(*item.mutable_field1()), std::move(*item.mutable_field2())});
    product.field6 = p.field6();

    if (message.license().has_key_info1())
        record.licenseInfo.keyInfo1 = Take(*message.mutable_license()->mutable_key_info1());
    if (message.license().has_key_info2())
        record.licenseInfo.keyInfo2 = Take(*message.mutable_license()->mutable_key_info2());

    DeviceInfo& device = record.deviceInfo;
    proto::Device& d = *message.mutable_device();
    device.field1 = std::move(*d.mutable_field1());
    device.field2 = std::move(*d.mutable_field2());
    device.field3 = d.field3();
    device.field4 = d.field4();
    device.field5 = d.field5();
    device.field6 = std::move(*d.mutable_field6());
    device.field7 = std::move(*d.mutable_field7());
    device.field8 = d.field8();
    device.field9 = std::move(*d.mutable_field9());
    device.field10 = std::move(*d.mutable_field10());
    device.field11 = std::move(*d.mutable_field11());
    device.field12 = std::move(*d.mutable_field12());
    device.field13 = std::move(*d.mutable_field13());
    if (d.field14().size() != device.field14.size()) throw std::runtime_error("field14 has another size");
    std::memcpy(device.field14.data(), d.field14().data(), device.field14.size());
    device.field15 = std::move(*d.mutable_field15());
    return record;
}

void Fill(const FileChunk& record, proto::Chunk& message)
{
    Set(message.mutable_file_name(), record.fileName);
    message.set_chunk_offset(record.chunkOffset);
    message.set_chunk_size(record.chunkSize);
    Set(message.mutable_data(), View(record.data));
}
FileChunk Take(proto::Chunk& message)
{
    return {0, std::move(*message.mutable_file_name()), message.chunk_offset(), message.chunk_size(),
            std::vector<std::uint8_t>(message.data().begin(), message.data().end())};
}

void Fill(const Parameters& record, proto::Parameters& message)
{
    message.mutable_params()->Reserve(static_cast<int>(record.size()));
    for (const common::RawVynParam& parameter : record) {
        proto::Parameter& to = *message.add_params();
        Set(to.mutable_name(), parameter.name);
        Set(to.mutable_value(), View(parameter.value));
    }
}
Parameters Take(proto::Parameters& message)
{
    Parameters record;
    record.reserve(static_cast<std::size_t>(message.params_size()));
    for (proto::Parameter& from : *message.mutable_params())
        record.push_back(
            {std::vector<std::uint8_t>(from.value().begin(), from.value().end()), std::move(*from.mutable_name())});
    return record;
}

template <typename Record, typename Message>
class ProtocolBuffersCodec final : public Codec<Record> {
public:
    Bytes Encode(const Record& record) override
    {
        message.Clear();
        Fill(record, message);
        const std::size_t size = message.ByteSizeLong();
        if (buffer.size() < size) buffer.resize(size);
        message.SerializeWithCachedSizesToArray(buffer.data());
        return {buffer.data(), size};
    }
    Record Decode(Bytes bytes) override
    {
        if (!message.ParseFromArray(bytes.data, static_cast<int>(bytes.size))) throw std::runtime_error("no message");
        return Take(message);
    }

private:
    Message message;
    std::vector<std::uint8_t> buffer;
};

} // namespace

Peer ProtocolBuffers()
{
    return {"Protocol Buffers",
            {std::make_shared<ProtocolBuffersCodec<ServerConnectionParameters, proto::Server>>(),
             std::make_shared<ProtocolBuffersCodec<AppInfo, proto::App>>(),
             std::make_shared<ProtocolBuffersCodec<FileChunk, proto::Chunk>>(),
             std::make_shared<ProtocolBuffersCodec<Parameters, proto::Parameters>>()}};
}

} // namespace bench
