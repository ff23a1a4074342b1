// The kind of a set of strings: a pointer to an array of elements of another kind, in no fixed order, none of which is
// meant twice. Tables name it as Set<N, Kind>: a writer refuses more than N elements; a reader drops those that repeat.
#pragma once

#include <common/array_view.h>
#include <common/detail/get.h>
#include <common/detail/put.h>
#include <common/detail/reach.h>
#include <common/examine.h>
#include <common/zt_set.h>

namespace vyn_connector::common::kind {

// Set<128, Text<128>>: at most 128 strings of at most 128 bytes each.
template <std::uint64_t MaxCount, typename Kind>
struct Set {
    static constexpr std::uint64_t limit = MaxCount;
    using Slot = zt_ptr_t;
    using Values = std::unordered_set<std::string>;

    template <typename Domain, typename Wire>
    static constexpr bool fits = std::is_same_v<Domain, Values>&& std::is_same_v<Wire, zt_ptr_t>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a Set joins a std::unordered_set<std::string> and a zt_ptr_t");
        return Kind::template Joins<std::string, Slot>();
    }

    template <typename Wire>
    static void Write(const Values& values, std::uint8_t* wire, zt_arena* arena)
    {
        zt_ptr_t pointer{};
        SetToZt<MaxCount, Slot>(values, &pointer, arena, [](const std::string& value, zt_arena* room) {
            Slot slot{};
            Kind::template Write<Slot>(value, reinterpret_cast<std::uint8_t*>(&slot), room);
            return slot;
        });
        detail::Store(wire, pointer);
    }
    template <typename Wire>
    [[gnu::always_inline]] static std::size_t Put(const Values& values, std::uint8_t* wire, std::size_t at,
                                                  detail::Room room)
    {
        if (values.size() > MaxCount) return detail::refused;
        return detail::PutElements<Slot>(
            values.begin(), values.size(), wire, at, room,
            [room](const std::string& value, std::uint8_t* slot, std::size_t next)
                __attribute__((always_inline)) { return Kind::template Put<Slot>(value, slot, next, room); });
    }
    // No capacity is reserved in advance: memory is spent only on elements that were really read.
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds arena)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint8_t* slot = detail::Get(detail::codec::set, pointer, arena, sizeof(Slot));
        Domain values;
        for (const std::uint8_t* const end = slot + pointer.size; slot != end; slot += sizeof(Slot))
            values.insert(Kind::template Read<std::string, Slot>(slot, arena));
        return values;
    }
    // In the order of the wire, repeated elements included.
    template <typename Domain, typename Wire, typename Access>
    static auto View(const std::uint8_t* wire, const Access& access)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint8_t* const first = access.At(detail::codec::set, pointer, sizeof(Slot));
        return ArrayView<Kind, std::string, Slot, Access>(first, pointer.size / sizeof(Slot), access);
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        return visit.Array(
            detail::ClaimOf<Slot>(detail::codec::set, pointer, 0, MaxCount,
                                  detail::AllocatedByHashed<std::string>(pointer.size / sizeof(Slot))),
            [&visit](const std::uint8_t* slot, const std::uint8_t* first) __attribute__((always_inline)) {
                if (!Kind::template Examine<std::string, Slot>(slot, visit)) return false;
                if constexpr (Visitor::isStrict) return visit.Expect(IsFirst(slot, first, visit), FaultKind::Repeated);
                return true;
            });
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Texts(value, true);
    }

    static std::uintptr_t After(const Values& values, std::uintptr_t at)
    {
        at = detail::AlignUp(at, alignof(Slot)) + values.size() * sizeof(Slot);
        for (const std::string& value : values)
            at = Kind::After(value, at);
        return at;
    }
    // Strings are not aligned, so each adds the same.
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        return detail::AlignUp(at, alignof(Slot)) +
               MaxCount * (sizeof(Slot) + Kind::template MostAfter<std::string>(0));
    }

private:
    // Whether no element before this one is the same. All of them were found good.
    template <typename Visitor>
    static bool IsFirst(const std::uint8_t* slot, const std::uint8_t* first, const Visitor& visit)
    {
        const std::string_view value = visit.TextAt(detail::Load<zt_ptr_t>(slot));
        for (; first != slot; first += sizeof(Slot))
            if (visit.TextAt(detail::Load<zt_ptr_t>(first)) == value) return false;
        return true;
    }
};

} // namespace vyn_connector::common::kind
