// The kind of an array of bytes: a pointer to them. Tables name it as Blob: a writer refuses more than maxBlobSize
// bytes; a reader takes whatever lies in the arena.
#pragma once

#include <common/array_view.h>
#include <common/detail/get.h>
#include <common/detail/put.h>
#include <common/detail/reach.h>
#include <common/examine.h>
#include <common/zt_blob.h>

namespace vyn_connector::common::kind {

struct Blob {
    static constexpr std::size_t limit = maxBlobSize;

    template <typename Domain, typename Wire>
    static constexpr bool fits = std::is_same_v<Domain, std::vector<std::uint8_t>>&& std::is_same_v<Wire, zt_ptr_t>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a Blob joins a std::vector<std::uint8_t> and a zt_ptr_t");
        return true;
    }
    template <typename Value>
    using Element = zt_ptr_t;

    template <typename Wire>
    static void Write(const std::vector<std::uint8_t>& value, std::uint8_t* wire, zt_arena* arena)
    {
        zt_ptr_t pointer{};
        BlobToZt(value, &pointer, arena);
        detail::Store(wire, pointer);
    }
    template <typename Wire>
    [[gnu::always_inline]] static std::size_t Put(const std::vector<std::uint8_t>& value, std::uint8_t* wire,
                                                  std::size_t at, detail::Room room)
    {
        if (value.size() > limit) return detail::refused;
        return detail::PutBytes(value.data(), value.size(), wire, at, room);
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds arena)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        const std::uint8_t* const bytes = detail::Get(detail::codec::blob, pointer, arena, 1);
        return Domain(bytes, bytes + pointer.size);
    }
    template <typename Domain, typename Wire, typename Access>
    static BytesView View(const std::uint8_t* wire, const Access& access)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        return {access.At(detail::codec::blob, pointer, 1), pointer.size};
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        const auto pointer = detail::Load<zt_ptr_t>(wire);
        return visit.Bytes({&detail::codec::blob, pointer, 1, 1, 0, limit, pointer.size});
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Blob(value.data(), value.size());
    }

    static std::uintptr_t After(const std::vector<std::uint8_t>& value, std::uintptr_t at) { return at + value.size(); }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        return at + limit;
    }
};

} // namespace vyn_connector::common::kind
