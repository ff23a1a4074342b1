// How a record is described: once, as a table beside its two structures, in the order of the wire. From that table
// derive the writer, the reader, the comparison and whatever else has to know a record's fields.
//
//     VYN_RECORD(ProxySettings, ProxySettings, 28, 4,
//         VYN_FIELD( 0,  8, address,     Text<128>),
//         VYN_FIELD( 8,  2, port,        Number),
//         VYN_PADDING(10, 2),
//         VYN_FIELD(12, 16, credentials, Nested));
//
// The columns are offset, width in bytes, member, and kind with its limit. The table is checked while it is compiled:
// it holds every byte of the wire structure and every member of the domain record, each at its place, and each kind
// fits the two members that it joins. None of it is left at run time.
#pragma once

#include <common/zt_blob.h>
#include <common/zt_optional.h>
#include <common/zt_range.h>
#include <common/zt_set.h>
#include <common/zt_string.h>
#include <common/zt_vector.h>
#include <wem/types/timestamp.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vyn_connector::common {

// Specialised by VYN_RECORD: `Wire`, `name`, and `Rows(use)`, which returns `use(row, row, ...)`. A row is a Field, a
// Padding or a DomainOnly.
template <typename Domain>
struct Description;

template <typename Domain>
using WireOf = typename Description<Domain>::Wire;

// The functions that convert one record: what the codecs take for the elements of a list or an optional.
template <typename Domain>
using WriterOf = WireOf<Domain> (*)(const Domain&, zt_arena*);
template <typename Domain>
using ReaderOf = Domain (*)(const WireOf<Domain>&, const zt_arena*);

template <typename Domain, typename = void>
inline constexpr bool isDescribed = false;
template <typename Domain>
inline constexpr bool isDescribed<Domain, std::void_t<WireOf<Domain>>> = true;

// What a domain member is on the wire, and how much of it a writer accepts; readers accept any amount. `fits` says
// which two members a kind can join.
namespace kind {

// For kinds that join two types and no others.
template <typename OnDomain, typename OnWire>
struct Joins {
    template <typename D, typename W>
    static constexpr bool fits = std::conjunction_v<std::is_same<D, OnDomain>, std::is_same<W, OnWire>>;
};

// What lies in the wire structure alone and takes nothing from the arena.
struct InPlace {};

// An integer of one type on both sides, copied bit for bit.
struct Number : InPlace {
    template <typename D, typename W>
    static constexpr bool fits =
        std::conjunction_v<std::is_integral<D>, std::negation<std::is_same<D, bool>>, std::is_same<D, W>>;
};

// A bool, as the byte that it is; on reading, any byte but zero is true.
struct Flag : InPlace, Joins<bool, std::uint8_t> {};

// An enumeration, as its integer. No value is refused.
struct Enumeration : InPlace {
    template <typename D, typename W>
    static constexpr bool fits =
        std::conjunction_v<std::is_enum<D>, std::is_integral<W>, std::bool_constant<sizeof(D) == sizeof(W)>>;
};

// Sixteen bytes, as they stand.
struct Bytes : InPlace, Joins<std::array<std::byte, 16>, std::uint8_t[16]> {};

// A time stamp, as its signed 64-bit count without change of unit.
struct Time : InPlace, Joins<wem::types::Timestamp, std::int64_t> {};

template <std::size_t MaxBytes>
struct Text : Joins<std::string, zt_ptr_t> {
    static constexpr std::size_t limit = MaxBytes;
};

struct Blob : Joins<std::vector<std::uint8_t>, zt_ptr_t> {
    static constexpr std::size_t limit = maxBlobSize; // bytes
};

// A described record inside another, by value.
struct Nested {
    template <typename D, typename W>
    static constexpr bool fits = std::is_same_v<WireOf<D>, W>;
};

// A vector of described records.
template <std::uint64_t MaxCount>
struct List {
    static constexpr std::uint64_t limit = MaxCount;
    template <typename D, typename W>
    static constexpr bool fits =
        std::conjunction_v<std::bool_constant<isDescribed<typename D::value_type>>, std::is_same<W, zt_ptr_t>>;
};

// What an optional member has in its slot: a string its zt_ptr_t, a time stamp its count, a record its wire structure.
template <typename Value>
struct SlotOf {
    using Type = WireOf<Value>;
};
template <>
struct SlotOf<std::string> {
    using Type = zt_ptr_t;
};
template <>
struct SlotOf<wem::types::Timestamp> {
    using Type = std::int64_t;
};

// Optional<Text<128>>, Optional<Time>, Optional<Nested>.
template <typename Element>
struct Optional {
    template <typename Value>
    using Fits = std::bool_constant<Element::template fits<Value, typename SlotOf<Value>::Type>>;
    template <typename D, typename W>
    static constexpr bool fits = std::conjunction_v<std::is_same<D, std::optional<typename D::value_type>>,
                                                    std::is_same<W, zt_ptr_t>, Fits<typename D::value_type>>;
};

} // namespace kind

