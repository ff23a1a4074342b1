// Elements of lists, ranges, optionals and sets that no record of the library has, and their converters. The numbers
// are chosen so that every byte of an element tells where it belongs.
#pragma once

#include <common/zt_arena.h>

#include <cstdint>
#include <cstring>
#include <ostream>

// Twelve bytes aligned to four. What would be padding has names: a structure of up to sixteen bytes is returned in
// registers, which need not carry its padding.
struct SmallWire {
    std::uint8_t kind;
    std::uint8_t reserved[3];
    std::uint32_t value;
    std::uint16_t tail;
    std::uint8_t reserved2[2];
};
static_assert(sizeof(SmallWire) == 12 && alignof(SmallWire) == 4);

// Sixteen bytes aligned to eight.
struct LargeWire {
    std::uint64_t id;
    std::uint16_t tail;
    std::uint8_t reserved[6];
};
static_assert(sizeof(LargeWire) == 16 && alignof(LargeWire) == 8);

// Twenty-four bytes aligned to eight; bytes 9 to 11 and 18 to 23 are padding.
struct PaddedWire {
    std::uint64_t id;
    std::uint8_t kind;
    std::uint32_t value;
    std::uint16_t tail;
};
static_assert(sizeof(PaddedWire) == 24 && alignof(PaddedWire) == 8);

struct Small {
    std::uint8_t kind{};
    std::uint32_t value{};
    std::uint16_t tail{};

    friend bool operator==(const Small& a, const Small& b)
    {
        return a.kind == b.kind && a.value == b.value && a.tail == b.tail;
    }
    friend void PrintTo(const Small& small, std::ostream* out)
    {
        *out << "{kind " << +small.kind << ", value " << small.value << ", tail " << small.tail << "}";
    }
};

struct Large {
    std::uint64_t id{};
    std::uint16_t tail{};

    friend bool operator==(const Large& a, const Large& b) { return a.id == b.id && a.tail == b.tail; }
    friend void PrintTo(const Large& large, std::ostream* out)
    {
        *out << "{id " << large.id << ", tail " << large.tail << "}";
    }
};

inline SmallWire SmallToWire(const Small& value, zt_arena*)
{
    SmallWire wire;
    std::memset(&wire, 0, sizeof(wire));
    wire.kind = value.kind;
    wire.value = value.value;
    wire.tail = value.tail;
    return wire;
}

inline Small SmallFromWire(const SmallWire& wire, const zt_arena*)
{
    return {wire.kind, wire.value, wire.tail};
}

inline LargeWire LargeToWire(const Large& value, zt_arena*)
{
    LargeWire wire;
    std::memset(&wire, 0, sizeof(wire));
    wire.id = value.id;
    wire.tail = value.tail;
    return wire;
}

inline Large LargeFromWire(const LargeWire& wire, const zt_arena*)
{
    return {wire.id, wire.tail};
}

// A Small with an identifier of 8 before it.
inline PaddedWire PaddedToWire(const Small& value, zt_arena*)
{
    PaddedWire wire;
    std::memset(&wire, 0, sizeof(wire));
    wire.id = 8;
    wire.kind = value.kind;
    wire.value = value.value;
    wire.tail = value.tail;
    return wire;
}

// What a converter of a test throws; nothing in the library knows it.
struct ConverterFailed {
    int element;
};
