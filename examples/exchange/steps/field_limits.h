// What the steps make of their records' limits.
#pragma once

#include "transport/limits.h"

namespace exchange {

// The most bytes of a string, or items of a list: `limitOf<&Record::member>`.
template <auto Member>
inline constexpr std::size_t limitOf = vyn_connector::common::RowOf<Member>::Kind::limit;

// The most items of a list that has no record around it.
template <typename List>
inline constexpr std::size_t itemLimitOf = vyn_connector::common::RowOfWhole<List>::Kind::limit;

// Cuts whatever in the record is over its limit, and calls `tell` with a line about each. What lies in a set or map is
// left as it is.
template <typename Record, typename Tell>
void CutToLimits(Record& record, const std::string& name, Tell tell)
{
    auto cut = [&](const std::string& path, auto& value, std::size_t limit) {
        using Value = std::remove_reference_t<decltype(value)>;
        if constexpr (!std::is_const_v<Value>) {
            if (value.size() <= limit) return;
            std::size_t end = limit;
            if constexpr (std::is_same_v<Value, std::string>)
                while (end > 0 && (static_cast<unsigned char>(value[end]) & 0xC0U) == 0x80)
                    --end; // not in the middle of a UTF-8 character
            tell(fmt::format("{} is cut from {} to {}", path, value.size(), Amount(end, unitOf<Value>)));
            value.resize(end);
        }
    };
    ForEachLimited(record, name, cut);
}

} // namespace exchange
