// Events: the one record whose conversion never throws. It clears a status that the caller has set, goes on with the
// remaining fields, and has rules of its own for placing a string and for its bounds. Called where the platform hands
// over its arena by reference.
#pragma once

#include <common/kind/event_fields.h>
#include <common/record.h>
#include <common/subscriptions.h>

namespace vyn_connector {

struct VYN_EXPORT VynEvent {
    std::string field1;
    VynEventSeverity severity{};
    std::string field3;
    std::string field4;
    std::string field5;
    std::string field6;
    std::string field7;
    std::uint32_t field8{};
    std::uint64_t field9{};
    std::array<std::string, 9> stringArray;
};

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynEvent {
    zt_ptr_t field1;
    std::uint32_t severity;
    zt_ptr_t field3;
    zt_ptr_t field4;
    zt_ptr_t field5;
    zt_ptr_t field6;
    zt_ptr_t field7;
    std::uint32_t field8;
    std::uint64_t field9;
    zt_ptr_t stringArray[9];
};

namespace lyr::ipc::arena::conv {

// A string over its limit, or without room, gets the pointer {0xFFFFFFFF, 0xFFFFFFFF}; the others are still placed.
// An empty string takes one byte, so that a reader finds its offset inside the used part of the arena.
VYN_EXPORT tq_vyn_connector_VynTypes_VynEvent ToZt(zt_arena& arena, const vyn_connector::VynEvent& value,
                                                   Status& status) noexcept;

// A string outside the used part of the arena, below its top, stays empty; a severity above 3 fails and is kept.
// Failing to allocate memory ends the process.
VYN_EXPORT vyn_connector::VynEvent FromZt(const zt_arena& arena, const tq_vyn_connector_VynTypes_VynEvent& wire,
                                          Status& status) noexcept;

} // namespace lyr::ipc::arena::conv

namespace vyn_connector::common {

VYN_RECORD(VynEvent, VynEvent, 136, 8,
    VYN_FIELD( 0,  8, field1,      EventText<128>),
    VYN_FIELD( 8,  4, severity,    EventSeverity),
    VYN_FIELD(12,  8, field3,      EventText<128>),
    VYN_FIELD(20,  8, field4,      EventText<128>),
    VYN_FIELD(28,  8, field5,      EventText<64>),
    VYN_FIELD(36,  8, field6,      EventText<128>),
    VYN_FIELD(44,  8, field7,      EventText<1024>),
    VYN_FIELD(52,  4, field8,      EventNumber),
    VYN_FIELD(56,  8, field9,      EventNumber),
    VYN_FIELD(64, 72, stringArray, EventTexts<9, 512>));

template <>
inline constexpr bool takesArena<VynEvent> = true;

// Where a caller wants an exception and no status: it names the first field that failed. Writing throws
// std::length_error, reading std::out_of_range. Templates, so that whoever calls neither does not compile them.
template <>
struct Conversion<VynEvent> {
    template <typename Event>
    static WireOf<Event> Write(const Event& event, zt_arena* arena)
    {
        auto status = lyr::ipc::arena::conv::Status::Ok;
        const WireOf<VynEvent> wire = lyr::ipc::arena::conv::ToZt(*arena, event, status);
        if (status == lyr::ipc::arena::conv::Status::Failed) RaiseUnwritten(event);
        return wire;
    }
    template <typename Wire>
    static VynEvent Read(const Wire& wire, const zt_arena* arena)
    {
        auto status = lyr::ipc::arena::conv::Status::Ok;
        VynEvent event = lyr::ipc::arena::conv::FromZt(*arena, wire, status);
        if (status == lyr::ipc::arena::conv::Status::Failed) RaiseUnread(wire, *arena);
        return event;
    }

private:
    template <typename Event>
    [[noreturn]] static void RaiseUnwritten(const Event& event)
    {
        ForEachRow<Event>([&](auto row) {
            using Row = decltype(row);
            const std::string fault = Row::Kind::FaultOnWriting(Row::InDomain::Of(event));
            if (!fault.empty()) throw std::length_error(fmt::format("vyn event: {}{}", row.name, fault));
        });
        mur::raise_result_code(mur::resultOutOfSpace);
    }
    template <typename Wire>
    [[noreturn, gnu::cold, gnu::noinline]] static void RaiseUnread(const Wire& wire, const zt_arena& arena)
    {
        std::string first;
        ForEachRow<VynEvent>([&](auto row) {
            using Row = decltype(row);
            const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&wire) + Row::offset;
            const std::string fault = Row::Kind::FaultOnReading(bytes, arena);
            if (first.empty() && !fault.empty()) first = fmt::format("vyn event: {}{}", row.name, fault);
        });
        throw std::out_of_range(first);
    }
};

namespace detail {

// An event is read whatever its status becomes; without an arena its strings are empty.
template <>
inline VynEvent ReadAsIs<VynEvent>(const WireOf<VynEvent>& wire, const zt_arena* arena)
{
    auto status = lyr::ipc::arena::conv::Status::Ok;
    const zt_arena none{};
    return lyr::ipc::arena::conv::FromZt(arena == nullptr ? none : *arena, wire, status);
}

} // namespace detail
} // namespace vyn_connector::common
