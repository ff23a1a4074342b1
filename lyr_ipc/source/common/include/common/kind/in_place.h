// The kinds of field that lie in the wire structure alone and take nothing from the arena: numbers, flags,
// enumerations, times, digests. No value of theirs is refused, in neither direction.
#pragma once

#include <common/detail/put.h>
#include <common/examine.h>
#include <wem/types/timestamp.h>

#include <array>

namespace vyn_connector::common::kind {

struct InPlace {
    template <typename Value>
    static constexpr std::uintptr_t After(const Value&, std::uintptr_t at)
    {
        return at;
    }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        return at;
    }
};

// Whatever a kind stores at its place in the wire structure, and loads from there, is all that it writes and reads.
template <typename Self>
struct StoredInPlace : InPlace {
    template <typename Wire, typename Domain>
    static void Write(const Domain& value, std::uint8_t* wire, zt_arena*)
    {
        Self::template StoreAs<Wire>(value, wire);
    }
    template <typename Wire, typename Domain>
    [[gnu::always_inline]] static std::size_t Put(const Domain& value, std::uint8_t* wire, std::size_t at, detail::Room)
    {
        Self::template StoreAs<Wire>(value, wire);
        return at;
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds)
    {
        return Self::template LoadAs<Domain, Wire>(wire);
    }
    template <typename Domain, typename Wire, typename Access>
    static Domain View(const std::uint8_t* wire, const Access&)
    {
        return Self::template LoadAs<Domain, Wire>(wire);
    }
    template <typename Domain, typename Wire, typename Visitor>
    static bool Examine(const std::uint8_t*, Visitor&)
    {
        return true;
    }
};

// An integer of one type on both sides, copied bit for bit.
struct Number : StoredInPlace<Number> {
    template <typename Domain, typename Wire>
    static constexpr bool fits =
        std::is_integral_v<Domain> && !std::is_same_v<Domain, bool> && std::is_same_v<Domain, Wire>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a Number joins two integers of one type");
        return true;
    }
    template <typename Value>
    using Element = Value;

    template <typename Wire>
    static void StoreAs(const Wire& value, std::uint8_t* wire)
    {
        detail::Store(wire, value);
    }
    template <typename Domain, typename Wire>
    static Domain LoadAs(const std::uint8_t* wire)
    {
        return detail::Load<Wire>(wire);
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Number(value);
    }
};

// A bool, as the byte that it is: the writer does not make 0 or 1 of it. On reading, any byte but zero is true.
struct Flag : StoredInPlace<Flag> {
    template <typename Domain, typename Wire>
    static constexpr bool fits = std::is_same_v<Domain, bool>&& std::is_same_v<Wire, std::uint8_t>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a Flag joins a bool and a std::uint8_t");
        return true;
    }
    template <typename Value>
    using Element = std::uint8_t;

    template <typename Wire>
    static void StoreAs(const bool& value, std::uint8_t* wire)
    {
        std::memcpy(wire, &value, 1);
    }
    template <typename Domain, typename Wire>
    static Domain LoadAs(const std::uint8_t* wire)
    {
        return *wire != 0;
    }
    template <typename Domain, typename Wire, typename Visitor>
    static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        return visit.Expect(*wire <= 1, FaultKind::Flag);
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Flag(value);
    }
};

// An enumeration, as its integer. No value is refused.
struct Enumeration : StoredInPlace<Enumeration> {
    template <typename Domain, typename Wire>
    static constexpr bool fits = std::is_enum_v<Domain>&& std::is_integral_v<Wire> && sizeof(Domain) == sizeof(Wire);
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "an Enumeration joins an enumeration and an integer of its size");
        return true;
    }
    template <typename Value>
    using Element = std::underlying_type_t<Value>;

    template <typename Wire, typename Domain>
    static void StoreAs(const Domain& value, std::uint8_t* wire)
    {
        detail::Store(wire, static_cast<Wire>(value));
    }
    template <typename Domain, typename Wire>
    static Domain LoadAs(const std::uint8_t* wire)
    {
        return static_cast<Domain>(detail::Load<Wire>(wire));
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Number(static_cast<std::underlying_type_t<Value>>(value));
    }
};

// Sixteen bytes, as they stand.
struct Bytes : StoredInPlace<Bytes> {
    template <typename Domain, typename Wire>
    static constexpr bool fits =
        std::is_same_v<Domain, std::array<std::byte, 16>>&& std::is_same_v<Wire, std::uint8_t[16]>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a Bytes joins a std::array<std::byte, 16> and a std::uint8_t[16]");
        return true;
    }
    template <typename Value>
    using Element = Value;

    template <typename Wire, typename Domain>
    static void StoreAs(const Domain& value, std::uint8_t* wire)
    {
        detail::Store(wire, value);
    }
    template <typename Domain, typename Wire>
    static Domain LoadAs(const std::uint8_t* wire)
    {
        return detail::Load<Domain>(wire);
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Digits(value);
    }
};

// A time stamp, as its signed 64-bit count without change of unit.
struct Time : StoredInPlace<Time> {
    template <typename Domain, typename Wire>
    static constexpr bool fits = std::is_same_v<Domain, wem::types::Timestamp>&& std::is_same_v<Wire, std::int64_t>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a Time joins a wem::types::Timestamp and a std::int64_t");
        return true;
    }
    template <typename Value>
    using Element = std::int64_t;

    template <typename Wire>
    static void StoreAs(const wem::types::Timestamp& value, std::uint8_t* wire)
    {
        detail::Store(wire, value.count);
    }
    template <typename Domain, typename Wire>
    static Domain LoadAs(const std::uint8_t* wire)
    {
        return Domain{detail::Load<Wire>(wire)};
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Time(value);
    }
};

} // namespace vyn_connector::common::kind
