// The kind of an optional member: a pointer to an array of no or one element of another kind. Tables name it as
// Optional<Kind>: what is absent is written as {0, 0}; of several elements a reader takes the first.
#pragma once

#include <common/detail/derived.h>
#include <common/detail/get.h>
#include <common/detail/put.h>
#include <common/detail/reach.h>
#include <common/examine.h>
#include <common/kind/nested.h>
#include <common/zt_optional.h>

namespace vyn_connector::common::detail {

template <typename Domain>
inline constexpr bool isOptional = false;
template <typename Value>
inline constexpr bool isOptional<std::optional<Value>> = true;

} // namespace vyn_connector::common::detail

namespace vyn_connector::common::kind {

// Optional<Text<128>>, Optional<Time>, Optional<Nested>.
template <typename Kind>
struct Optional {
    template <typename Domain, typename Wire>
    static constexpr bool fits = detail::isOptional<Domain>&& std::is_same_v<Wire, zt_ptr_t>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "an Optional joins a std::optional and a zt_ptr_t");
        if constexpr (detail::isOptional<Domain>) return JoinsValue<typename Domain::value_type>();
        return true;
    }

    template <typename Wire, typename Value>
    static void Write(const std::optional<Value>& value, std::uint8_t* wire, zt_arena* arena)
    {
        using Slot = typename Kind::template Element<Value>;
        zt_ptr_t pointer{};
        OptionalToZt<Slot>(value, &pointer, arena, [](const Value& present, zt_arena* room) {
            Slot slot;
            std::memset(&slot, 0, sizeof(slot));
            Kind::template Write<Slot>(present, reinterpret_cast<std::uint8_t*>(&slot), room);
            return slot;
        });
        detail::Store(wire, pointer);
    }
    template <typename Wire, typename Value>
    [[gnu::always_inline]] static std::size_t Put(const std::optional<Value>& value, std::uint8_t* wire, std::size_t at,
                                                  detail::Room room)
    {
        using Slot = typename Kind::template Element<Value>;
        if (!value.has_value()) {
            detail::StorePointer(wire, 0, 0);
            return at;
        }
        return detail::PutArray<Slot>(
            1, wire, at, room, [&](std::uint8_t * slot, std::size_t next) __attribute__((always_inline)) {
                return Kind::template Put<Slot>(*value, slot, next, room);
            });
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds arena)
    {
        using Value = typename Domain::value_type;
        using Slot = typename Kind::template Element<Value>;
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint8_t* const slot = detail::Get(detail::codec::optional, pointer, arena, sizeof(Slot));
        if (pointer.size == 0) return std::nullopt;
        return Domain(std::in_place, detail::Lazy{[&] { return ReadSlot<Value, Slot>(slot, arena); }});
    }
    template <typename Domain, typename Wire, typename Access>
    static auto View(const std::uint8_t* wire, const Access& access)
    {
        using Value = typename Domain::value_type;
        using Slot = typename Kind::template Element<Value>;
        using Look = decltype(Kind::template View<Value, Slot>(wire, access));
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint8_t* const slot = access.At(detail::codec::optional, pointer, sizeof(Slot));
        return pointer.size == 0 ? std::optional<Look>() : Kind::template View<Value, Slot>(slot, access);
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        using Value = typename Domain::value_type;
        using Slot = typename Kind::template Element<Value>;
        return visit.Optional(
            detail::ClaimOf<Slot>(detail::codec::optional, detail::Load<zt_ptr_t>(wire), 0, 1, 0),
            [&visit](const std::uint8_t* slot)
                __attribute__((always_inline)) { return Kind::template Examine<Value, Slot>(slot, visit); });
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        if (value.has_value())
            Kind::Show(*value, out);
        else
            out.Absent();
    }

    template <typename Value>
    static std::uintptr_t After(const std::optional<Value>& value, std::uintptr_t at)
    {
        return value.has_value() ? Kind::After(*value, AfterSlot<Value>(at)) : at;
    }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        using Value = typename Domain::value_type;
        return Kind::template MostAfter<Value>(AfterSlot<Value>(at));
    }

private:
    template <typename Value>
    static constexpr bool JoinsValue()
    {
        return Kind::template Joins<Value, typename Kind::template Element<Value>>();
    }

    // A record is inlined, as the elements of lists are.
    template <typename Value, typename Slot>
    [[gnu::always_inline]] static Value ReadSlot(const std::uint8_t* slot, detail::Bounds arena)
    {
        if constexpr (Nested::fits<Value, Slot>)
            return detail::ReadElement<Value>(slot, arena);
        else
            return Kind::template Read<Value, Slot>(slot, arena);
    }

    template <typename Value>
    static constexpr std::uintptr_t AfterSlot(std::uintptr_t at)
    {
        using Slot = typename Kind::template Element<Value>;
        return detail::AlignUp(at, alignof(Slot)) + sizeof(Slot);
    }
};

} // namespace vyn_connector::common::kind
