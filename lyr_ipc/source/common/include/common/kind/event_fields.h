// The kinds of an event's fields. Its strings are placed without zeroing their room, an empty one owns a byte, each has
// a cap, and they are read against the arena's top and not its end. A reader and a writer built to these rules agree on
// every edge. A field that fails clears the status; nothing is thrown, and the fields behind it go on. Each kind can
// say afterwards in words what failed, with ": " or an index before it; a field without a fault is said to be "". The
// words for reading are those of fault.h, which is too much to include for every caller.
#pragma once

#include <common/array_view.h>
#include <common/detail/put.h>
#include <common/detail/reach.h>
#include <common/examine.h>
#include <common/kind/in_place.h>
#include <common/kind/text.h>

#include <string>
#include <utility>

namespace lyr::ipc::arena::conv {

// The conversions store Failed and nothing else: set it to Ok first, carry it through as many conversions as you like,
// and it says afterwards whether all of them succeeded.
enum class Status : std::uint8_t { Failed = 0, Ok = 1 };

} // namespace lyr::ipc::arena::conv

namespace vyn_connector::common::detail {

using lyr::ipc::arena::conv::Status;

// The pointer of a string that could not be placed.
inline constexpr zt_ptr_t unplaced{0xFFFFFFFF, 0xFFFFFFFF};

inline zt_ptr_t PlaceEventText(const std::string& text, std::size_t cap, zt_arena& arena, Status& status) noexcept
{
    const auto start = reinterpret_cast<std::uintptr_t>(arena.start);
    const auto top = reinterpret_cast<std::uintptr_t>(arena.top);
    const auto end = reinterpret_cast<std::uintptr_t>(arena.end);

    const auto length = static_cast<std::uint32_t>(text.size());
    const auto offset = static_cast<std::uint32_t>(top - start);
    const std::uintptr_t target = start + offset;
    const std::uint32_t need = length == 0 ? 1 : length;
    const std::uintptr_t limit = end - top > cap ? top + cap : end;
    if (need > limit - target) { // target + need > limit, where the sum might wrap
        status = Status::Failed;
        return unplaced;
    }

    if (length > 0 && target != 0) std::memcpy(reinterpret_cast<void*>(target), text.data(), length);
    if (offset == unplaced.offset || length == unplaced.size)
        status = Status::Failed;
    else
        arena.top = reinterpret_cast<std::uint8_t*>(target + need);
    return {offset, length};
}

inline bool IsInUsedPart(zt_ptr_t pointer, const zt_arena& arena) noexcept
{
    return IsInUsedPart(pointer, reinterpret_cast<std::uintptr_t>(arena.start),
                        reinterpret_cast<std::uintptr_t>(arena.top));
}

[[gnu::noinline]] inline std::string FetchEventText(zt_ptr_t pointer, const zt_arena& arena, Status& status)
{
    if (IsInUsedPart(pointer, arena))
        return std::string(reinterpret_cast<const char*>(arena.start) + pointer.offset, pointer.size);
    status = Status::Failed;
    return {};
}

// The room that a string takes.
constexpr std::size_t EventTextSize(std::size_t size)
{
    return size == 0 ? 1 : size;
}

} // namespace vyn_connector::common::detail

namespace vyn_connector::common::kind {

template <std::size_t MaxBytes>
struct EventText : Text<MaxBytes> {
    template <typename Wire>
    static void Write(const std::string& value, std::uint8_t* wire, zt_arena& arena, detail::Status& status)
    {
        detail::Store(wire, detail::PlaceEventText(value, MaxBytes, arena, status));
    }
    template <typename Wire>
    [[gnu::always_inline]] static std::size_t Put(const std::string& value, std::uint8_t* wire, std::size_t at,
                                                  detail::Room room)
    {
        const std::size_t end = at + detail::EventTextSize(value.size());
        if (value.size() > MaxBytes || end > room.size) return detail::refused;
        detail::StorePointer(wire, at, value.size());
        detail::CopyBytes<Text<MaxBytes>::isLong>(room.start + at, value.data(), value.size());
        return end;
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, const zt_arena& arena, detail::Status& status)
    {
        return detail::FetchEventText(detail::Load<zt_ptr_t>(wire), arena, status);
    }
    // Empty where it lies outside.
    template <typename Domain, typename Wire, typename Access>
    static std::string_view View(const std::uint8_t* wire, const Access& access)
    {
        return access.EventTextAt(detail::Load<zt_ptr_t>(wire));
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        return visit.EventText(detail::Load<zt_ptr_t>(wire), MaxBytes);
    }

    static std::string FaultOnWriting(const std::string& value)
    {
        if (value.size() <= MaxBytes) return {};
        return fmt::format(": {} bytes, at most {}", value.size(), MaxBytes);
    }
    static std::string FaultOnReading(const std::uint8_t* wire, const zt_arena& arena)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        if (detail::IsInUsedPart(pointer, arena)) return {};
        return fmt::format(": zt_arena does not contain an element with the address {}", pointer.offset);
    }

