// The names under which everything finds a record's description: the writer, the reader, the sizes, the tests and the
// tools. record.h says how a description is written.
#pragma once

#include <common/zt_arena.h>

#include <type_traits>

namespace vyn_connector::common {

// Specialised by VYN_RECORD: `Wire`, `name`, and `Rows(use)`, which returns `use(row, row, ...)`.
template <typename Domain>
struct Description;

template <typename Domain>
using WireOf = typename Description<Domain>::Wire;

template <typename Domain, typename = void>
inline constexpr bool isDescribed = false;
template <typename Domain>
inline constexpr bool isDescribed<Domain, std::void_t<WireOf<Domain>>> = true;

// The record that a value is written as. Specialised where that is not the value's own type.
template <typename Value>
struct WrittenAs {
    using Record = Value;
};

// A row that joins a member of the domain record with one of the wire structure: all but the padding and the members
// that do not travel. It has `offset`, `width`, `name`, `Kind` and its words in the table, `kind`, and
// `InDomain::Of(record)`, which is the member.
template <typename Row, typename = void>
inline constexpr bool isField = false;
template <typename Row>
inline constexpr bool isField<Row, std::void_t<typename Row::Kind>> = true;

// A row that has a member of the domain record: a field, or a member that does not travel.
template <typename Row, typename = void>
inline constexpr bool isInDomain = false;
template <typename Row>
inline constexpr bool isInDomain<Row, std::void_t<typename Row::InDomain>> = true;

// Calls `visit(row)` for each row of the record's table, in the order of the wire.
template <typename Domain, typename Visit>
constexpr void ForEachRow(Visit&& visit)
{
    Description<Domain>::Rows([&](auto... row) { (visit(row), ...); });
}

// A borrowed look at a record in a message; record_view.h defines it.
namespace detail {
struct Tested;
} // namespace detail
template <typename Record, typename Access = detail::Tested>
class RecordView;

// The functions that convert one record: what the codecs take for the elements of a list or an optional.
template <typename Domain>
using WriterOf = WireOf<Domain> (*)(const Domain&, zt_arena*);
template <typename Domain>
using ReaderOf = Domain (*)(const WireOf<Domain>&, const zt_arena*);

} // namespace vyn_connector::common
