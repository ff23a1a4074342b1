// The limits of a record's fields, as its table gives them: which strings and lists there are, and the most that a
// writer takes of each.
#pragma once

#include "host/printable.h"

#include <common/vyn_connector_common.h>

#include <fmt/format.h>

#include <stdexcept>
#include <string>
#include <type_traits>

namespace exchange {

// Calls visit(path, value, limit) for each string, blob, list and set in the record that has a limit. A path is as
// "serverParameters.proxy.address" or "items[3].field1"; the value is constant where the record is, or where it lies in
// a set or map.
template <typename Record, typename Visit>
void ForEachLimited(Record& record, const std::string& path, Visit& visit);

namespace limits {

template <typename Kind, typename = void>
inline constexpr bool hasLimit = false;
template <typename Kind>
inline constexpr bool hasLimit<Kind, std::void_t<decltype(Kind::limit)>> = true;

template <typename Value, typename Visit>
void InParts(Value& value, const std::string& path, Visit& visit)
{
    using Plain = std::remove_const_t<Value>;
    if constexpr (std::is_same_v<Plain, vyn_connector::VynSubscriptions>) {
        for (const auto& [severity, eventTypes] : value) {
            const vyn_connector::VynSubscription entry(severity, eventTypes);
            ForEachLimited(entry, fmt::format("{}[{}]", path, static_cast<int>(severity)), visit);
        }
    } else if constexpr (!std::is_same_v<Plain, std::string> && !std::is_same_v<Plain, std::vector<std::uint8_t>>) {
        for (std::size_t i = 0; i < value.size(); ++i)
            ForEachLimited(value[i], fmt::format("{}[{}]", path, i), visit);
    }
}

template <typename Kind, typename Value, typename Visit>
void InField(Kind, Value& value, const std::string& path, Visit& visit)
{
    if constexpr (hasLimit<Kind>) {
        visit(path, value, static_cast<std::size_t>(Kind::limit));
        InParts(value, path, visit);
    } else if constexpr (std::is_base_of_v<vyn_connector::common::kind::Nested, Kind>) {
        ForEachLimited(value, path, visit);
    }
}
template <typename Kind, typename Value, typename Visit>
void InField(vyn_connector::common::kind::Optional<Kind>, Value& value, const std::string& path, Visit& visit)
{
    if (value) InField(Kind{}, *value, path, visit);
}
template <std::uint64_t MaxCount, typename Kind, typename Value, typename Visit>
void InField(vyn_connector::common::kind::Set<MaxCount, Kind>, Value& values, const std::string& path, Visit& visit)
{
    visit(path, values, static_cast<std::size_t>(MaxCount));
    for (const std::string& value : values)
        visit(path + "[]", value, static_cast<std::size_t>(Kind::limit));
}
template <std::size_t Count, std::size_t MaxBytes, typename Value, typename Visit>
void InField(vyn_connector::common::kind::EventTexts<Count, MaxBytes>, Value& values, const std::string& path,
             Visit& visit)
{
    for (std::size_t i = 0; i < values.size(); ++i)
        visit(fmt::format("{}[{}]", path, i), values[i], MaxBytes);
}

} // namespace limits

template <typename Record, typename Visit>
void ForEachLimited(Record& record, const std::string& path, Visit& visit)
{
    vyn_connector::common::ForEachRow<std::remove_const_t<Record>>([&](auto row) {
        using Row = decltype(row);
        if constexpr (vyn_connector::common::isField<Row>)
            limits::InField(typename Row::Kind{}, Row::InDomain::Of(record),
                            path.empty() ? row.name : fmt::format("{}.{}", path, row.name), visit);
    });
}

template <typename Value>
inline constexpr const char* unitOf = "item";
template <>
inline constexpr const char* unitOf<std::string> = "byte";
template <>
inline constexpr const char* unitOf<std::vector<std::uint8_t>> = "byte";

// The library refuses a record that is over a limit and cannot say where. This throws std::length_error for the first
// such field: "serverParameters.proxy.address: 131 bytes, at most 128".
template <typename Record>
void CheckLimits(const Record& record)
{
    auto check = [](const std::string& path, const auto& value, std::size_t limit) {
        if (value.size() > limit)
            throw std::length_error(fmt::format("{}: {}, at most {}", path,
                                                Amount(value.size(), unitOf<std::decay_t<decltype(value)>>), limit));
    };
    if constexpr (vyn_connector::common::isDescribed<Record>) ForEachLimited(record, "", check);
}

} // namespace exchange
