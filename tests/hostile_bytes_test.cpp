// Every record's reader on spoilt messages: each bit, each wire pointer, each length of a full message in turn. What it
// returns or throws is what the model says, and the arena and the bytes around it are as they were. Verify and the
// views agree with it, each time.
#include "../fuzz/library.h"
#include "../fuzz/memory_limit.h"
#include "../fuzz/model/message.h"
#include "arena.h"

#include <common/all_records.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

// Records hold nothing that depends on the arena's alignment; both are tried for the sake of unaligned access.
constexpr std::size_t starts[] = {0, 5};

class HostileBytes : public testing::TestWithParam<library::Conversions> {
protected:
    const model::Layout& Layout() const { return *GetParam().layout; }
    model::Message Full(std::size_t start) const { return MakeMessage(Layout(), FullValue(Layout()), start); }
};

// The library's buffer, which can be spoilt again and again.
class Reading {
public:
    Reading(const library::Conversions& of, std::size_t capacity, std::size_t start)
        : record(of), arena(capacity, start)
    {
    }

    // Reads the message in a buffer of just its size, so that its end is the buffer's.
    void Expect(const model::Message& message, const std::string& spoilt)
    {
        if (testing::Test::HasFailure()) return; // the others would say the same
        model::Arena modelArena = message.arena;
        modelArena.start = reinterpret_cast<std::uintptr_t>(arena.Start());
        const Bytes contents(modelArena.bytes.data(), modelArena.bytes.size());
        arena.Put(0, contents);
        arena.Get()->top = arena.Start() + modelArena.top;
        std::string wire = message.wire;

        const model::Outcome read = record.read(wire, arena.Get());
        const model::Outcome expected = Read(*record.layout, message.wire, &modelArena);

        EXPECT_EQ(Describe(read), Describe(expected)) << spoilt;
        EXPECT_TRUE(read.failure == expected.failure && read.status == expected.status) << spoilt;
        EXPECT_TRUE(read.value == expected.value) << "another record: " << spoilt;
        EXPECT_EQ(arena.Contents(), contents) << "the arena was changed: " << spoilt;
    }

private:
    const library::Conversions& record;
    TestArena arena;
};

std::string Describe(const model::PointerAt& pointer)
{
    return std::string(pointer.inArena ? "the arena's" : "the structure's") + " pointer at " +
           std::to_string(pointer.at);
}

std::string& BytesWith(model::Message& message, const model::PointerAt& pointer)
{
    return pointer.inArena ? message.arena.bytes : message.wire;
}

void Flip(std::string& bytes, std::size_t bit)
{
    bytes.at(bit / 8) = static_cast<char>(bytes.at(bit / 8) ^ (1 << bit % 8));
}

TEST_P(HostileBytes, UnspoiltMessage)
{
    for (const std::size_t start : starts) {
        const model::Message message = Full(start);
        Reading(GetParam(), message.arena.bytes.size(), start).Expect(message, "nothing");

        const model::Outcome read = Read(Layout(), message.wire, &message.arena);
        ASSERT_FALSE(read.failure.has_value()) << Describe(read);
        EXPECT_TRUE(read.status);
    }
}

TEST_P(HostileBytes, EachBitFlipped)
{
    for (const std::size_t start : starts) {
        const model::Message message = Full(start);
        Reading reading(GetParam(), message.arena.bytes.size(), start);
        for (std::size_t bit = 0; bit < message.wire.size() * 8; ++bit) {
            model::Message spoilt = message;
            Flip(spoilt.wire, bit);
            reading.Expect(spoilt, "bit " + std::to_string(bit) + " of the structure");
        }
        for (const model::PointerAt& pointer : PointersOf(Layout(), message)) {
            for (std::size_t bit = 0; pointer.inArena && bit < 64; ++bit) {
                model::Message spoilt = message;
                Flip(spoilt.arena.bytes, pointer.at * 8 + bit);
                reading.Expect(spoilt, "bit " + std::to_string(bit) + " of " + Describe(pointer));
            }
        }
    }
}

// Padding, gaps and what only a writer looks at included: what still reads is canonical or reported.
TEST_P(HostileBytes, EachBitOfTheArenaFlipped)
{
    const std::size_t start = 0;
    const model::Message message = Full(start);
    Reading reading(GetParam(), message.arena.bytes.size(), start);
    for (std::size_t bit = 0; bit < message.arena.bytes.size() * 8; ++bit) {
        model::Message spoilt = message;
        Flip(spoilt.arena.bytes, bit);
        reading.Expect(spoilt, "bit " + std::to_string(bit) + " of the arena");
    }
}

// Small ones, those around the message's own sizes, and those where sums and counts wrap.
std::vector<std::uint32_t> TellingValues(const model::Message& message, const model::PointerAt& pointer)
{
    const model::WirePointer own = model::GetPointer(pointer.inArena ? message.arena.bytes : message.wire, pointer.at);
    const auto capacity = static_cast<std::uint32_t>(message.arena.bytes.size());
    const auto element = static_cast<std::uint32_t>(pointer.elementSize);
    std::vector<std::uint32_t> values{
        0, 1, 2, 3, 4, 7, 8, 0x7FFFFFFF, 0x80000000, 0xFFFFFFF8, 0xFFFFFFFE, 0xFFFFFFFF, 0x10000000, 0xFFFFFFF0};
    for (const std::uint32_t near : {own.offset, own.size, capacity, capacity - own.offset, capacity - own.size,
                                     element, 2 * element, 0 - own.offset, 0 - own.size})
        values.insert(values.end(), {near - 1, near, near + 1});
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    return values;
}

