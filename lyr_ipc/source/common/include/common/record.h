// How a record is described: once, as a table beside its two structures, in the order of the wire. From that table
// derive the writer, the reader, the comparison, the sizes and whatever else has to know a record's fields.
//
//     VYN_RECORD(ProxySettings, ProxySettings, 28, 4,
//         VYN_FIELD( 0,  8, address,     Text<128>),
//         VYN_FIELD( 8,  2, port,        Number),
//         VYN_PADDING(10, 2),
//         VYN_FIELD(12, 16, credentials, Nested));
//
// The first line names the record and the last part of its wire structure's name, which has 28 bytes and is aligned to
// 4. The columns are offset, width in bytes, member, and kind. The table follows the declarations of the record's
// CastToZt and CastFromZt. It is checked while it is compiled: it holds every byte of the wire structure and every
// member of the domain record, each at its place, and each kind fits the two members that it joins. None of it is left
// at run time.
//
//     kind           domain record                   wire structure   what a writer accepts; readers accept any amount
//     Number         an integer                      the same
//     Flag           bool                            std::uint8_t
//     Enumeration    an enumeration                  its integer
//     Bytes          std::array<std::byte, 16>       16 bytes
//     Time           wem::types::Timestamp           std::int64_t
//     Text<N>        std::string                     zt_ptr_t         at most N bytes
//     Blob           std::vector<std::uint8_t>       zt_ptr_t         at most 65536 bytes
//     Nested         a described record              its structure
//     List<N>        std::vector of such             zt_ptr_t         at most N of them
//     Optional<K>    std::optional                   zt_ptr_t         what the kind K of the value accepts
//     Secret<K>      as K                            as K             as K; whatever prints leaves the value out
//
// Each kind stands in a header of its own in kind/, with all that it does. A record whose field follows a rule of its
// own brings a kind of its own, which derives from the one that it resembles and says what differs: subscriptions,
// update identifiers and events do.
#pragma once

#include <common/detail/table.h>
#include <common/kind/blob.h>
#include <common/kind/in_place.h>
#include <common/kind/list.h>
#include <common/kind/nested.h>
#include <common/kind/optional.h>
#include <common/kind/secret.h>
#include <common/kind/text.h>

#define VYN_RECORD(DOMAIN, WIRE, SIZE, ALIGNMENT, ...)                                                                 \
    template <>                                                                                                        \
    struct Description<DOMAIN> {                                                                                       \
        using Domain = DOMAIN;                                                                                         \
        using Wire = tq_vyn_connector_VynTypes_##WIRE;                                                                 \
        static constexpr const char* name = #WIRE;                                                                     \
        template <typename Use>                                                                                        \
        [[gnu::always_inline]] static constexpr auto Rows(Use&& use)                                                   \
        {                                                                                                              \
            using namespace kind;                                                                                      \
            return use(__VA_ARGS__);                                                                                   \
        }                                                                                                              \
        template <typename Record, typename... Arena>                                                                  \
        static auto Write(const Record& record, Arena*... arena) -> decltype(CastToZt(record, arena...))               \
        {                                                                                                              \
            return CastToZt(record, arena...);                                                                         \
        }                                                                                                              \
        template <typename Structure, typename... Arena>                                                               \
        static auto Read(const Structure& wire, const Arena*... arena) -> decltype(CastFromZt(wire, arena...))         \
        {                                                                                                              \
            return CastFromZt(wire, arena...);                                                                         \
        }                                                                                                              \
    };                                                                                                                 \
    static_assert(sizeof(WireOf<DOMAIN>) == (SIZE) && alignof(WireOf<DOMAIN>) == (ALIGNMENT),                          \
                  "the wire structure does not have the size and alignment that its table gives");                     \
    static_assert(Description<DOMAIN>::Rows(detail::EndOfWire{}) == (SIZE),                                            \
                  "the rows leave out, repeat or misplace bytes of the wire structure");                               \
    static_assert(Description<DOMAIN>::Rows(detail::KeepsPadding{}),                                                   \
                  "a wire structure of up to 16 bytes cannot keep padding");                                           \
    static_assert(detail::CoversDomain<DOMAIN>(detail::MembersInOrder<DOMAIN>{}),                                      \
                  "the rows leave out or repeat a member of the domain record")

// The last argument is the kind.
#define VYN_FIELD(OFFSET, WIDTH, MEMBER, ...) VYN_FIELD_AS(OFFSET, WIDTH, MEMBER, MEMBER, __VA_ARGS__)

