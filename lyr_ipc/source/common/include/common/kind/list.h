// The kind of a vector of described records: a pointer to an array of their wire structures. Tables name it as List<N>:
// a writer refuses more than N elements; a reader makes as many as lie in the arena, in order.
#pragma once

#include <common/array_view.h>
#include <common/detail/derived.h>
#include <common/detail/get.h>
#include <common/detail/put.h>
#include <common/detail/reach.h>
#include <common/examine.h>
#include <common/kind/nested.h>
#include <common/zt_vector.h>

#include <iterator>

namespace vyn_connector::common::detail {

template <typename Domain>
inline constexpr bool isVectorOfRecords = false;
template <typename Record>
inline constexpr bool isVectorOfRecords<std::vector<Record>> = isDescribed<Record>;

// The converter of the codecs' elements.
template <typename Record>
[[gnu::cold]] WireOf<Record> WriteElement(const Record& value, zt_arena* arena)
{
    WireOf<Record> wire;
    std::memset(&wire, 0, sizeof(wire));
    WriteRecord<Record>(value, reinterpret_cast<std::uint8_t*>(&wire), arena);
    return wire;
}

// Puts the elements of an array straight.
template <typename Record>
auto PutElement(Room room)
{
    return [room](const Record& value, std::uint8_t* element, std::size_t at) __attribute__((always_inline))
    {
        return PutRecord<Record>(value, element, at, room);
    };
}

// Examines the elements of an array.
template <typename Record, typename Visitor>
auto ExamineElement(Visitor& visit)
{
    return [&visit](const std::uint8_t* element, const std::uint8_t*) __attribute__((always_inline))
    {
        return ExamineRecord<Record>(element, visit);
    };
}

// A wire array as the values that its elements read as, each read when it is taken.
template <typename Record>
class ElementReader {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Record;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    ElementReader(const std::uint8_t* place, Bounds bounds) : element(place), arena(bounds) {}

    auto operator*() const
    {
        return Lazy{[*this] { return ReadElement<Record>(element, arena); }};
    }
    using reference = Record;
    ElementReader& operator++()
    {
        element += sizeof(WireOf<Record>);
        return *this;
    }
    friend bool operator==(ElementReader a, ElementReader b) { return a.element == b.element; }
    friend bool operator!=(ElementReader a, ElementReader b) { return !(a == b); }

private:
    const std::uint8_t* element;
    Bounds arena;
};

// Where the top stands after `count` of the largest records. The count may be huge; but what a record adds depends only
// on the position's remainder by 8, so that the remainders come round again after at most 8 records, and whole rounds
// can be taken at once.
template <typename Record>
constexpr std::uintptr_t MostAfterRecords(std::uint64_t count, std::uintptr_t at)
{
    for (int lead = 0; lead < 8 && count > 0; ++lead, --count)
        at = MostAfterRecord<Record>(at);
    std::uintptr_t roundEnd = at;
    std::uint64_t round = 0;
    do {
        roundEnd = MostAfterRecord<Record>(roundEnd);
        ++round;
    } while (roundEnd % 8 != at % 8);
    at += count / round * (roundEnd - at);
    for (std::uint64_t rest = count % round; rest > 0; --rest)
        at = MostAfterRecord<Record>(at);
    return at;
}

} // namespace vyn_connector::common::detail

namespace vyn_connector::common::kind {

template <std::uint64_t MaxCount>
struct List {
    static constexpr std::uint64_t limit = MaxCount;

    template <typename Domain, typename Wire>
    static constexpr bool fits = detail::isVectorOfRecords<Domain>&& std::is_same_v<Wire, zt_ptr_t>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a List joins a std::vector of described records and a zt_ptr_t");
        return true;
    }

    template <typename Wire, typename Record>
    static void Write(const std::vector<Record>& values, std::uint8_t* wire, zt_arena* arena)
    {
        zt_ptr_t pointer{};
        VectorToZt<MaxCount, WireOf<Record>>(values, &pointer, arena, WriterOf<Record>{&detail::WriteElement<Record>});
        detail::Store(wire, pointer);
    }
    template <typename Wire, typename Record>
    [[gnu::always_inline]] static std::size_t Put(const std::vector<Record>& values, std::uint8_t* wire, std::size_t at,
                                                  detail::Room room)
    {
        if (values.size() > MaxCount) return detail::refused;
        return detail::PutElements<WireOf<Record>>(values.begin(), values.size(), wire, at, room,
                                                   detail::PutElement<Record>(room));
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds arena)
    {
        using Record = typename Domain::value_type;
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint8_t* const array = detail::Get(detail::codec::vector, pointer, arena, sizeof(WireOf<Record>));
        return Domain(detail::ElementReader<Record>(array, arena),
                      detail::ElementReader<Record>(array + pointer.size, arena));
    }
    template <typename Domain, typename Wire, typename Access>
    static auto View(const std::uint8_t* wire, const Access& access)
    {
        return ViewOf<Domain>(detail::codec::vector, wire, access);
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        using Record = typename Domain::value_type;
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint64_t count = pointer.size / sizeof(WireOf<Record>);
        return visit.Array(
            detail::ClaimOf<WireOf<Record>>(detail::codec::vector, pointer, 0, MaxCount, count * sizeof(Record)),
            detail::ExamineElement<Record>(visit));
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.List(value);
    }

    template <typename Record>
    static std::uintptr_t After(const std::vector<Record>& values, std::uintptr_t at)
    {
        at = detail::AlignUp(at, alignof(WireOf<Record>)) + values.size() * sizeof(WireOf<Record>);
        for (const Record& value : values)
            at = detail::AfterRecord<Record>(value, at);
        return at;
    }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        using Record = typename Domain::value_type;
        at = detail::AlignUp(at, alignof(WireOf<Record>)) + MaxCount * sizeof(WireOf<Record>);
        return detail::MostAfterRecords<Record>(MaxCount, at);
    }

protected:
    template <typename Domain, typename Access>
    static auto ViewOf(const detail::Codec& codec, const std::uint8_t* wire, const Access& access)
    {
        using Record = typename Domain::value_type;
        using Element = WireOf<Record>;
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint8_t* const first = access.At(codec, pointer, sizeof(Element));
        return ArrayView<Nested, Record, Element, Access>(first, pointer.size / sizeof(Element), access);
    }
};

} // namespace vyn_connector::common::kind
