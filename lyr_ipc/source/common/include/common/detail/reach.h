// How views reach what a wire pointer names: with the reader's test, or, in a message that was verified, without. Views
// and visitors carry one of the two along; neither allocates, and the second never raises.
#pragma once

#include <common/description.h>
#include <common/detail/get.h>

#include <string_view>

namespace vyn_connector::common::detail {

// An arena as a reader sees it: where its pointers may lead, and where the used part ends, which events ask for.
struct Reach {
    Bounds bounds;
    std::uintptr_t top;
};

inline Reach ReachOf(const zt_arena* arena) noexcept
{
    if (arena == nullptr) return {nullArena, 0};
    return {BoundsOf(arena), reinterpret_cast<std::uintptr_t>(arena->top)};
}

// Whether the pointer lies in the used part of an arena.
constexpr bool IsInUsedPart(zt_ptr_t pointer, std::uintptr_t start, std::uintptr_t top) noexcept
{
    const auto used = static_cast<std::uint32_t>(top - start);
    return pointer.offset < used && pointer.size <= used - pointer.offset && start + pointer.offset != 0;
}

inline std::string_view TextAt(const std::uint8_t* bytes, std::uint32_t size) noexcept
{
    return {reinterpret_cast<const char*>(bytes), size};
}

// Tests each pointer when it is followed, and raises what the reader raises.
struct Tested {
    Reach reach;

    [[gnu::always_inline]] const std::uint8_t* At(const Codec& codec, zt_ptr_t pointer, std::size_t elementSize) const
    {
        return Get(codec, pointer, reach.bounds, elementSize);
    }
    std::string_view EventTextAt(zt_ptr_t pointer) const noexcept
    {
        if (!IsInUsedPart(pointer, reach.bounds.start, reach.top)) return {};
        return TextAt(reinterpret_cast<const std::uint8_t*>(reach.bounds.start + pointer.offset), pointer.size);
    }
};

// Follows pointers that are known to be good.
struct Trusted {
    Reach reach;

    const std::uint8_t* At(const Codec&, zt_ptr_t pointer, std::size_t) const noexcept
    {
        return reinterpret_cast<const std::uint8_t*>(reach.bounds.start + pointer.offset);
    }
    std::string_view EventTextAt(zt_ptr_t pointer) const noexcept
    {
        return TextAt(reinterpret_cast<const std::uint8_t*>(reach.bounds.start + pointer.offset), pointer.size);
    }
};

// Makes views of places in messages, and takes them apart.
struct ViewAccess {
    template <typename Record, typename Access>
    static RecordView<Record, Access> Make(const std::uint8_t* wire, Access access) noexcept
    {
        return {wire, access};
    }
    template <typename Record, typename Access>
    static const std::uint8_t* WireOfView(const RecordView<Record, Access>& view) noexcept
    {
        return view.wire_;
    }
    template <typename Record, typename Access>
    static Reach ReachOfView(const RecordView<Record, Access>& view) noexcept
    {
        return view.access_.reach;
    }
};

} // namespace vyn_connector::common::detail
