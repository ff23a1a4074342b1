// The records that are measured. Their strings' lengths are those of the messages that the connector sends all day.
#pragma once

#include <common/vyn_connector_common.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace bench {

namespace common = vyn_connector::common;
using namespace vyn_connector;
using Parameters = std::vector<common::RawVynParam>;

// `size` bytes that differ from those of another seed.
inline std::string Text(std::size_t size, std::size_t seed = 0)
{
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>('a' + (seed * 7 + i) % 26);
    return text;
}

inline std::vector<std::uint8_t> Blob(std::size_t size, std::size_t seed = 0)
{
    std::vector<std::uint8_t> blob(size);
    for (std::size_t i = 0; i < size; ++i)
        blob[i] = static_cast<std::uint8_t>(seed * 31 + i);
    return blob;
}

inline ServerConnectionParameters Server()
{
    return {Text(24), ProxySettings{Text(20, 1), 3128, {Text(10, 2), Text(18, 3)}},
            SslSettings{2, Text(30, 4), Text(12, 5), Text(0), Text(64, 6)}, VynRequestsTimeouts{30, 600}};
}

// 1,620 bytes of text.
inline AppInfo App()
{
    AppInfo app;
    ProductInfo& product = app.productInfo;
    product.field1 = Text(12);
    product.field2 = Text(20, 1);
    product.field3 = 81;
    product.field4 = Text(48, 2);
    product.field5 = Text(118, 3);
    for (std::size_t i = 0; i < 8; ++i)
        product.updCfgArray.items.push_back({Text(24 + i, i), Text(55 + i, i + 8)});
    product.hsdpInfo.field1 = 3;
    for (std::size_t i = 0; i < 3; ++i)
        product.hsdpInfo.statuses.push_back({Text(16 + i, i), Text(40 + i, i + 3)});
    product.field6 = 7;

    const wem::types::Timestamp from{1'600'000'000'000'000'000};
    const wem::types::Timestamp until{1'700'000'000'000'000'000};
    app.licenseInfo.keyInfo1 = LicenseKeyInfo{1, 2, 3, from, until, 4, 5, Text(36, 4)};
    app.licenseInfo.keyInfo2 = LicenseKeyInfo{6, 7, 8, from, until, 9, 10, Text(36, 5)};

    DeviceInfo& device = app.deviceInfo;
    device.field1 = Text(64, 6);
    device.field2 = Text(36, 7);
    device.field3 = 1;
    device.field4 = 2;
    device.field5 = 3;
    device.field6 = Text(17, 8);
    device.field7 = Text(15, 9);
    device.field8 = 4;
    device.field9 = Text(40, 10);
    device.field10 = Text(160, 11);
    device.field11 = Text(60, 12);
    device.field12 = Text(8, 13);
    device.field13 = Text(24, 14);
    for (std::size_t i = 0; i < device.field14.size(); ++i)
        device.field14[i] = static_cast<std::byte>(i);
    device.field15 = Text(64, 15);
    return app;
}

inline FileChunk Chunk()
{
    return {0, Text(40), 1U << 20U, 65536, Blob(65536)};
}

inline Parameters ParameterList(std::size_t count)
{
    Parameters parameters(count);
    for (std::size_t i = 0; i < count; ++i)
        parameters[i] = {Blob(48, i), Text(24, i)};
    return parameters;
}

inline std::unordered_set<std::string> EventTypes(std::size_t count)
{
    std::unordered_set<std::string> eventTypes;
    for (std::size_t i = 0; i < count; ++i)
        eventTypes.insert("connector.event." + std::to_string(i) + Text(i % 12));
    return eventTypes;
}

inline VynSubscriptions Subscriptions(std::size_t names)
{
    VynSubscriptions subscriptions;
    for (std::int32_t severity = 0; severity < 4; ++severity)
        subscriptions.emplace(static_cast<VynEventSeverity>(severity), EventTypes(names));
    return subscriptions;
}

inline VynUpdateIdentifiers Identifiers()
{
    VynUpdateIdentifiers identifiers(10);
    for (std::size_t i = 0; i < identifiers.size(); ++i)
        identifiers[i].fill(static_cast<std::byte>(i));
    return identifiers;
}

inline VynEvent Event()
{
    VynEvent event{
        Text(36), VynEventSeverity::Severity2, Text(18, 1), Text(24, 2), Text(8, 3), Text(30, 4), Text(60, 5), 8, 9,
        {}};
    for (std::size_t i = 0; i < event.stringArray.size(); ++i)
        event.stringArray[i] = Text(10 + 5 * i, i);
    return event;
}

// Records like another, with each text and blob of a length drawn between 0 and twice as long, never over its limit.
// The same ones in every run.
class RandomLengths {
public:
    template <typename Record>
    std::vector<Record> Like(const Record& model, std::size_t count)
    {
        std::vector<Record> records(count, model);
        for (Record& record : records)
            Change(common::kind::Nested{}, record);
        return records;
    }

private:
    template <typename Kind, typename Value>
    void Change(Kind, Value&)
    {
    }
    template <typename Kind, typename Sequence>
    void ChangeLength(Kind, Sequence& sequence)
    {
        const std::size_t longest = std::min<std::size_t>(2 * sequence.size(), Kind::limit);
        sequence.resize(std::uniform_int_distribution<std::size_t>(0, longest)(random), 'x');
    }
    template <std::size_t MaxBytes>
    void Change(common::kind::Text<MaxBytes> kind, std::string& value)
    {
        ChangeLength(kind, value);
    }
    void Change(common::kind::Blob kind, std::vector<std::uint8_t>& value) { ChangeLength(kind, value); }
    template <std::uint64_t MaxCount, typename Element>
    void Change(common::kind::List<MaxCount>, std::vector<Element>& values)
    {
        for (Element& value : values)
            Change(common::kind::Nested{}, value);
    }
    template <typename Kind, typename Element>
    void Change(common::kind::Optional<Kind>, std::optional<Element>& value)
    {
        if (value.has_value()) Change(Kind{}, *value);
    }
    template <typename Record>
    void Change(common::kind::Nested, Record& record)
    {
        common::ForEachRow<Record>([&](auto row) {
            using Row = decltype(row);
            if constexpr (common::isField<Row>) Change(typename Row::Kind{}, Row::InDomain::Of(record));
        });
    }

    std::mt19937_64 random{20};
};

} // namespace bench
