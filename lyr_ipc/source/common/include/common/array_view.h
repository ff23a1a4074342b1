// What record_view.h gives for a blob and for a list, a range, a set or a fixed array: a borrowed look at bytes of the
// arena, in the order of the wire. Elements are read when they are asked for, at whatever address they stand.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

namespace vyn_connector::common {

// The bytes of a blob.
class BytesView {
public:
    BytesView(const std::uint8_t* data, std::size_t size) noexcept : data_(data), size_(size) {}

    const std::uint8_t* data() const noexcept { return data_; }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    const std::uint8_t* begin() const noexcept { return data_; }
    const std::uint8_t* end() const noexcept { return data_ + size_; }
    // `index` is below size(), here and below.
    std::uint8_t operator[](std::size_t index) const noexcept { return data_[index]; }

private:
    const std::uint8_t* data_;
    std::size_t size_;
};

// An array of fields of the kind `Kind`, which join `Domain` and `Wire`. Taking an element tests that element's own
// pointer and throws what the reader throws there; elements that are records are views, which test nothing until they
// are asked.
template <typename Kind, typename Domain, typename Wire, typename Access>
class ArrayView {
public:
    using value_type = decltype(Kind::template View<Domain, Wire>(nullptr, std::declval<Access>()));

    ArrayView(const std::uint8_t* first, std::size_t count, Access access) noexcept
        : first_(first), count_(count), access_(access)
    {
    }

    std::size_t size() const noexcept { return count_; }
    bool empty() const noexcept { return count_ == 0; }
    value_type operator[](std::size_t index) const
    {
        return Kind::template View<Domain, Wire>(first_ + index * sizeof(Wire), access_);
    }

    class iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = typename ArrayView::value_type;
        using difference_type = std::ptrdiff_t;
        using reference = value_type;
        using pointer = void;

        iterator() noexcept = default;
        iterator(const std::uint8_t* place, Access access) noexcept : place_(place), access_(access) {}

        reference operator*() const { return Kind::template View<Domain, Wire>(place_, access_); }
        reference operator[](difference_type n) const { return *(*this + n); }

        iterator& operator+=(difference_type n) noexcept
        {
            place_ += n * width;
            return *this;
        }
        iterator& operator-=(difference_type n) noexcept { return *this += -n; }
        iterator& operator++() noexcept { return *this += 1; }
        iterator& operator--() noexcept { return *this -= 1; }
        iterator operator++(int) noexcept
        {
            const iterator before = *this;
            ++*this;
            return before;
        }
        iterator operator--(int) noexcept
        {
            const iterator before = *this;
            --*this;
            return before;
        }
        friend iterator operator+(iterator a, difference_type n) noexcept { return a += n; }
        friend iterator operator+(difference_type n, iterator a) noexcept { return a += n; }
        friend iterator operator-(iterator a, difference_type n) noexcept { return a -= n; }
        friend difference_type operator-(iterator a, iterator b) noexcept { return (a.place_ - b.place_) / width; }

        friend bool operator==(iterator a, iterator b) noexcept { return a.place_ == b.place_; }
        friend bool operator!=(iterator a, iterator b) noexcept { return a.place_ != b.place_; }
        friend bool operator<(iterator a, iterator b) noexcept { return a.place_ < b.place_; }
        friend bool operator>(iterator a, iterator b) noexcept { return b < a; }
        friend bool operator<=(iterator a, iterator b) noexcept { return !(b < a); }
        friend bool operator>=(iterator a, iterator b) noexcept { return !(a < b); }

    private:
        static constexpr auto width = static_cast<difference_type>(sizeof(Wire));

        const std::uint8_t* place_ = nullptr;
        Access access_{};
    };
    using const_iterator = iterator;

    iterator begin() const noexcept { return {first_, access_}; }
    iterator end() const noexcept { return {first_ + count_ * sizeof(Wire), access_}; }

private:
    const std::uint8_t* first_;
    std::size_t count_;
    Access access_;
};

} // namespace vyn_connector::common
