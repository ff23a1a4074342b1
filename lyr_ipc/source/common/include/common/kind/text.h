// The kind of a string: a pointer to its bytes. Tables name it as Text<N>: a writer refuses more than N bytes; a reader
// takes whatever lies in the arena.
#pragma once

#include <common/detail/get.h>
#include <common/detail/put.h>
#include <common/detail/reach.h>
#include <common/examine.h>
#include <common/zt_string.h>

namespace vyn_connector::common::kind {

template <std::size_t MaxBytes>
struct Text {
    static constexpr std::size_t limit = MaxBytes;
    static constexpr bool isLong = MaxBytes > 512; // the name of a file, a certificate

    template <typename Domain, typename Wire>
    static constexpr bool fits = std::is_same_v<Domain, std::string>&& std::is_same_v<Wire, zt_ptr_t>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a Text joins a std::string and a zt_ptr_t");
        return true;
    }
    template <typename Value>
    using Element = zt_ptr_t;

    template <typename Wire>
    static void Write(const std::string& value, std::uint8_t* wire, zt_arena* arena)
    {
        zt_ptr_t pointer{};
        StringToZt<MaxBytes>(value, &pointer, arena);
        detail::Store(wire, pointer);
    }
    template <typename Wire>
    [[gnu::always_inline]] static std::size_t Put(const std::string& value, std::uint8_t* wire, std::size_t at,
                                                  detail::Room room)
    {
        if (value.size() > MaxBytes) return detail::refused;
        return detail::PutBytes<isLong>(value.data(), value.size(), wire, at, room);
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds arena)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint8_t* const bytes = detail::Get(detail::codec::string, pointer, arena, 1);
        return Domain(reinterpret_cast<const char*>(bytes), pointer.size);
    }
    template <typename Domain, typename Wire, typename Access>
    static std::string_view View(const std::uint8_t* wire, const Access& access)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        return detail::TextAt(access.At(detail::codec::string, pointer, 1), pointer.size);
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        return visit.Bytes({&detail::codec::string, pointer, 1, 1, 0, MaxBytes, detail::AllocatedByText(pointer.size)});
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Text(value);
    }

    static constexpr std::uintptr_t After(const std::string& value, std::uintptr_t at) { return at + value.size(); }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        return at + MaxBytes;
    }
};

} // namespace vyn_connector::common::kind