    static std::uintptr_t After(const std::string& value, std::uintptr_t at)
    {
        return value.size() > MaxBytes ? at : at + detail::EventTextSize(value.size());
    }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        return at + MaxBytes;
    }
};

// A fixed array of strings.
template <std::size_t Count, std::size_t MaxBytes>
struct EventTexts {
    static constexpr std::size_t limit = MaxBytes;
    using Element = EventText<MaxBytes>;

    template <typename Domain, typename Wire>
    static constexpr bool fits =
        std::is_same_v<Domain, std::array<std::string, Count>>&& std::is_same_v<Wire, zt_ptr_t[Count]>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "an EventTexts joins a std::array of strings and an array of zt_ptr_t");
        return true;
    }

    template <typename Wire, typename Domain>
    static void Write(const Domain& values, std::uint8_t* wire, zt_arena& arena, detail::Status& status)
    {
        for (const std::string& value : values) {
            Element::template Write<zt_ptr_t>(value, wire, arena, status);
            wire += sizeof(zt_ptr_t);
        }
    }
    template <typename Wire, typename Domain>
    [[gnu::always_inline]] static std::size_t Put(const Domain& values, std::uint8_t* wire, std::size_t at,
                                                  detail::Room room)
    {
        for (const std::string& value : values) {
            at = Element::template Put<zt_ptr_t>(value, wire, at, room);
            if (at == detail::refused) return detail::refused;
            wire += sizeof(zt_ptr_t);
        }
        return at;
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, const zt_arena& arena, detail::Status& status)
    {
        return ReadEach<Domain>(wire, arena, status, std::make_index_sequence<Count>{});
    }
    template <typename Domain, typename Wire, typename Access>
    static auto View(const std::uint8_t* wire, const Access& access)
    {
        return ArrayView<Element, std::string, zt_ptr_t, Access>(wire, Count, access);
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        return visit.template Each<sizeof(zt_ptr_t)>(
            wire, Count, [&visit](const std::uint8_t* text) __attribute__((always_inline)) {
                return Element::template Examine<std::string, zt_ptr_t>(text, visit);
            });
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Texts(value, false);
    }

    template <typename Domain>
    static std::string FaultOnWriting(const Domain& values)
    {
        for (std::size_t i = 0; i < Count; ++i) {
            const std::string fault = Element::FaultOnWriting(values[i]);
            if (!fault.empty()) return fmt::format("[{}]{}", i, fault);
        }
        return {};
    }
    static std::string FaultOnReading(const std::uint8_t* wire, const zt_arena& arena)
    {
        for (std::size_t i = 0; i < Count; ++i) {
            const std::string fault = Element::FaultOnReading(wire + i * sizeof(zt_ptr_t), arena);
            if (!fault.empty()) return fmt::format("[{}]{}", i, fault);
        }
        return {};
    }

    template <typename Domain>
    static std::uintptr_t After(const Domain& values, std::uintptr_t at)
    {
        for (const std::string& value : values)
            at = Element::After(value, at);
        return at;
    }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        return at + Count * MaxBytes;
    }

private:
    template <typename Domain, std::size_t... Index>
    static Domain ReadEach(const std::uint8_t* wire, const zt_arena& arena, detail::Status& status,
                           std::index_sequence<Index...>)
    {
        return Domain{Element::template Read<std::string, zt_ptr_t>(wire + Index * sizeof(zt_ptr_t), arena, status)...};
    }
};

// A number as in every record, which cannot fail.
struct EventNumber : Number {
    template <typename Wire, typename Domain>
    static void Write(const Domain& value, std::uint8_t* wire, zt_arena&, detail::Status&)
    {
        StoreAs<Wire>(value, wire);
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, const zt_arena&, detail::Status&)
    {
        return LoadAs<Domain, Wire>(wire);
    }

    template <typename Domain>
    static std::string FaultOnWriting(const Domain&)
    {
        return {};
    }
    static std::string FaultOnReading(const std::uint8_t*, const zt_arena&) { return {}; }
};

// Written unchecked. On reading, a value that no severity has clears the status and is kept all the same.
struct EventSeverity : Enumeration {
    static constexpr std::uint32_t highest = 3;

    template <typename Wire, typename Domain>
    static void Write(const Domain& value, std::uint8_t* wire, zt_arena&, detail::Status&)
    {
        detail::Store(wire, static_cast<Wire>(value));
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, const zt_arena&, detail::Status& status)
    {
        static_assert(static_cast<Wire>(Domain::Severity3) == highest);
        const auto value = detail::Load<Wire>(wire);
        if (value > highest) status = detail::Status::Failed;
        return static_cast<Domain>(value);
    }
    template <typename Domain, typename Wire, typename Visitor>
    static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        return visit.Severity(detail::Load<Wire>(wire), highest);
    }

    template <typename Domain>
    static std::string FaultOnWriting(const Domain&)
    {
        return {};
    }
    static std::string FaultOnReading(const std::uint8_t* wire, const zt_arena&)
    {
        const auto value = detail::Load<std::uint32_t>(wire);
        return value <= highest ? "" : fmt::format(": {} is greater than {}", value, highest);
    }
};

} // namespace vyn_connector::common::kind
