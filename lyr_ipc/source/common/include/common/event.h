// Events: the one record whose conversion never throws. It clears a status that the caller has set, goes on with the
// remaining fields, and has rules of its own for placing a string and for its bounds. Called where the platform hands
// over its arena by reference.
#pragma once

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

namespace vyn_connector::common {

namespace kind {

// A fixed array of strings, each of at most MaxBytes.
template <std::size_t Count, std::size_t MaxBytes>
struct Texts : Joins<std::array<std::string, Count>, zt_ptr_t[Count]> {
    static constexpr std::size_t limit = MaxBytes;
};

} // namespace kind

// clang-format off
VYN_RECORD(VynEvent, VynEvent, 136, 8,
    VYN_FIELD( 0,  8, field1,      Text<128>),
    VYN_FIELD( 8,  4, severity,    Enumeration),
    VYN_FIELD(12,  8, field3,      Text<128>),
    VYN_FIELD(20,  8, field4,      Text<128>),
    VYN_FIELD(28,  8, field5,      Text<64>),
    VYN_FIELD(36,  8, field6,      Text<128>),
    VYN_FIELD(44,  8, field7,      Text<1024>),
    VYN_FIELD(52,  4, field8,      Number),
    VYN_FIELD(56,  8, field9,      Number),
    VYN_FIELD(64, 72, stringArray, Texts<9, 512>));
// clang-format on

} // namespace vyn_connector::common

namespace lyr::ipc::arena::conv {

// The conversions store Failed and nothing else: set it to Ok first, carry it through as many conversions as you like,
// and it says afterwards whether all of them succeeded.
enum class Status : std::uint8_t { Failed = 0, Ok = 1 };

// A string over its limit, or without room, gets the pointer {0xFFFFFFFF, 0xFFFFFFFF}; the others are still placed.
// An empty string takes one byte, so that a reader finds its offset inside the used part of the arena.
VYN_EXPORT tq_vyn_connector_VynTypes_VynEvent ToZt(zt_arena& arena, const vyn_connector::VynEvent& value,
                                                   Status& status) noexcept;

// A string outside the used part of the arena, below its top, stays empty; a severity above 3 fails and is kept.
// Failing to allocate memory ends the process.
VYN_EXPORT vyn_connector::VynEvent FromZt(const zt_arena& arena, const tq_vyn_connector_VynTypes_VynEvent& wire,
                                          Status& status) noexcept;

} // namespace lyr::ipc::arena::conv