// A field whose members have different names.
#define VYN_FIELD_AS(OFFSET, WIDTH, DOMAIN_MEMBER, WIRE_MEMBER, ...)                                                   \
    (::vyn_connector::common::detail::Field<::vyn_connector::common::detail::Member<&Domain::DOMAIN_MEMBER>,           \
                                            offsetof(Domain, DOMAIN_MEMBER),                                           \
                                            ::vyn_connector::common::detail::Member<&Wire::WIRE_MEMBER>,               \
                                            offsetof(Wire, WIRE_MEMBER), OFFSET, WIDTH, __VA_ARGS__>{#WIRE_MEMBER,     \
                                                                                                     #__VA_ARGS__})

// The one field of a list that has no record around it.
#define VYN_WHOLE(OFFSET, WIDTH, WIRE_MEMBER, ...)                                                                     \
    (::vyn_connector::common::detail::Field<::vyn_connector::common::detail::Itself<Domain>, 0,                        \
                                            ::vyn_connector::common::detail::Member<&Wire::WIRE_MEMBER>,               \
                                            offsetof(Wire, WIRE_MEMBER), OFFSET, WIDTH, __VA_ARGS__>{#WIRE_MEMBER,     \
                                                                                                     #__VA_ARGS__})

#define VYN_PADDING(OFFSET, WIDTH) (::vyn_connector::common::detail::Padding<OFFSET, WIDTH>{})

// A member that does not travel: writers ignore it, readers leave it value-initialised.
#define VYN_DOMAIN_ONLY(MEMBER)                                                                                        \
    (::vyn_connector::common::detail::DomainOnly<::vyn_connector::common::detail::Member<&Domain::MEMBER>,             \
                                                 offsetof(Domain, MEMBER)>{#MEMBER})

namespace vyn_connector::common {

// The row of a member, `RowOf<&ProxySettings::address>`, and of a list that has no record around it. Its `Kind::limit`
// is what the member's writer accepts.
template <auto Member>
using RowOf = typename detail::OnlyRow<decltype(Description<typename detail::RecordOfMember<Member>::Type>::Rows(
    detail::RowWith<detail::Member<Member>>{}))>::Type;
template <typename List>
using RowOfWhole =
    typename detail::OnlyRow<decltype(Description<List>::Rows(detail::RowWith<detail::Itself<List>>{}))>::Type;

// Whether the record's pair takes an arena. Specialised with Conversion, which a record of another pair has.
template <typename Record>
inline constexpr bool takesArena =
    decltype(detail::HasPair<Record>(std::declval<const Record&>(), std::declval<zt_arena*>()))::value;

// The record's pair, called in one way whatever its signature. Specialised beside the table of a record whose pair is
// none of the usual ones.
template <typename Record>
struct Conversion {
    static WireOf<Record> Write(const Record& record, zt_arena* arena)
    {
        if constexpr (takesArena<Record>)
            return Description<Record>::Write(record, arena);
        else
            return Description<Record>::Write(record);
    }
    static Record Read(const WireOf<Record>& wire, const zt_arena* arena)
    {
        if constexpr (takesArena<Record>)
            return Description<Record>::Read(wire, arena);
        else
            return Description<Record>::Read(wire);
    }
};

namespace detail {

// What is read of a message whatever becomes of it. Specialised for a record that is read even of a bad message.
template <typename Record>
Record ReadAsIs(const WireOf<Record>& wire, const zt_arena* arena)
{
    return Conversion<Record>::Read(wire, arena);
}

} // namespace detail
} // namespace vyn_connector::common

namespace vyn_connector {

// Records are equal where all their members are, those that do not travel included. Whether a record is described is
// only asked of aggregates: a class that compares itself may do so before its table stands.
template <typename Record, std::enable_if_t<std::is_aggregate_v<Record>, int> = 0,
          std::enable_if_t<common::isDescribed<Record>, int> = 0>
bool operator==(const Record& a, const Record& b)
{
    return common::Description<Record>::Rows(
        [&](auto... row) { return (common::detail::SameMember<decltype(row)>(a, b) && ...); });
}

template <typename Record, std::enable_if_t<std::is_aggregate_v<Record>, int> = 0,
          std::enable_if_t<common::isDescribed<Record>, int> = 0>
bool operator!=(const Record& a, const Record& b)
{
    return !(a == b);
}

namespace common {

// For the records of this namespace.
using vyn_connector::operator==;
using vyn_connector::operator!=;

} // namespace common
} // namespace vyn_connector
