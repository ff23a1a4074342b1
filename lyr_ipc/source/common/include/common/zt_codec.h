// What the codecs share: the sequence by which each of them gets room in an arena, and the errors that they raise
// beside the runtime's. Included by the codec headers; not called by users of the library. The raising operations
// are out of line and cold, so that a codec's good path stays straight.
#pragma once

#include <common/zt_arena.h>
#include <mur/raise.h>
#include <mur/result_code.h>

#include <fmt/core.h>

#include <stdexcept>
#include <string_view>

namespace vyn_connector::common {

// What an argument error records as its file: the same wherever the tree is built or installed. The checks keep
// their lines in these files too, because people who read fault reports know the numbers.
namespace source {
inline constexpr const char* zt_string = "lyr_ipc/source/common/include/common/zt_string";
inline constexpr const char* zt_blob = "lyr_ipc/source/common/source/zt_blob";
inline constexpr const char* zt_vector = "lyr_ipc/source/common/include/common/zt_vector";
inline constexpr const char* zt_range = "lyr_ipc/source/common/include/common/zt_range";
inline constexpr const char* zt_optional = "lyr_ipc/source/common/include/common/zt_optional";
inline constexpr const char* zt_set = "lyr_ipc/source/common/include/common/zt_set";
} // namespace source

[[noreturn, gnu::cold, gnu::noinline]] inline void RaiseTooLarge(const char* text)
{
    throw std::length_error(text);
}

// `text` holds one "{}", for the wire pointer's offset.
[[noreturn, gnu::cold, gnu::noinline]] inline void RaiseOutside(std::string_view text, std::uint32_t offset)
{
    throw std::out_of_range(fmt::vformat(fmt::string_view(text.data(), text.size()), fmt::make_format_args(offset)));
}

// Points `*out` at what was reserved and returns where it is. The stored offset is cut to 32 bits, so the address
// returned is not the reserved one but the one that a reader will compute from `*out`: null where that does not resolve.
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
    void* const reserved = zt_arena_claim(arena, size, 1);
    if (reserved == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    std::uint8_t* const bytes = PointAt(reserved, out, arena, size, 1);
    // The copy covers what was claimed, unless the cut offset leads elsewhere.
    if (bytes != reserved) std::memset(reserved, 0, size);
    if (bytes == nullptr) mur::raise_result_code(mur::resultOutOfSpace);
    if (size != 0) std::memcpy(bytes, data, size);
}

// Reads element `index` of a resolved array, which a hostile or careless sender may have placed at any address.
template <typename Wire>
Wire LoadElement(const void* array, std::size_t index) noexcept
{
    static_assert(std::is_trivially_copyable_v<Wire>);
    Wire element;
    std::memcpy(&element, static_cast<const std::uint8_t*>(array) + index * sizeof(Wire), sizeof(Wire));
    return element;
}

// Stores element `index` as bytes, padding included.
template <typename Wire>
void StoreElement(std::uint8_t* array, std::size_t index, const Wire& element) noexcept
{
    static_assert(std::is_trivially_copyable_v<Wire>);
    std::memcpy(array + index * sizeof(Wire), &element, sizeof(Wire));
}

} // namespace vyn_connector::common
