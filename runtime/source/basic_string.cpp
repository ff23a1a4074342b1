// The message string's operations; its only instantiation is here.
#include <mur/basic_string.h>

#include <algorithm>
#include <new>
#include <stdexcept>

namespace mur::types {

namespace {

constexpr std::size_t inlineCapacity = 7;
constexpr std::size_t maxSize = 0x7FFFFFFFFFFFFFFE;

} // namespace

template <typename Char, typename Traits, typename Allocator>
basic_string_t<Char, Traits, Allocator>::basic_string_t() noexcept : basic_string_t(nullptr)
{
}

template <typename Char, typename Traits, typename Allocator>
basic_string_t<Char, Traits, Allocator>::basic_string_t(const basic_string_t& other)
    : basic_string_t(std::basic_string_view<Char>(other), other.allocator)
{
}

template <typename Char, typename Traits, typename Allocator>
basic_string_t<Char, Traits, Allocator>::basic_string_t(allocator_interface* allocatorObject) noexcept
    : data(inlineBuffer), size(0), capacity(inlineCapacity), allocator(allocatorObject), inlineBuffer{}
{
    static_assert(sizeof(inlineBuffer) / sizeof(Char) == inlineCapacity + 1);
    Allocator::AddReference(allocator);
}

// Delegating: when the characters cannot be had, the destructor gives the reference back.
template <typename Char, typename Traits, typename Allocator>
basic_string_t<Char, Traits, Allocator>::basic_string_t(std::basic_string_view<Char> text,
                                                        allocator_interface* allocatorObject)
    : basic_string_t(allocatorObject)
{
    append(text.data(), text.size());
}

template <typename Char, typename Traits, typename Allocator>
basic_string_t<Char, Traits, Allocator>::~basic_string_t()
{
    if (owns_heap_buffer()) Allocator::Free(allocator, data);
    Allocator::ReleaseReference(allocator);
}

template <typename Char, typename Traits, typename Allocator>
basic_string_t<Char, Traits, Allocator>& basic_string_t<Char, Traits, Allocator>::append(const Char* text,
                                                                                         std::size_t count)
{
    // A part of the string itself is read from the kept buffer after growing, or from the inline buffer, which
    // growing leaves as it was.
    auto_delete<Char, Allocator> keep;
    reserve_extra(&keep, count);
    Traits::move(data + size, text, count);
    size += count;
    data[size] = Char();
    return *this;
}

template <typename Char, typename Traits, typename Allocator>
basic_string_t<Char, Traits, Allocator>& basic_string_t<Char, Traits, Allocator>::append(std::size_t count, Char c)
{
    reserve_extra(nullptr, count);
    Traits::assign(data + size, count, c);
    size += count;
    data[size] = Char();
    return *this;
}

template <typename Char, typename Traits, typename Allocator>
void basic_string_t<Char, Traits, Allocator>::reserve_extra(auto_delete<Char, Allocator>* keep, std::size_t extra)
{
    if (capacity - size >= extra) return;
    if (maxSize + 1 - size <= extra) throw std::length_error("mur::basic_string_t::reserve_extra()");

    // Doubling stops at the longest string, where the byte count still fits into a size_t.
    const std::size_t doubled = capacity > maxSize / 2 ? maxSize : 2 * capacity;
    const std::size_t newCapacity = std::max(size + extra, doubled);
    auto* const newData = static_cast<Char*>(Allocator::Allocate(allocator, (newCapacity + 1) * sizeof(Char)));
    if (newData == nullptr) throw std::bad_alloc();
    Traits::copy(newData, data, size);

    if (owns_heap_buffer()) {
        if (keep != nullptr)
            keep->reset(data, allocator, capacity + 1);
        else
            Allocator::Free(allocator, data);
    }
    data = newData;
    capacity = newCapacity;
}

template <typename Char, typename Traits, typename Allocator>
basic_string_t<Char, Traits, Allocator>::operator std::basic_string_view<Char>() const noexcept
{
    return {data, size};
}

template <typename Char, typename Traits, typename Allocator>
bool basic_string_t<Char, Traits, Allocator>::owns_heap_buffer() const noexcept
{
    return capacity != 0 && data != inlineBuffer;
}

template class basic_string_t<char16_t, char_traits<char16_t>, abi_v1_allocator>;

} // namespace mur::types
