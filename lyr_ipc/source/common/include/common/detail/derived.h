// What derives from a record's table as a whole, declared for the kinds of field that hold records. The sizes are
// defined in arena_size.h, the conversions with the library's sources.
#pragma once

#include <common/description.h>
#include <common/detail/put.h>

namespace vyn_connector::common::detail {

// Writes the record by the steps of the codecs, each with its checks, into a wire structure that is all zero, and
// raises what the first step that fails raises. `Source` differs from `Domain` only where a record is written from a
// part of it, or from something that holds the same members.
template <typename Domain, typename Source>
void WriteRecord(const Source& value, std::uint8_t* wire, zt_arena* arena);

// Writes the same bytes straight from position `at` on, every byte of the wire structure included, and returns the
// position behind them; or returns `refused` where a limit is exceeded or the room does not suffice. WriteRecord then
// repeats it from the same top and overwrites whatever it has left behind.
template <typename Domain, typename Source>
std::size_t PutRecord(const Source& value, std::uint8_t* wire, std::size_t at, Room room) noexcept;

template <typename Domain>
Domain ReadRecord(const std::uint8_t* wire, Bounds arena);

// The same for the elements of a list and what an optional holds: inlined where it stands.
template <typename Domain>
Domain ReadElement(const std::uint8_t* wire, Bounds arena);

// Where the top stands after the record is written, from a top at `at`; and after the largest one that a writer
// accepts. Positions are addresses, or their remainders by 8.
template <typename Domain, typename Source>
std::uintptr_t AfterRecord(const Source& value, std::uintptr_t at);
template <typename Domain>
constexpr std::uintptr_t MostAfterRecord(std::uintptr_t at);

} // namespace vyn_connector::common::detail
