// What a record's table is made of, and the checks that the compiler makes of it. Included by record.h, which says how
// a table is written; a caller needs none of this. The messages of the assertions are for whoever describes a record.
#pragma once

#include <common/description.h>

#include <array>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

namespace vyn_connector::common::detail {

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
    // An entry of a map is the pair but for the const that the map gives its key; it is read where it stands.
    template <typename Key, typename Value>
    static constexpr const T& Of(const std::pair<const Key, Value>& entry)
    {
        using Pair = std::pair<Key, Value>;
        static_assert(std::is_same_v<Class, Pair> && !std::is_same_v<Key, Value>,
                      "an entry's key and value are of two types");
        if constexpr (std::is_same_v<T, Key>)
            return entry.first;
        else
            return entry.second;
    }
    template <typename View>
    static auto In(const View& view)
    {
        return view.template Get<Pointer>();
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
    template <typename View>
    static auto In(const View& view)
    {
        return view.Get();
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
    static_assert(Kind::template Joins<typename InDomain::Type, typename OnWire::Type>());

    const char* name;
    const char* kind; // as the table has it: "Text<128>"
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
inline constexpr bool isOnWire = false;
template <typename Row>
inline constexpr bool isOnWire<Row, std::void_t<decltype(Row::width)>> = true;

template <typename... Rows>
struct RowList {
};

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

// The rows of a record's members in the order in which the domain record declares them: the order in which a reader
// builds the record, and so the order in which bad pointers are met.
template <typename Domain>
using MembersInOrder = decltype(Description<Domain>::Rows(ToMembersInOrder{}));

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

template <typename Row, typename Domain>
bool SameMember(const Domain& a, const Domain& b)
{
    if constexpr (isInDomain<Row>) return Row::InDomain::Of(a) == Row::InDomain::Of(b);
    return true;
}

// The row, among a record's, that the member belongs to.
template <typename DomainMember>
struct RowWith {
    template <typename... Rows>
    constexpr auto operator()(Rows...) const
    {
        using Found = typename Join<RowList<>, std::conditional_t<Holds<Rows>(), RowList<Rows>, RowList<>>...>::Type;
        return Found{};
    }

private:
    template <typename Row>
    static constexpr bool Holds()
    {
        if constexpr (isField<Row>) return std::is_same_v<typename Row::InDomain, DomainMember>;
        return false;
    }
};
template <typename Rows>
struct OnlyRow;
template <typename Row>
struct OnlyRow<RowList<Row>> {
    using Type = Row;
};

template <auto Pointer>
struct RecordOfMember;
template <typename Record, typename T, T Record::*Pointer>
struct RecordOfMember<Pointer> {
    using Type = Record;
};

template <typename Record, typename... Arena>
constexpr auto HasPair(const Record& value, Arena*... arena)
    -> decltype(Description<Record>::Write(value, arena...), std::true_type{});
template <typename Record>
constexpr std::false_type HasPair(...);

} // namespace vyn_connector::common::detail
