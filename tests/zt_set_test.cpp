// Sets: a list in the iteration order of the set, whose repeated values collapse on reading.
#include <common/zt_set.h>

#include "arena.h"
#include "elements.h"
#include "errors.h"

namespace {

using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using vyn_connector::common::SetToZt;
using vyn_connector::common::ZtToSet;

using Strings = std::unordered_set<std::string>;
using Numbers = std::unordered_set<std::uint64_t>;
using Write = zt_ptr_t (*)(const std::string&, zt_arena*);
using Read = std::string (*)(const zt_ptr_t&, const zt_arena*);

constexpr zt_ptr_t untouched{0xDEADBEEF, 0xFEEDF00D};

template <std::uint64_t MaxCount = 128>
void WriteStrings(const Strings& values, zt_ptr_t* out, zt_arena* arena)
{
    SetToZt<MaxCount, zt_ptr_t, std::string, Write>(values, out, arena, &CastToZt);
}

Strings ReadStrings(zt_ptr_t pointer, const zt_arena* arena)
{
    return ZtToSet<zt_ptr_t, std::string, Read>(&pointer, arena, &CastFromZt);
}

// Numbers travel as elements of sixteen bytes aligned to eight.
LargeWire NumberToWire(const std::uint64_t& value, zt_arena* arena)
{
    return LargeToWire({value, 0}, arena);
}

std::uint64_t NumberFromWire(const LargeWire& wire, const zt_arena*)
{
    return wire.id;
}

Numbers ReadNumbers(zt_ptr_t pointer, const zt_arena* arena)
{
    return ZtToSet<LargeWire, std::uint64_t>(&pointer, arena, &NumberFromWire);
}

Strings ManyStrings(int count)
{
    Strings values;
    for (int i = 0; i < count; ++i)
        values.insert(std::to_string(100 + i));
    return values;
}

// --- Writing ---

TEST(SetWriter, WritesOneStringAsAPointerAndItsBytes)
{
    TestArena arena(16, 0, 1);
    zt_ptr_t out = untouched;

    WriteStrings({"abc"}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 8}));
    EXPECT_EQ(arena.Top(), 15u);
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 | 0C 00*3 03 00*3 | 'abc' A5"));
}

TEST(SetWriter, WritesTheStringsInTheOrderInWhichTheSetIsWalked)
{
    TestArena arena(48, 0, 2);
    const Strings values{"kilo", "lima", "mike"};
    zt_ptr_t out = untouched;

    WriteStrings(values, &out, arena.Get());

    auto walk = values.begin();
    const std::string first = *walk++;
    const std::string second = *walk++;
    const std::string third = *walk++;
    EXPECT_EQ(out, (zt_ptr_t{4, 24}));
    EXPECT_EQ(arena.Top(), 40u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 00*2 | 1C 00*3 04 00*3 | 20 00*3 04 00*3 | 24 00*3 04 00*3 | '" + first +
                                      second + third + "' A5*8"));
}

TEST(SetWriter, AlignsTheArrayWhereverStartAndTopLie)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::size_t top = 0; top < 8; ++top) {
            SCOPED_TRACE(testing::Message() << "start " << start << ", top " << top);
            TestArena arena(32, start, top);
            std::size_t first = top;
            while ((start + first) % 8 != 0)
                ++first;
            zt_ptr_t out = untouched;

            SetToZt<1, LargeWire, std::uint64_t>({7}, &out, arena.Get(), &NumberToWire);

            EXPECT_EQ(out, (zt_ptr_t{static_cast<std::uint32_t>(first), 16}));
            EXPECT_EQ(arena.Top(), first + 16);
            EXPECT_EQ(arena.Contents(), Bytes("A5*" + std::to_string(top) + " 00*" + std::to_string(first - top) +
                                              " 07 00*15 A5*" + std::to_string(16 - first)));
        }
}

TEST(SetWriter, AlignsPointersToFour)
{
    TestArena arena(24, 0, 9);
    zt_ptr_t out = untouched;

    WriteStrings({""}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{12, 8}));
    EXPECT_EQ(arena.Contents(), Bytes("A5*9 00*3 | 14 00*3 00*4 | A5*4"));
}

