// How much arena a record needs, so that callers size a buffer before they fill it instead of guessing. Derived from
// the records' tables; nothing in the library calls it.
#pragma once

#include <common/record.h>

namespace vyn_connector::common {

// The number of bytes by which writing `value` moves the top of an arena, where the top is at address `top`; only that
// address's remainder by 8 matters: it decides the gaps before aligned elements. An arena with that much room left
// takes the record, with a byte less it does not. Limits are not tested: a record that its writer refuses as too large
// is given the size that it would have. A record of empty strings may need 0 bytes; the arena's addresses must not be
// null all the same (message.h sees to that).
template <typename Value>
std::size_t ArenaSize(const Value& value, std::uintptr_t top)
{
    return detail::AfterRecord<typename WrittenAs<Value>::Record>(value, top) - top;
}

// The most bytes that writing any record of the type can take, wherever the top is.
template <typename Record>
constexpr std::size_t MaxArenaSize()
{
    std::size_t most = 0;
    for (std::uintptr_t top = 0; top < 8; ++top)
        if (const std::size_t size = detail::MostAfterRecord<Record>(top) - top; size > most) most = size;
    return most;
}

namespace detail {

template <typename Row, typename Source>
std::uintptr_t AfterRow(const Source& value, std::uintptr_t at)
{
    if constexpr (isField<Row>) return Row::Kind::After(Row::InDomain::Of(value), at);
    return at;
}

template <typename Row>
constexpr std::uintptr_t MostAfterRow(std::uintptr_t at)
{
    if constexpr (isField<Row>) return Row::Kind::template MostAfter<typename Row::InDomain::Type>(at);
    return at;
}

template <typename Domain, typename Source>
std::uintptr_t AfterRecord(const Source& value, std::uintptr_t at)
{
    ForEachRow<Domain>([&](auto row) { at = AfterRow<decltype(row)>(value, at); });
    return at;
}

template <typename Domain>
constexpr std::uintptr_t MostAfterRecord(std::uintptr_t at)
{
    ForEachRow<Domain>([&](auto row) { at = MostAfterRow<decltype(row)>(at); });
    return at;
}

} // namespace detail
} // namespace vyn_connector::common