// Where a row finds a member of a structure, or, for a list that has no record around it, the value itself.
template <auto Pointer>
struct Member;
template <typename Class, typename T, T Class::*Pointer>
struct Member<Pointer> {
    using Type = T;
    template <typename Object>
    static constexpr auto& Of(Object& object)
    {
        return object.*Pointer;
    }
};
template <typename Value>
struct Itself {
    using Type = Value;
    template <typename Object>
    static constexpr Object& Of(Object& object)
    {
        return object;
    }
};

template <typename DomainMember, std::size_t DomainOffset, typename WireMember, std::size_t WireOffset,
          std::size_t Offset, std::size_t Width, typename FieldKind>
struct Field {
    using InDomain = DomainMember;
    using OnWire = WireMember;
    using Kind = FieldKind;
    static constexpr std::size_t domainOffset = DomainOffset;
    static constexpr std::size_t offset = Offset;
    static constexpr std::size_t width = Width;

    static_assert(Offset == WireOffset, "the wire member does not stand at the offset that its row gives");
    static_assert(Width == sizeof(typename OnWire::Type), "the wire member is not as wide as its row says");
    static_assert(Kind::template fits<typename InDomain::Type, typename OnWire::Type>,
                  "the row's kind does not join these two members");

    const char* name;
};

// Bytes of the wire structure that belong to no field: written as zero, not read.
template <std::size_t Offset, std::size_t Width>
struct Padding {
    static constexpr std::size_t offset = Offset;
    static constexpr std::size_t width = Width;
};

// A member that does not travel: writers ignore it, readers leave it value-initialised.
template <typename DomainMember, std::size_t DomainOffset>
struct DomainOnly {
    using InDomain = DomainMember;
    static constexpr std::size_t domainOffset = DomainOffset;

    const char* name;
};

template <typename Row, typename = void>
inline constexpr bool isInDomain = false;
template <typename Row>
inline constexpr bool isInDomain<Row, std::void_t<typename Row::InDomain>> = true;

template <typename Row, typename = void>
inline constexpr bool isOnWire = false;
template <typename Row>
inline constexpr bool isOnWire<Row, std::void_t<decltype(Row::width)>> = true;

template <typename Row, typename = void>
inline constexpr bool isField = false;
template <typename Row>
inline constexpr bool isField<Row, std::void_t<typename Row::Kind>> = true;

template <typename... Rows>
struct RowList {
};

