// The runtime's UTF-16 message string: what exceptions carry as their message and render as their text. Its
// characters are always followed by a 0; up to 7 of them need no allocation. A failed operation leaves the
// string as it was.
#pragma once

#include <mur/allocator.h>
#include <mur/export.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace mur {

template <typename Char>
struct MUR_EXPORT char_traits : std::char_traits<Char> {
};

namespace types {

// Owns a buffer that a string has grown out of. It holds no reference to the allocator object, so it must not
// outlive the string it was filled by.
template <typename T, typename Allocator>
struct auto_delete {
    auto_delete() = default;
    auto_delete(const auto_delete&) = delete;
    auto_delete& operator=(const auto_delete&) = delete;
    ~auto_delete() { reset(nullptr, nullptr, 0); }

    // Frees what is held and takes over `newPointer`, a buffer of `newCount` elements from `newAllocator`.
    void reset(T* newPointer, allocator_interface* newAllocator, std::size_t newCount) noexcept
    {
        if (pointer != nullptr) Allocator::Free(allocator, pointer);
        pointer = newPointer;
        allocator = newAllocator;
        count = newCount;
    }

    T* pointer = nullptr;
    allocator_interface* allocator = nullptr;
    std::size_t count = 0;
};

// Declared for every character type, built for one: see `wide_string`. The order of the fields is part of the
// binary interface.
template <typename Char, typename Traits, typename Allocator>
class MUR_EXPORT basic_string_t {
public:
    basic_string_t() noexcept;

    // Shares the allocator object of `other`. This and the construction from a view throw std::length_error
    // above 0x7FFFFFFFFFFFFFFE characters and std::bad_alloc when there is no memory.
    basic_string_t(const basic_string_t& other);

    // Empty; the string takes a reference of its own to the object, null stands for malloc and free.
    explicit basic_string_t(allocator_interface* allocatorObject) noexcept;

    basic_string_t(std::basic_string_view<Char> text, allocator_interface* allocatorObject = nullptr);

    basic_string_t& operator=(const basic_string_t&) = delete;
    basic_string_t& operator=(basic_string_t&&) = delete;

    ~basic_string_t();

    // `text` may be a part of the string itself.
    basic_string_t& append(const Char* text, std::size_t count);

    // Appends `c` `count` times.
    basic_string_t& append(std::size_t count, Char c);

    // Makes room for `extra` more characters; the caller then writes them and the terminator. The buffer that
    // is given up goes to `keep`, or is freed at once when `keep` is null. Throws std::length_error when the
    // string would exceed 0x7FFFFFFFFFFFFFFE characters and std::bad_alloc when there is no memory.
    void reserve_extra(auto_delete<Char, Allocator>* keep, std::size_t extra);

    // Valid until the string is changed or destroyed.
    operator std::basic_string_view<Char>() const noexcept;

    Char* data;
    std::size_t size;     // in characters, without the terminator
    std::size_t capacity; // characters that fit without growing, without the terminator
    allocator_interface* allocator;
    Char inlineBuffer[8];

private:
    bool owns_heap_buffer() const noexcept;
};

extern template class basic_string_t<char16_t, char_traits<char16_t>, abi_v1_allocator>;

using wide_string = basic_string_t<char16_t, char_traits<char16_t>, abi_v1_allocator>;

} // namespace types
} // namespace mur
