// What holds for every message that is read: it is the record, or raises the error, that the model says; and what was
// accepted can be written again, in as many bytes as ArenaSize says, and read again as the same record.
#pragma once

#include "arena_buffer.h"
#include "library.h"
#include "message_input.h"

#include <algorithm>
#include <cstddef>
#include <string>

inline void RequireSame(const model::Layout& layout, const model::Outcome& library, const model::Outcome& expected,
                        const std::string& doing)
{
    const std::string what = doing + " " + layout.name + ": ";
    Require(library.failure == expected.failure && library.status == expected.status,
            what + "the library says " + Describe(library) + ", the model " + Describe(expected));
    Require(library.value == expected.value, what + "another value");
    Require(library.wire == expected.wire, what + "another wire structure");
}

// Subscriptions come back with an entry for severity 0 where there was room for it.
inline bool ComesBackEqual(const model::Layout& layout)
{
    return &layout != &model::vynSubscriptions && &layout != &model::vynSubscriptionsWithHash;
}

inline model::Outcome CheckRead(const library::Conversions& record, const std::string& wire, ArenaBuffer& buffer)
{
    const model::Arena arena = buffer.Now();
    const model::Outcome read = record.read(wire, buffer.Get());
    RequireSame(*record.layout, read, Read(*record.layout, wire, &arena), "reading");
    Require(Same(buffer.Now(), arena), "reading changed the arena");
    return read;
}

// Returns whether the value was written.
inline bool CheckWrite(const library::Conversions& record, const model::Value& value, ArenaBuffer& buffer,
                       std::string& wire)
{
    model::Arena arena = buffer.Now();
    const std::uint64_t topBefore = arena.top;
    const std::size_t arenaSize = record.arenaSize(value, arena.start + arena.top);
    model::Value inOrder;
    const model::Outcome written = record.write(value, buffer.Get(), &inOrder);
    RequireSame(*record.layout, written, Write(*record.layout, inOrder, &arena), "writing");
    Require(Same(buffer.Now(), arena), std::string("another arena after writing ") + record.layout->name);
    if (written.failure.has_value() || !written.status) return false;
    Require(arena.top - topBefore == arenaSize, "ArenaSize is not what writing took");
    // Behind an earlier message, bytes belong to no field. An event of any severity is written, and then not read.
    const bool isCanonical = topBefore == 0 && record.read(written.wire, buffer.Get()).status;
    Require(record.isCanonical(written.wire, buffer.Get()) == isCanonical, "canonical, or not, against expectation");
    wire = written.wire;
    return true;
}

// Nothing can be read there, so this is for messages whose pointers are outside or empty.
inline void CheckInLastArena(const library::Conversions& record, const MessageInput& input)
{
    const model::Layout& layout = *record.layout;
    const std::size_t capacity = input.message.arena.bytes.size();
    for (const model::PointerAt& pointer : PointersOf(layout, {input.message.wire, {}})) {
        const model::WirePointer wire = model::GetPointer(input.message.wire, pointer.at);
        if (wire.size != 0 && std::uint64_t{wire.offset} + wire.size <= capacity) return;
    }
    zt_arena last = LastAddresses(capacity, input.startMod16);
    // VerifyCanonical looks at the gap before an empty array, but only in the used part.
    if (&layout != &model::vynEvent) last.top = last.start;
    const model::Arena arena{reinterpret_cast<std::uintptr_t>(last.start), capacity, input.message.arena.bytes};
    RequireSame(layout, record.read(input.message.wire, &last), Read(layout, input.message.wire, &arena), "reading");
}

inline void CheckMessage(const library::Conversions& record, const MessageInput& input)
{
    const model::Layout& layout = *record.layout;
    const bool isEvent = &layout == &model::vynEvent; // takes its arena by reference
    if ((input.flags & MessageInput::NullArena) != 0 && !isEvent) {
        RequireSame(layout, record.read(input.message.wire, nullptr), Read(layout, input.message.wire, nullptr),
                    "reading");
        return;
    }
    if ((input.flags & MessageInput::UnsetArena) != 0) {
        const zt_arena unset{};
        const model::Arena modelUnset{};
        RequireSame(layout, record.read(input.message.wire, &unset), Read(layout, input.message.wire, &modelUnset),
                    "reading");
        return;
    }

    if ((input.flags & MessageInput::LastArena) != 0) return CheckInLastArena(record, input);

    ArenaBuffer buffer(input.message.arena.bytes, input.startMod16, input.message.arena.top);
    const model::Outcome read = CheckRead(record, input.message.wire, buffer);
    if (read.failure.has_value() || !read.status) return;

    // Aliased parts become parts of their own, so the copy may need more; what is over a limit is refused.
    const std::size_t needed = std::min<std::size_t>(record.arenaSize(read.value, input.startMod16), 1 << 20);
    ArenaBuffer copy(std::string(needed, '\xA5'), input.startMod16, 0);
    std::string wire;
    if (!CheckWrite(record, read.value, copy, wire)) return;
    const model::Outcome again = CheckRead(record, wire, copy);
    Require(!again.failure.has_value() && again.status, "what was written cannot be read");
    if (ComesBackEqual(layout)) Require(again.value == read.value, "what was written is read as another record");
}