namespace table {

template <typename... Lists>
struct Join;
template <typename... Rows>
struct Join<RowList<Rows...>> {
    using Type = RowList<Rows...>;
};
template <typename... A, typename... B, typename... Rest>
struct Join<RowList<A...>, RowList<B...>, Rest...> : Join<RowList<A..., B...>, Rest...> {
};

template <typename... Rows>
constexpr std::size_t RowAtRank(std::size_t rank)
{
    constexpr std::size_t offsets[] = {Rows::domainOffset...};
    for (std::size_t row = 0; row < sizeof...(Rows); ++row) {
        std::size_t before = 0;
        for (std::size_t other = 0; other < sizeof...(Rows); ++other)
            before += offsets[other] < offsets[row] || (offsets[other] == offsets[row] && other < row) ? 1 : 0;
        if (before == rank) return row;
    }
    return sizeof...(Rows);
}

template <typename... Rows, std::size_t... Rank>
auto Sort(RowList<Rows...>, std::index_sequence<Rank...>)
    -> RowList<std::tuple_element_t<RowAtRank<Rows...>(Rank), std::tuple<Rows...>>...>;

struct ToMembersInOrder {
    template <typename... Rows>
    constexpr auto operator()(Rows...) const
    {
        using Members =
            typename Join<RowList<>, std::conditional_t<isInDomain<Rows>, RowList<Rows>, RowList<>>...>::Type;
        constexpr std::size_t count = (std::size_t{0} + ... + (isInDomain<Rows> ? 1 : 0));
        return decltype(Sort(Members{}, std::make_index_sequence<count>{})){};
    }
};

struct EndOfWire {
    template <typename... Rows>
    constexpr std::size_t operator()(Rows...) const
    {
        std::size_t end = 0;
        (Take<Rows>(end), ...);
        return end;
    }

private:
    template <typename Row>
    static constexpr void Take(std::size_t& end)
    {
        if constexpr (isOnWire<Row>) end = Row::offset == end ? end + Row::width : std::size_t(-1);
    }
};

// A structure of up to 16 bytes is returned in registers, where padding would not keep its zeros.
struct KeepsPadding {
    template <typename... Rows>
    constexpr bool operator()(Rows...) const
    {
        const std::size_t inFields = (std::size_t{0} + ... + WidthOfField<Rows>());
        const std::size_t size = EndOfWire{}(Rows{}...);
        return size > 16 || inFields == size;
    }

private:
    template <typename Row>
    static constexpr std::size_t WidthOfField()
    {
        if constexpr (isField<Row>) return Row::width;
        return 0;
    }
};

// Whether a structure can be made of values of these types, in this order.
template <typename Domain, typename Values, typename = void>
inline constexpr bool isMadeOf = false;
template <typename Domain, typename... Values>
inline constexpr bool isMadeOf<Domain, RowList<Values...>, std::void_t<decltype(Domain{std::declval<Values>()...})>> =
    true;

// Stands for the member that the rows may have left out.
struct AnyMember {
    template <typename T>
    operator T() const;
};

template <typename Domain, typename... Rows>
constexpr bool CoversDomain(RowList<Rows...>)
{
    if constexpr ((std::is_same_v<typename Rows::InDomain, Itself<Domain>> && ...)) {
        return sizeof...(Rows) == 1;
    } else {
        std::size_t end = 0;
        bool distinct = true;
        ((distinct = distinct && Rows::domainOffset >= end,
          end = Rows::domainOffset + sizeof(typename Rows::InDomain::Type)),
         ...);
        return distinct && isMadeOf<Domain, RowList<typename Rows::InDomain::Type...>> &&
               !isMadeOf<Domain, RowList<typename Rows::InDomain::Type..., AnyMember>>;
    }
}

} // namespace table

// The rows of a record's members in the order in which the domain record declares them: the order in which a reader
// builds the record, and so the order in which bad pointers are met.
template <typename Domain>
using MembersInOrder = decltype(Description<Domain>::Rows(table::ToMembersInOrder{}));

// Calls `visit(row)` for each row of the record's table, in the order of the wire.
template <typename Domain, typename Visit>
constexpr void ForEachRow(Visit&& visit)
{
    Description<Domain>::Rows([&](auto... row) { (visit(row), ...); });
}

namespace table {

template <typename Row, typename Domain>
bool SameMember(const Domain& a, const Domain& b)
{
    if constexpr (isInDomain<Row>) return Row::InDomain::Of(a) == Row::InDomain::Of(b);
    return true;
}

} // namespace table

} // namespace vyn_connector::common

