// An arena for one test, and bytes that can be written and read as text. The buffer's stale bytes are 0xA5, so a byte
// that was left alone differs from one that was zeroed; the guards around it are checked when the arena dies, and
// under the address sanitizer they cannot even be read.
//
//     TestArena arena(16, 3, 1); // 16 bytes, 3 past a multiple of 16, the first of them in use
//     StringToZt<128>("abc", &out, arena.Get());
//     EXPECT_EQ(arena.Contents(), Bytes("A5 'abc' A5*12"));
#pragma once

#include <common/zt_arena.h>

#include <gtest/gtest.h>
#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) static_cast<void>(0)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) static_cast<void>(0)
#endif

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// A sequence of bytes that compares with another and fails as a dump. The notation: two hexadecimal digits are a byte,
// text in single quotes its characters, `X*n` either of them n times; blanks and `|` separate.
class Bytes {
public:
    Bytes() = default;
    Bytes(const void* data, std::size_t size)
        : bytes(static_cast<const std::uint8_t*>(data), static_cast<const std::uint8_t*>(data) + size)
    {
    }
    explicit Bytes(std::string_view notation)
    {
        const char* const separators = " |\n";
        for (std::size_t at = 0; (at = notation.find_first_not_of(separators, at)) != notation.npos;)
            at = AppendItem(notation, at);
    }

    friend bool operator==(const Bytes& a, const Bytes& b) { return a.bytes == b.bytes; }
    friend bool operator!=(const Bytes& a, const Bytes& b) { return a.bytes != b.bytes; }
    friend Bytes operator+(Bytes a, const Bytes& b)
    {
        a.bytes.insert(a.bytes.end(), b.bytes.begin(), b.bytes.end());
        return a;
    }

    const std::uint8_t* data() const { return bytes.data(); }
    std::size_t size() const { return bytes.size(); }

    // What GoogleTest shows: sixteen bytes to a line, each line with its offset and its characters.
    friend void PrintTo(const Bytes& value, std::ostream* out)
    {
        const char* const digits = "0123456789ABCDEF";
        *out << value.size() << " bytes";
        for (std::size_t line = 0; line < value.size(); line += 16) {
            std::string hex;
            std::string text;
            for (std::size_t i = line; i < std::min(line + 16, value.size()); ++i) {
                const std::uint8_t byte = value.bytes[i];
                hex += {digits[byte >> 4], digits[byte & 15], ' '};
                text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
            }
            hex.resize(49, ' ');
            *out << "\n    " << std::to_string(line) << ":\t" << hex << text;
        }
    }

private:
    static constexpr std::string_view hexDigits = "0123456789ABCDEF";

    // Reads the item at `at` and returns where it ends. A slip in a test's notation throws.
    std::size_t AppendItem(std::string_view notation, std::size_t at)
    {
        std::string item;
        if (notation[at] == '\'') {
            const std::size_t close = notation.find('\'', at + 1);
            if (close == notation.npos) throw std::invalid_argument("open quote in bytes");
            item = notation.substr(at + 1, close - at - 1);
            at = close + 1;
        } else {
            const std::size_t high = hexDigits.find(notation[at]);
            const std::size_t low = at + 1 < notation.size() ? hexDigits.find(notation[at + 1]) : notation.npos;
            if (high == notation.npos || low == notation.npos) throw std::invalid_argument("no hexadecimal byte");
            item = static_cast<char>(high * 16 + low);
            at += 2;
        }

        std::size_t times = 1;
        if (at < notation.size() && notation[at] == '*') {
            for (times = 0, ++at; at < notation.size() && std::isdigit(static_cast<unsigned char>(notation[at])); ++at)
                times = times * 10 + static_cast<std::size_t>(notation[at] - '0');
        }
        while (times-- > 0)
            bytes.insert(bytes.end(), item.begin(), item.end());
        return at;
    }

    std::vector<std::uint8_t> bytes;
};

// A structure as the bytes that it consists of, padding included.
template <typename Structure>
Bytes BytesOf(const Structure& structure)
{
    static_assert(std::is_trivially_copyable_v<Structure>);
    return Bytes(&structure, sizeof(structure));
}

inline bool operator==(const zt_ptr_t& a, const zt_ptr_t& b)
{
    return a.offset == b.offset && a.size == b.size;
}

inline void PrintTo(const zt_ptr_t& pointer, std::ostream* out)
{
    *out << "{offset " << pointer.offset << ", size " << pointer.size << "}";
}

// An owned buffer of `capacity` bytes whose start lies `startMod16` bytes past a multiple of 16, with the arena's
// top `top` bytes behind the start.
class TestArena {
public:
    explicit TestArena(std::size_t capacity, std::size_t startMod16 = 0, std::size_t top = 0)
        : buffer(guard + capacity + guard + 16, guardByte)
    {
        const auto first = reinterpret_cast<std::uintptr_t>(buffer.data()) + guard;
        const std::uintptr_t start = (first + 15) / 16 * 16 + startMod16 % 16;
        arena.start = buffer.data() + (start - reinterpret_cast<std::uintptr_t>(buffer.data()));
        arena.top = arena.start + top;
        arena.end = arena.start + capacity;
        original = arena;
        std::memset(arena.start, stale, capacity);
        ASAN_POISON_MEMORY_REGION(buffer.data(), static_cast<std::size_t>(original.start - buffer.data()));
        ASAN_POISON_MEMORY_REGION(original.end, BehindEnd());
    }

    ~TestArena()
    {
        ASAN_UNPOISON_MEMORY_REGION(buffer.data(), buffer.size());
        const auto isGuard = [](std::uint8_t byte) { return byte == guardByte; };
        EXPECT_TRUE(std::all_of(buffer.data(), original.start, isGuard)) << "bytes before the arena were written";
        EXPECT_TRUE(std::all_of(original.end, original.end + BehindEnd(), isGuard))
            << "bytes behind the arena were written";
        EXPECT_EQ(arena.start, original.start) << "the arena's start was moved";
        EXPECT_EQ(arena.end, original.end) << "the arena's end was moved";
    }

    TestArena(const TestArena&) = delete;
    TestArena& operator=(const TestArena&) = delete;

    zt_arena* Get() { return &arena; }
    const zt_arena* Get() const { return &arena; }

    std::uint8_t* Start() const { return original.start; }
    std::size_t Capacity() const { return static_cast<std::size_t>(original.end - original.start); }

    // How far the top is behind the start.
    std::size_t Top() const { return static_cast<std::size_t>(arena.top - original.start); }

    // Everything from the start to the end, the stale bytes included.
    Bytes Contents() const { return Bytes(original.start, Capacity()); }

    // Everything from the start to the top.
    Bytes Used() const { return Bytes(original.start, Top()); }

    // Lays bytes down as a sender would have. The top stays.
    void Put(std::size_t offset, const Bytes& bytes)
    {
        if (offset > Capacity() || bytes.size() > Capacity() - offset) throw std::out_of_range("behind the test arena");
        if (bytes.size() != 0) std::memcpy(original.start + offset, bytes.data(), bytes.size());
    }
    void Put(std::size_t offset, std::string_view notation) { Put(offset, Bytes(notation)); }

    static constexpr std::uint8_t stale = 0xA5;

private:
    std::size_t BehindEnd() const { return static_cast<std::size_t>(buffer.data() + buffer.size() - original.end); }

    static constexpr std::size_t guard = 64;
    static constexpr std::uint8_t guardByte = 0xC3;

    std::vector<std::uint8_t> buffer;
    zt_arena arena{};
    zt_arena original{};
};