TEST(SetWriter, RoundsTheTopUpForAnEmptySet)
{
    TestArena arena(16, 0, 5);
    zt_ptr_t out = untouched;

    WriteStrings({}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{8, 0}));
    EXPECT_EQ(arena.Top(), 8u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*3 A5*8"));
}

TEST(SetWriter, RunsOutOfSpaceWhereTheRoundingOfAnEmptySetPassesTheEnd)
{
    TestArena arena(7, 0, 5);
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteStrings({}, &out, arena.Get()); });

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*7"));
}

TEST(SetWriter, TakesAHundredAndTwentyEightStrings)
{
    TestArena arena(1412, 0, 1);
    const Strings values = ManyStrings(128);
    zt_ptr_t out = untouched;

    WriteStrings(values, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 1024}));
    EXPECT_EQ(arena.Top(), 4u + 1024 + 3 * 128);
    EXPECT_EQ(ReadStrings(out, arena.Get()), values);
}

TEST(SetWriter, RefusesOneStringMoreBeforeAnythingIsReserved)
{
    TestArena arena(1500, 0, 1);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { WriteStrings(ManyStrings(129), &out, arena.Get()); }, setCodec);

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 1u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*1500"));
}

TEST(SetWriter, HoldsOtherLimitsToTheElement)
{
    TestArena arena(64);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { WriteStrings<0>({"a"}, &out, arena.Get()); }, setCodec);
    ExpectOverLimit([&] { WriteStrings<2>({"a", "b", "c"}, &out, arena.Get()); }, setCodec);
    EXPECT_EQ(arena.Top(), 0u);
    WriteStrings<2>({"a", "b"}, &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{0, 16}));
    WriteStrings<0>({}, &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{20, 0}));
}

TEST(SetWriter, FillsTheArenaToItsEnd)
{
    TestArena arena(12, 0, 1);
    zt_ptr_t out = untouched;

    WriteStrings({""}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 8}));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 | 0C 00*3 00*4"));
}

TEST(SetWriter, RunsOutOfSpaceOneByteOverTheEnd)
{
    TestArena arena(11, 0, 1);
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteStrings({""}, &out, arena.Get()); });

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 1u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*11"));
}

TEST(SetWriter, RefusesTheNullArenaFirst)
{
    zt_ptr_t out = untouched;

    ExpectInvalidArgument([&] { WriteStrings({}, &out, nullptr); }, setCodec, 19);
    ExpectInvalidArgument([&] { WriteStrings({"a"}, &out, nullptr); }, setCodec, 19);
    ExpectInvalidArgument([&] { WriteStrings<1>({"a", "b"}, &out, nullptr); }, setCodec, 19);
    EXPECT_EQ(out, untouched);
}

TEST(SetWriter, ChecksTheCountBeforeTheRoom)
{
    TestArena arena(8);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { WriteStrings<1>({"a", "b"}, &out, arena.Get()); }, setCodec);
    ExpectOutOfSpace([&] { WriteStrings<2>({"a", "b"}, &out, arena.Get()); });
}

TEST(SetWriter, FindsNoRoomInAnArenaOfNullAddresses)
{
    zt_arena arena{};
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteStrings({}, &out, &arena); });
    EXPECT_EQ(arena.top, nullptr);
}

TEST(SetWriter, ReservesTheWholeArrayBeforeItConvertsAnElement)
{
    TestArena arena(32);
    zt_ptr_t out = untouched;
    int calls = 0;

    SetToZt<2, LargeWire, std::uint64_t>({1, 2}, &out, arena.Get(), [&](const std::uint64_t& value, zt_arena* given) {
        ++calls;
        EXPECT_EQ(given, arena.Get());
        EXPECT_EQ(arena.Top(), 32u);
        EXPECT_EQ(out, (zt_ptr_t{0, 32}));
        return NumberToWire(value, given);
    });

    EXPECT_EQ(calls, 2);
}

