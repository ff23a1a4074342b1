// The kind of a set of strings: a pointer to an array of elements of another kind, in no fixed order, none of which is
// meant twice.
#pragma once

#include <common/detail/get.h>
#include <common/detail/put.h>
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
};

} // namespace vyn_connector::common::kind
