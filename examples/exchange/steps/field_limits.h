// The limits of a record's fields, as its table gives them.
#pragma once

#include <common/vyn_connector_common.h>

#include <fmt/format.h>

#include <optional>
#include <string>
#include <vector>

namespace exchange {

// The most bytes of a string, or items of a list: `limitOf<&Record::member>`.
template <auto Member>
inline constexpr std::size_t limitOf = vyn_connector::common::RowOf<Member>::Kind::limit;

// The most items of a list that has no record around it.
template <typename List>
inline constexpr std::size_t itemLimitOf = vyn_connector::common::RowOfWhole<List>::Kind::limit;

// Cuts whatever in the record is over its limit, and calls `tell` with a line about each.
template <typename Record, typename Tell>
void CutToLimits(Record& record, const std::string& name, Tell tell);

namespace cut {

template <typename Kind, typename Value, typename Tell>
void Cut(Kind, Value&, const std::string&, Tell)
{
}
template <std::size_t Max, typename Tell>
void Cut(vyn_connector::common::kind::Text<Max>, std::string& value, const std::string& name, Tell tell)
{
    if (value.size() <= Max) return;
    std::size_t end = Max;
    while (end > 0 && (static_cast<unsigned char>(value[end]) & 0xC0U) == 0x80)
        --end; // not in the middle of a UTF-8 character
    tell(fmt::format("{} is cut from {} to {} bytes", name, value.size(), end));
    value.resize(end);
}
template <typename Kind, typename Value, typename Tell>
void Cut(vyn_connector::common::kind::Optional<Kind>, std::optional<Value>& value, const std::string& name, Tell tell)
{
    if (value) Cut(Kind{}, *value, name, tell);
}
template <typename Value, typename Tell>
void Cut(vyn_connector::common::kind::Nested, Value& value, const std::string& name, Tell tell)
{
    CutToLimits(value, name, tell);
}
template <std::uint64_t Max, typename Value, typename Tell>
void Cut(vyn_connector::common::kind::List<Max>, std::vector<Value>& values, const std::string& name, Tell tell)
{
    if (values.size() > Max) {
        tell(fmt::format("{} is cut from {} to {} items", name, values.size(), Max));
        values.resize(Max);
    }
    for (Value& value : values)
        CutToLimits(value, name, tell);
}

} // namespace cut

template <typename Record, typename Tell>
void CutToLimits(Record& record, const std::string& name, Tell tell)
{
    vyn_connector::common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (vyn_connector::common::isField<Row>)
            cut::Cut(typename Row::Kind{}, Row::InDomain::Of(record), fmt::format("{}.{}", name, row.name), tell);
    });
}

} // namespace exchange