TEST(SetWriter, LeavesTheElementsFromTheOneThatFailedOnZero)
{
    TestArena arena(80);
    const Numbers values{1, 2, 3, 4, 5};
    zt_ptr_t out = untouched;
    int calls = 0;

    const auto convert = [&](const std::uint64_t&, zt_arena* given) {
        if (calls == 3) throw ConverterFailed{3};
        return NumberToWire(static_cast<std::uint64_t>(++calls), given);
    };
    EXPECT_THROW((SetToZt<5, LargeWire, std::uint64_t>(values, &out, arena.Get(), convert)), ConverterFailed);

    EXPECT_EQ(out, (zt_ptr_t{0, 80}));
    EXPECT_EQ(arena.Top(), 80u);
    EXPECT_EQ(arena.Contents(), Bytes("01 00*15 02 00*15 03 00*15 00*32"));
}

TEST(SetWriter, PassesOnWhatAStringRaises)
{
    TestArena arena(300);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { WriteStrings({std::string(129, 'x')}, &out, arena.Get()); }, stringCodec);

    EXPECT_EQ(out, (zt_ptr_t{0, 8}));
    EXPECT_EQ(arena.Top(), 8u);
    EXPECT_EQ(arena.Contents(), Bytes("00*8 A5*292"));
}

// --- Reading ---
// What all readers of arrays have in common is tested in list_readers_test.cpp.

TEST(SetReader, ReturnsTheStrings)
{
    TestArena arena(40, 3);
    arena.Put(1, "19 00*3 02 00*3 | 1B 00*3 00*4 | 1B 00*3 03 00*3 | 'abcde'");

    EXPECT_EQ(ReadStrings({1, 24}, arena.Get()), (Strings{"ab", "", "cde"}));
    EXPECT_EQ(ReadStrings({17, 8}, arena.Get()), (Strings{"cde"}));
}

TEST(SetReader, CollapsesRepeatedStrings)
{
    TestArena arena(32);
    arena.Put(0, "18 00*3 01 00*3 | 19 00*3 01 00*3 | 1A 00*3 01 00*3 | 'aba'");

    EXPECT_EQ(ReadStrings({0, 24}, arena.Get()), (Strings{"a", "b"}));
}

TEST(SetReader, ConvertsTheElementsInOrder)
{
    TestArena arena(48);
    arena.Put(0, "05 00*15 06 00*15 06 00*15");
    const zt_ptr_t pointer{0, 48};
    std::vector<std::uint64_t> converted;

    ZtToSet<LargeWire, std::uint64_t>(&pointer, arena.Get(), [&](const LargeWire& wire, const zt_arena* given) {
        EXPECT_EQ(given, arena.Get());
        converted.push_back(wire.id);
        return wire.id;
    });

    EXPECT_EQ(converted, (std::vector<std::uint64_t>{5, 6, 6}));
}

TEST(SetReader, ReservesNoCapacityInAdvance)
{
    TestArena arena(16 * 1000);
    arena.Put(0, "01 00*15 02 00*15");
    Numbers grown;
    grown.insert(1);
    grown.insert(2);
    grown.insert(0xA5A5A5A5A5A5A5A5);

    const Numbers values = ReadNumbers({0, 16 * 1000}, arena.Get());

    EXPECT_EQ(values, grown);
    EXPECT_EQ(values.bucket_count(), grown.bucket_count());
    EXPECT_EQ(ReadNumbers({0, 0}, arena.Get()).bucket_count(), Numbers().bucket_count());
}

TEST(SetReader, HasNoLimit)
{
    TestArena arena(1600, 0, 1);
    const Strings values = ManyStrings(129);
    zt_ptr_t out = untouched;

    WriteStrings<129>(values, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 1032}));
    EXPECT_EQ(ReadStrings(out, arena.Get()), values);
}

TEST(Set, ComesBackAsItWasWritten)
{
    for (const Strings& values : {Strings(), Strings{""}, Strings{"a", "b", std::string("a\0", 2)}, ManyStrings(40)}) {
        TestArena arena(600, 9, 3);
        zt_ptr_t pointer = untouched;

        WriteStrings(values, &pointer, arena.Get());

        EXPECT_EQ(ReadStrings(pointer, arena.Get()), values);
    }
}

} // namespace
