// What the codecs share: what each of them raises, and the sequence by which a writer gets room in an arena. Raising is
// out of line and cold, so that a codec's good path stays straight.
//
// Every codec throws mur::InvalidArgumentException for a null argument, before anything else, and names the check in
// it. A writer then throws std::length_error where the value is over its limit, with nothing reserved, and
// mur::ResultCodeException (out of space) where the arena cannot take it. A reader throws std::out_of_range where the
// pointer does not lie inside the arena or its size is not a whole number of elements. The codecs' headers say what
// differs.
#pragma once

#include <common/zt_arena.h>
#include <mur/raise.h>
#include <mur/result_code.h>

#include <fmt/core.h>

#include <stdexcept>
#include <string_view>
#include <utility>

namespace vyn_connector::common::detail {

// A codec's argument checks, in the order in which they are made, and the texts of its other errors. People who read
// fault reports know the files and the numbers, so both are fixed, wherever the tree is built and a check stands in it.
struct Codec {
    const char* file;
    struct {
        int arena;
        int output;
    } writing;
    struct {
        int arena;
        int pointer;
    } reading;
    const char* tooLarge;
    const char* outside; // "{}" is the wire pointer's offset
};

namespace codec {

inline constexpr Codec string = {"lyr_ipc/source/common/include/common/zt_string",
                                 {21, 22},
                                 {39, 40},
                                 "zt string: string size larger than zt buffer",
                                 "zt string: zt_arena does not contain an element with the address {}"};
inline constexpr Codec blob = {"lyr_ipc/source/common/source/zt_blob",
                               {14, 15},
                               {32, 33},
                               "zt blob: blob size larger than zt buffer",
                               "zt blob: zt_arena does not contain an element with the address {}"};
inline constexpr Codec vector = {"lyr_ipc/source/common/include/common/zt_vector",
                                 {18, 19},
                                 {39, 40},
                                 "zt vector: vector size larger than zt buffer",
                                 "zt vector: zt_arena does not contain an element with the address {}"};
// Its other errors are result codes. Between its two checks on writing stands that of an empty range.
inline constexpr Codec range = {"lyr_ipc/source/common/include/common/zt_range", {20, 22}, {49, 50}, nullptr, nullptr};
inline constexpr int emptyRange = 21;
// The writers of optionals and sets do not test their output.
inline constexpr Codec optional = {"lyr_ipc/source/common/include/common/zt_optional",
                                   {17, 0},
                                   {39, 40},
                                   nullptr,
                                   "zt optional: zt_arena does not contain an element with the address {}"};
inline constexpr Codec set = {"lyr_ipc/source/common/include/common/zt_set",
                              {19, 0},
                              {43, 44},
                              "zt set: set size larger than zt buffer",
                              "zt set: zt_arena does not contain an element with the address {}"};

} // namespace codec

[[noreturn, gnu::cold, gnu::noinline]] inline void RaiseTooLarge(const char* text)
{
    throw std::length_error(text);
}

// `text` holds one "{}", for the wire pointer's offset.
[[noreturn, gnu::cold, gnu::noinline]] inline void RaiseOutside(std::string_view text, std::uint32_t offset)
{
    throw std::out_of_range(fmt::vformat(fmt::string_view(text.data(), text.size()), fmt::make_format_args(offset)));
}

inline void RequireArgument(bool given, const char* file, int line)
{
    if (!given) mur::raise_invalid_argument(file, line);
}

// Points `*out` at what was reserved and returns where it is. The stored offset is cut to 32 bits, so the address
// returned is not the reserved one but what a reader will compute from `*out`: null where that does not resolve.
inline std::uint8_t* PointAt(const void* reserved, zt_ptr_t* out, const zt_arena* arena, std::size_t size,
                             std::size_t elementSize) noexcept
{
    const auto offset = reinterpret_cast<std::uintptr_t>(reserved) - reinterpret_cast<std::uintptr_t>(arena->start);
    out->size = static_cast<std::uint32_t>(size);
    out->offset = static_cast<std::uint32_t>(offset);

    std::size_t count = 0;
    return static_cast<std::uint8_t*>(zt_arena_resolve(arena, out, elementSize, &count));
}

// Gets `count` zeroed elements from the arena and points `*out` at them. Raises arena exhaustion where they do not fit
// or `*out` does not resolve; what was reserved by then stays so.
template <typename Wire>
std::uint8_t* PlaceElements(zt_ptr_t* out, zt_arena* arena, std::size_t count)
{
    const std::size_t size = count * sizeof(Wire);
    const void* const reserved = zt_arena_reserve(arena, size, alignof(Wire));
    if (reserved == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    std::uint8_t* const array = PointAt(reserved, out, arena, size, sizeof(Wire));
    if (array == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    return array;
}

// Copies `size` unaligned bytes into the arena and points `*out` at them. Raises as PlaceElements does.
inline void PlaceBytes(zt_ptr_t* out, zt_arena* arena, const void* data, std::size_t size)
{
    void* const reserved = Claim(arena, size, 1);
    if (reserved == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    std::uint8_t* const bytes = PointAt(reserved, out, arena, size, 1);
    // The copy covers what was claimed, unless the cut offset leads elsewhere.
    if (bytes != reserved) std::memset(reserved, 0, size);
    if (bytes == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    if (size != 0) std::memcpy(bytes, data, size);
}

// Wire bytes may stand at any address: they are read and written whole, padding included. By the builtin: where
// _FORTIFY_SOURCE is on, memcpy is a function that wraps it, and one more to inline.
template <typename Wire>
Wire Load(const void* bytes) noexcept
{
    static_assert(std::is_trivially_copyable_v<Wire>);
    Wire value;
    __builtin_memcpy(&value, bytes, sizeof(value));
    return value;
}

template <typename Wire>
void Store(void* bytes, const Wire& value) noexcept
{
    static_assert(std::is_trivially_copyable_v<Wire>);
    __builtin_memcpy(bytes, &value, sizeof(value));
}

// Becomes what `make` returns where it is converted, so that whoever holds it builds the value in place.
template <typename Make>
struct Lazy {
    Make make;
    operator decltype(std::declval<const Make&>()())() const { return make(); }
};
template <typename Make>
Lazy(Make) -> Lazy<Make>;

} // namespace vyn_connector::common::detail