namespace vyn_connector {

// Records are equal where all their members are, those that do not travel included.
template <typename Record, std::enable_if_t<std::is_aggregate_v<Record> && common::isDescribed<Record>, int> = 0>
bool operator==(const Record& a, const Record& b)
{
    return common::Description<Record>::Rows(
        [&](auto... row) { return (common::table::SameMember<decltype(row)>(a, b) && ...); });
}

template <typename Record, std::enable_if_t<std::is_aggregate_v<Record> && common::isDescribed<Record>, int> = 0>
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

// DOMAIN is the record; WIRE the last part of its wire structure's name.
#define VYN_RECORD(DOMAIN, WIRE, SIZE, ALIGNMENT, ...)                                                                 \
    template <>                                                                                                        \
    struct Description<DOMAIN> {                                                                                       \
        using Domain = DOMAIN;                                                                                         \
        using Wire = tq_vyn_connector_VynTypes_##WIRE;                                                                 \
        static constexpr const char* name = #WIRE;                                                                     \
        template <typename Use>                                                                                        \
        static constexpr auto Rows(Use&& use)                                                                          \
        {                                                                                                              \
            using namespace kind;                                                                                      \
            return use(__VA_ARGS__);                                                                                   \
        }                                                                                                              \
    };                                                                                                                 \
    static_assert(sizeof(WireOf<DOMAIN>) == (SIZE) && alignof(WireOf<DOMAIN>) == (ALIGNMENT),                          \
                  "the wire structure has not the size and alignment that its table gives");                           \
    static_assert(Description<DOMAIN>::Rows(table::EndOfWire{}) == (SIZE),                                             \
                  "the rows leave out, repeat or misplace bytes of the wire structure");                               \
    static_assert(Description<DOMAIN>::Rows(table::KeepsPadding{}),                                                    \
                  "a wire structure of up to 16 bytes cannot keep padding");                                           \
    static_assert(table::CoversDomain<DOMAIN>(MembersInOrder<DOMAIN>{}),                                               \
                  "the rows leave out or repeat a member of the domain record")

// The last argument is the kind.
#define VYN_FIELD(OFFSET, WIDTH, MEMBER, ...) VYN_FIELD_AS(OFFSET, WIDTH, MEMBER, MEMBER, __VA_ARGS__)

// A field whose members have different names.
#define VYN_FIELD_AS(OFFSET, WIDTH, DOMAIN_MEMBER, WIRE_MEMBER, ...)                                                   \
    (::vyn_connector::common::Field<                                                                                   \
        ::vyn_connector::common::Member<&Domain::DOMAIN_MEMBER>, offsetof(Domain, DOMAIN_MEMBER),                      \
        ::vyn_connector::common::Member<&Wire::WIRE_MEMBER>, offsetof(Wire, WIRE_MEMBER), OFFSET, WIDTH, __VA_ARGS__>{ \
        #WIRE_MEMBER})

// The one field of a list that has no record around it.
#define VYN_WHOLE(OFFSET, WIDTH, WIRE_MEMBER, ...)                                                                     \
    (::vyn_connector::common::Field<::vyn_connector::common::Itself<Domain>, 0,                                        \
                                    ::vyn_connector::common::Member<&Wire::WIRE_MEMBER>, offsetof(Wire, WIRE_MEMBER),  \
                                    OFFSET, WIDTH, __VA_ARGS__>{#WIRE_MEMBER})

#define VYN_PADDING(OFFSET, WIDTH) (::vyn_connector::common::Padding<OFFSET, WIDTH>{})

#define VYN_DOMAIN_ONLY(MEMBER)                                                                                        \
    (::vyn_connector::common::DomainOnly<::vyn_connector::common::Member<&Domain::MEMBER>, offsetof(Domain, MEMBER)>{  \
        #MEMBER})
