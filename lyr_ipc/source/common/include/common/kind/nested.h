// The kind of a described record inside another, by value. Its fields are written, read and refused as its own table
// says, as if they were the outer record's.
#pragma once

#include <common/detail/derived.h>
#include <common/detail/reach.h>
#include <common/examine.h>

namespace vyn_connector::common::detail {

template <typename Domain, typename Wire, typename = void>
inline constexpr bool isWireOf = false;
template <typename Domain, typename Wire>
inline constexpr bool isWireOf<Domain, Wire, std::enable_if_t<std::is_same_v<WireOf<Domain>, Wire>>> = true;

} // namespace vyn_connector::common::detail

namespace vyn_connector::common::kind {

struct Nested {
    template <typename Domain, typename Wire>
    static constexpr bool fits = detail::isWireOf<Domain, Wire>;
    template <typename Domain, typename Wire>
    static constexpr bool Joins()
    {
        static_assert(fits<Domain, Wire>, "a Nested joins a described record and its own wire structure");
        return true;
    }
    template <typename Value>
    using Element = WireOf<Value>;

    template <typename Wire, typename Domain>
    static void Write(const Domain& value, std::uint8_t* wire, zt_arena* arena)
    {
        detail::WriteRecord<Domain>(value, wire, arena);
    }
    template <typename Wire, typename Domain>
    [[gnu::always_inline]] static std::size_t Put(const Domain& value, std::uint8_t* wire, std::size_t at,
                                                  detail::Room room)
    {
        return detail::PutRecord<Domain>(value, wire, at, room);
    }
    template <typename Domain, typename Wire>
    static Domain Read(const std::uint8_t* wire, detail::Bounds arena)
    {
        return detail::ReadRecord<Domain>(wire, arena);
    }
    template <typename Domain, typename Wire, typename Access>
    static RecordView<Domain, Access> View(const std::uint8_t* wire, const Access& access)
    {
        return detail::ViewAccess::Make<Domain>(wire, access);
    }
    template <typename Domain, typename Wire, typename Visitor>
    [[gnu::always_inline]] static bool Examine(const std::uint8_t* wire, Visitor& visit)
    {
        return ExamineRecord<Domain>(wire, visit);
    }
    template <typename Value, typename Out>
    static void Show(const Value& value, Out& out)
    {
        out.Record(value);
    }

    template <typename Domain>
    static std::uintptr_t After(const Domain& value, std::uintptr_t at)
    {
        return detail::AfterRecord<Domain>(value, at);
    }
    template <typename Domain>
    static constexpr std::uintptr_t MostAfter(std::uintptr_t at)
    {
        return detail::MostAfterRecord<Domain>(at);
    }
};

} // namespace vyn_connector::common::kind