TEST_P(HostileBytes, EachPointerSetToTellingValues)
{
    const std::size_t start = 5;
    const model::Message message = Full(start);
    Reading reading(GetParam(), message.arena.bytes.size(), start);
    for (const model::PointerAt& pointer : PointersOf(Layout(), message)) {
        const std::vector<std::uint32_t> values = TellingValues(message, pointer);
        for (const std::uint32_t offset : values) {
            for (const std::uint32_t size : values) {
                model::Message spoilt = message;
                model::PutPointer(BytesWith(spoilt, pointer), pointer.at, offset, size);
                reading.Expect(spoilt, Describe(pointer) + " set to {" + std::to_string(offset) + ", " +
                                           std::to_string(size) + "}");
            }
        }
    }
}

// The error tells which of them was read first.
TEST_P(HostileBytes, EveryTwoPointersOutside)
{
    const std::size_t start = 5;
    const model::Message message = Full(start);
    Reading reading(GetParam(), message.arena.bytes.size(), start);
    const std::vector<model::PointerAt> pointers = PointersOf(Layout(), message);
    for (const model::PointerAt& a : pointers) {
        for (const model::PointerAt& b : pointers) {
            if (a.inArena == b.inArena && a.at == b.at) continue;
            model::Message spoilt = message;
            model::PutPointer(BytesWith(spoilt, a), a.at, 0x40000001, 16 * a.elementSize);
            model::PutPointer(BytesWith(spoilt, b), b.at, 0x40000002, 16 * b.elementSize);
            reading.Expect(spoilt, Describe(a) + " and " + Describe(b));
        }
    }
}

TEST_P(HostileBytes, EachTruncationOfTheArena)
{
    for (const std::size_t start : starts) {
        model::Message message = Full(start);
        const std::size_t size = message.arena.bytes.size();
        for (std::size_t cut = 0; cut <= size; ++cut) {
            message.arena.bytes.resize(size - cut);
            message.arena.top = size - cut;
            Reading(GetParam(), size - cut, start).Expect(message, "cut by " + std::to_string(cut));
        }
    }
}

// Only an event's reader looks at the top.
TEST_P(HostileBytes, EachTopInTheArena)
{
    const std::size_t start = 5;
    model::Message message = Full(start);
    Reading reading(GetParam(), message.arena.bytes.size(), start);
    for (std::size_t top = 0; top <= message.arena.bytes.size(); ++top) {
        message.arena.top = top;
        reading.Expect(message, "top " + std::to_string(top));
    }
}

// There, sums of addresses wrap. No memory backs this arena: a pointer that is not refused ends the test.
TEST_P(HostileBytes, EachPointerWrapsAroundTheAddressSpace)
{
    const std::size_t capacity = 0xFFF;
    const std::uintptr_t start = 0 - std::uintptr_t{0x1000};
    const zt_arena arena{reinterpret_cast<std::uint8_t*>(start), reinterpret_cast<std::uint8_t*>(start + capacity),
                         reinterpret_cast<std::uint8_t*>(start + capacity)};
    const model::Arena modelArena{start, capacity, std::string(capacity, '\0')};
    const model::Message zeros{std::string(Layout().size, '\0'), {}};
    for (const model::PointerAt& pointer : PointersOf(Layout(), zeros)) {
        const auto element = static_cast<std::uint32_t>(pointer.elementSize);
        for (const std::uint32_t offset : {0u, 0xFFFu, 0x1000u, 0x1001u, 0x1800u, 0xFFFFF000u, 0xFFFFFFFFu}) {
            for (const std::uint32_t elements : {0x1000u / element + 1, 0x10000000u / element, 0xFFFFFFF0u / element}) {
                std::string wire = zeros.wire;
                model::PutPointer(wire, pointer.at, offset, elements * element);
                EXPECT_EQ(Describe(GetParam().read(wire, &arena)), Describe(Read(Layout(), wire, &modelArena)))
                    << Describe(pointer) << " set to {" << offset << ", " << elements * element << "}";
            }
        }
    }
}

TEST_P(HostileBytes, NoArenaAndOneWithoutAddresses)
{
    const model::Message message = Full(0);
    const model::Message zeros{std::string(message.wire.size(), '\0'), {}};
    model::Arena unset;
    const zt_arena libraryUnset{};
    for (const model::Message* const each : {&message, &zeros}) {
        EXPECT_EQ(Describe(GetParam().read(each->wire, &libraryUnset)), Describe(Read(Layout(), each->wire, &unset)));
        if (&Layout() == &model::vynEvent) continue; // takes its arena by reference
        EXPECT_EQ(Describe(GetParam().read(each->wire, nullptr)), Describe(Read(Layout(), each->wire, nullptr)));
    }
}

TEST(RecordsOfTheModel, AreAsManyAsTheLibraryHas)
{
    EXPECT_EQ(library::Records().size(), vyn_connector::common::AllRecords::size);
}

INSTANTIATE_TEST_SUITE_P(Records, HostileBytes, testing::ValuesIn(library::Records()),
                         testing::PrintToStringParamName());

} // namespace
