// FlatBuffers. The builder and its buffer are used again; on reading, a message is verified before it is looked at, as
// it has to be where it comes from somebody else. Looking at it where it stands is measured both ways.
#include "peers.h"

#include "records_generated.h"

namespace bench {

namespace {

using flatbuffers::Offset;
using Builder = flatbuffers::FlatBufferBuilder;
using FlatText = Offset<flatbuffers::String>;

std::string ToText(const flatbuffers::String* text)
{
    return text == nullptr ? std::string() : std::string(text->data(), text->size());
}
std::vector<std::uint8_t> ToBlob(const flatbuffers::Vector<std::uint8_t>* blob)
{
    return blob == nullptr ? std::vector<std::uint8_t>() : std::vector<std::uint8_t>(blob->begin(), blob->end());
}

Offset<flat::Server> Build(Builder& builder, const ServerConnectionParameters& record)
{
    Offset<flat::Proxy> proxy;
    if (record.proxy.has_value()) {
        const FlatText address = builder.CreateString(record.proxy->address);
        const FlatText userName = builder.CreateString(record.proxy->credentials.userName);
        const FlatText password = builder.CreateString(record.proxy->credentials.password);
        const auto credentials = flat::CreateCredentials(builder, userName, password);
        proxy = flat::CreateProxy(builder, address, record.proxy->port, credentials);
    }
    Offset<flat::Ssl> ssl;
    if (record.ssl.has_value()) {
        const FlatText field2 = builder.CreateString(record.ssl->field2);
        const FlatText field3 = builder.CreateString(record.ssl->field3);
        const FlatText field4 = builder.CreateString(record.ssl->field4);
        const FlatText field5 = builder.CreateString(record.ssl->field5);
        ssl = flat::CreateSsl(builder, record.ssl->field1, field2, field3, field4, field5);
    }
    std::optional<flat::Timeouts> timeouts;
    if (record.timeouts.has_value()) timeouts.emplace(record.timeouts->field1, record.timeouts->field2);
    const FlatText address = builder.CreateString(record.address);
    return flat::CreateServer(builder, address, proxy, ssl, timeouts.has_value() ? &*timeouts : nullptr);
}
ServerConnectionParameters Take(const flat::Server& message)
{
    ServerConnectionParameters record;
    record.address = ToText(message.address());
    if (const flat::Proxy* const proxy = message.proxy()) {
        ProxySettings& to = record.proxy.emplace();
        to.address = ToText(proxy->address());
        to.port = proxy->port();
        if (const flat::Credentials* const credentials = proxy->credentials()) {
            to.credentials.userName = ToText(credentials->user_name());
            to.credentials.password = ToText(credentials->password());
        }
    }
    if (const flat::Ssl* const ssl = message.ssl()) {
        SslSettings& to = record.ssl.emplace();
        to.field1 = ssl->field1();
        to.field2 = ToText(ssl->field2());
        to.field3 = ToText(ssl->field3());
        to.field4 = ToText(ssl->field4());
        to.field5 = ToText(ssl->field5());
    }
    if (const flat::Timeouts* const timeouts = message.timeouts())
        record.timeouts = VynRequestsTimeouts{timeouts->field1(), timeouts->field2()};
    return record;
}

template <typename Element>
Offset<flatbuffers::Vector<Offset<flat::Pair>>> BuildPairs(Builder& builder, const std::vector<Element>& elements)
{
    Offset<flat::Pair> pairs[32];
    std::size_t count = 0;
    for (const Element& element : elements) {
        const FlatText field1 = builder.CreateString(element.field1);
        const FlatText field2 = builder.CreateString(element.field2);
        pairs[count++] = flat::CreatePair(builder, field1, field2);
    }
    return builder.CreateVector(pairs, count);
}
template <typename Element>
void TakePairs(const flatbuffers::Vector<Offset<flat::Pair>>* pairs, std::vector<Element>& elements)
{
    if (pairs == nullptr) return;
    elements.reserve(pairs->size());
    for (const flat::Pair* const pair : *pairs)
        elements.push_back({ToText(pair->field1()), ToText(pair->field2())});
}

Offset<flat::Key> Build(Builder& builder, const std::optional<LicenseKeyInfo>& key)
{
    if (!key.has_value()) return {};
    const FlatText field8 = key->field8.has_value() ? builder.CreateString(*key->field8) : FlatText();
    const auto count = [](const std::optional<wem::types::Timestamp>& time) -> flatbuffers::Optional<std::int64_t> {
        if (time.has_value()) return time->count;
        return flatbuffers::nullopt;
    };
    return flat::CreateKey(builder, key->field1, key->field2, key->field3, count(key->field4), count(key->field5),
                           key->field6, key->field7, field8);
}
std::optional<LicenseKeyInfo> Take(const flat::Key* message)
{
    if (message == nullptr) return std::nullopt;
    std::optional<LicenseKeyInfo> result(std::in_place);
    LicenseKeyInfo& key = *result;
    key.field1 = message->field1();
    key.field2 = message->field2();
    key.field3 = message->field3();
    if (const auto time = message->field4()) key.field4.emplace(*time);
    if (const auto time = message->field5()) key.field5.emplace(*time);
    key.field6 = message->field6();
    key.field7 = message->field7();
    if (message->field8() != nullptr) key.field8 = ToText(message->field8());
    return result;
}

Offset<flat::App> Build(Builder& builder, const AppInfo& record)
{
    const ProductInfo& product = record.productInfo;
    const FlatText product1 = builder.CreateString(product.field1);
    const FlatText product2 = builder.CreateString(product.field2);
    const FlatText product4 = builder.CreateString(product.field4);
    const FlatText product5 = builder.CreateString(product.field5);
    const auto items = BuildPairs(builder, product.updCfgArray.items);
    const auto statuses = BuildPairs(builder, product.hsdpInfo.statuses);
    const auto flatProduct = flat::CreateProduct(builder, product1, product2, product.field3, product4, product5, items,
                                                 product.hsdpInfo.field1, statuses, product.field6);

    const auto key1 = Build(builder, record.licenseInfo.keyInfo1);
    const auto key2 = Build(builder, record.licenseInfo.keyInfo2);

    const DeviceInfo& device = record.deviceInfo;
    const FlatText device1 = builder.CreateString(device.field1);
    const FlatText device2 = builder.CreateString(device.field2);
    const FlatText device6 = builder.CreateString(device.field6);
    const FlatText device7 = builder.CreateString(device.field7);
    const FlatText device9 = builder.CreateString(device.field9);
    const FlatText device10 = builder.CreateString(device.field10);
    const FlatText device11 = builder.CreateString(device.field11);
    const FlatText device12 = builder.CreateString(device.field12);
    const FlatText device13 = builder.CreateString(device.field13);
    const FlatText device15 = builder.CreateString(device.field15);
    flat::Identifier identifier;
    static_assert(sizeof(identifier) == sizeof(device.field14));
    std::memcpy(&identifier, device.field14.data(), sizeof(identifier));
    const auto flatDevice =
        flat::CreateDevice(builder, device1, device2, device.field3, device.field4, device.field5, device6, device7,
                           device.field8, device9, device10, device11, device12, device13, &identifier, device15);
    return flat::CreateApp(builder, flatProduct, key1, key2, flatDevice);
}
AppInfo Take(const flat::App& message)
{
    AppInfo record;
    if (const flat::Product* const from = message.product()) {
        ProductInfo& product = record.productInfo;
        product.field1 = ToText(from->field1());
        product.field2 = ToText(from->field2());
        product.field3 = from->field3();
        product.field4 = ToText(from->field4());
        product.field5 = ToText(from->field5());
        TakePairs(from->items(), product.updCfgArray.items);
        product.hsdpInfo.field1 = from->hsdp_field1();
        TakePairs(from->statuses(), product.hsdpInfo.statuses);
        product.field6 = from->field6();
    }
    record.licenseInfo.keyInfo1 = Take(message.key_info1());
    record.licenseInfo.keyInfo2 = Take(message.key_info2());
    if (const flat::Device* const from = message.device()) {
        DeviceInfo& device = record.deviceInfo;
        device.field1 = ToText(from->field1());
        device.field2 = ToText(from->field2());
        device.field3 = from->field3();
        device.field4 = from->field4();
        device.field5 = from->field5();
        device.field6 = ToText(from->field6());
        device.field7 = ToText(from->field7());
        device.field8 = from->field8();
        device.field9 = ToText(from->field9());
        device.field10 = ToText(from->field10());
        device.field11 = ToText(from->field11());
        device.field12 = ToText(from->field12());
        device.field13 = ToText(from->field13());
        if (from->field14() != nullptr)
            std::memcpy(device.field14.data(), from->field14()->bytes()->Data(), device.field14.size());
        device.field15 = ToText(from->field15());
    }
    return record;
}

Offset<flat::Chunk> Build(Builder& builder, const FileChunk& record)
{
    const auto data = builder.CreateVector(record.data);
    const FlatText fileName = builder.CreateString(record.fileName);
    return flat::CreateChunk(builder, fileName, record.chunkOffset, record.chunkSize, data);
}
FileChunk Take(const flat::Chunk& message)
{
    return {0, ToText(message.file_name()), message.chunk_offset(), message.chunk_size(), ToBlob(message.data())};
}

Offset<flat::Parameters> Build(Builder& builder, const Parameters& record)
{
    static thread_local std::vector<Offset<flat::Parameter>> offsets;
    offsets.clear();
    for (const common::RawVynParam& parameter : record) {
        const FlatText name = builder.CreateString(parameter.name);
        const auto value = builder.CreateVector(parameter.value);
        offsets.push_back(flat::CreateParameter(builder, name, value));
    }
    return flat::CreateParameters(builder, builder.CreateVector(offsets));
}
Parameters Take(const flat::Parameters& message)
{
    Parameters record;
    if (message.params() == nullptr) return record;
    record.reserve(message.params()->size());
    for (const flat::Parameter* const parameter : *message.params())
        record.push_back({ToBlob(parameter->value()), ToText(parameter->name())});
    return record;
}

void Add(Sum& sum, const flatbuffers::String* text)
{
    if (text != nullptr) sum.AddBytes(text->data(), text->size());
}
void Add(Sum& sum, const flatbuffers::Vector<std::uint8_t>* blob)
{
    if (blob != nullptr) sum.AddBytes(blob->data(), blob->size());
}
std::uint64_t SumOf(const flatbuffers::String* text)
{
    Sum sum;
    Add(sum, text);
    return sum.Total();
}

void Add(Sum& sum, const flat::Server& message)
{
    Add(sum, message.address());
    if (const flat::Proxy* const proxy = message.proxy()) {
        Add(sum, proxy->address());
        sum.Add(proxy->port());
        if (const flat::Credentials* const credentials = proxy->credentials()) {
            Add(sum, credentials->user_name());
            Add(sum, credentials->password());
        }
    }
    if (const flat::Ssl* const ssl = message.ssl()) {
        sum.Add(ssl->field1());
        Add(sum, ssl->field2());
        Add(sum, ssl->field3());
        Add(sum, ssl->field4());
        Add(sum, ssl->field5());
    }
    if (const flat::Timeouts* const timeouts = message.timeouts()) {
        sum.Add(timeouts->field1());
        sum.Add(timeouts->field2());
    }
}
std::uint64_t OneText(const flat::Server& message)
{
    const flat::Proxy* const proxy = message.proxy();
    const flat::Credentials* const credentials = proxy == nullptr ? nullptr : proxy->credentials();
    return credentials == nullptr ? 0 : SumOf(credentials->password());
}

void Add(Sum& sum, const flatbuffers::Vector<Offset<flat::Pair>>* pairs)
{
    if (pairs == nullptr) return;
    for (const flat::Pair* const pair : *pairs) {
        Add(sum, pair->field1());
        Add(sum, pair->field2());
    }
}
void Add(Sum& sum, const flat::Key* key)
{
    if (key == nullptr) return;
    sum.Add(key->field1());
    sum.Add(key->field2());
    sum.Add(key->field3());
    if (const auto time = key->field4()) sum.Add(*time);
    if (const auto time = key->field5()) sum.Add(*time);
    sum.Add(key->field6());
    sum.Add(key->field7());
    Add(sum, key->field8());
}
void Add(Sum& sum, const flat::App& message)
{
    if (const flat::Product* const product = message.product()) {
        Add(sum, product->field1());
        Add(sum, product->field2());
        sum.Add(product->field3());
        Add(sum, product->field4());
        Add(sum, product->field5());
        Add(sum, product->items());
        sum.Add(product->hsdp_field1());
        Add(sum, product->statuses());
        sum.Add(product->field6());
    }
    Add(sum, message.key_info1());
    Add(sum, message.key_info2());
    if (const flat::Device* const device = message.device()) {
        Add(sum, device->field1());
        Add(sum, device->field2());
        sum.Add(device->field3());
        sum.Add(device->field4());
        sum.Add(device->field5());
        Add(sum, device->field6());
        Add(sum, device->field7());
        sum.Add(device->field8());
        Add(sum, device->field9());
        Add(sum, device->field10());
        Add(sum, device->field11());
        Add(sum, device->field12());
        Add(sum, device->field13());
        if (device->field14() != nullptr)
            sum.AddBytes(device->field14()->bytes()->Data(), device->field14()->bytes()->size());
        Add(sum, device->field15());
    }
}
std::uint64_t OneText(const flat::App& message)
{
    const flat::Product* const product = message.product();
    const auto* const items = product == nullptr ? nullptr : product->items();
    return items == nullptr || items->size() <= entryAskedFor ? 0 : SumOf(items->Get(entryAskedFor)->field2());
}

void Add(Sum& sum, const flat::Chunk& message)
{
    Add(sum, message.file_name());
    sum.Add(message.chunk_offset());
    sum.Add(message.chunk_size());
    Add(sum, message.data());
}
std::uint64_t OneText(const flat::Chunk& message)
{
    return SumOf(message.file_name());
}

void Add(Sum& sum, const flat::Parameters& message)
{
    if (message.params() == nullptr) return;
    for (const flat::Parameter* const parameter : *message.params()) {
        Add(sum, parameter->name());
        Add(sum, parameter->value());
    }
}
std::uint64_t OneText(const flat::Parameters& message)
{
    const auto* const params = message.params();
    return params == nullptr || params->size() == 0 ? 0 : SumOf(params->Get(params->size() - 1)->name());
}

using Stored = std::vector<std::uint8_t>;

template <typename Message>
bool IsGood(const Stored& message)
{
    flatbuffers::Verifier verifier(message.data(), message.size());
    return verifier.VerifyBuffer<Message>();
}
template <typename Message>
std::uint64_t Touch(const Stored& message)
{
    Sum sum;
    Add(sum, *flatbuffers::GetRoot<Message>(message.data()));
    return sum.Total();
}
template <typename Message>
std::uint64_t OneTextOf(const Stored& message)
{
    return OneText(*flatbuffers::GetRoot<Message>(message.data()));
}
template <typename Message, std::uint64_t (*Look)(const Stored&)>
std::uint64_t IfGood(const Stored& message)
{
    return IsGood<Message>(message) ? Look(message) : 0;
}

template <typename Record, typename Message>
class FlatBuffersCodec final : public Codec<Record> {
public:
    Bytes Encode(const Record& record) override
    {
        builder.Clear();
        builder.Finish(Build(builder, record));
        return {builder.GetBufferPointer(), builder.GetSize()};
    }
    Record Decode(Bytes message) override
    {
        flatbuffers::Verifier verifier(message.data, message.size);
        if (!verifier.VerifyBuffer<Message>()) throw std::runtime_error("no message");
        return Take(*flatbuffers::GetRoot<Message>(message.data));
    }
    std::vector<Looks<Stored>> WaysToLook() const override
    {
        return {{"FlatBuffers, verified", IsGood<Message>, IfGood<Message, Touch<Message>>,
                 IfGood<Message, OneTextOf<Message>>},
                {"FlatBuffers, trusted", nullptr, Touch<Message>, OneTextOf<Message>}};
    }

private:
    Builder builder;
};

} // namespace

Peer FlatBuffers()
{
    return {"FlatBuffers",
            {std::make_shared<FlatBuffersCodec<ServerConnectionParameters, flat::Server>>(),
             std::make_shared<FlatBuffersCodec<AppInfo, flat::App>>(),
             std::make_shared<FlatBuffersCodec<FileChunk, flat::Chunk>>(),
             std::make_shared<FlatBuffersCodec<Parameters, flat::Parameters>>()}};
}

} // namespace bench
