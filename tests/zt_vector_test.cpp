// Lists: an aligned array of wire elements, at most MaxCount of them on writing, any number on reading.
#include <common/zt_string.h>
#include <common/zt_vector.h>

#include "arena.h"
#include "elements.h"
#include "errors.h"

#include <memory>

namespace {

using vyn_connector::common::CastToZt;
using vyn_connector::common::VectorToZt;
using vyn_connector::common::ZtToVector;

constexpr zt_ptr_t untouched{0xDEADBEEF, 0xFEEDF00D};

using WriteString = zt_ptr_t (*)(const std::string&, zt_arena*);

template <std::uint64_t MaxCount = 32>
void WriteSmall(const std::vector<Small>& values, zt_ptr_t* out, zt_arena* arena)
{
    VectorToZt<MaxCount, SmallWire, Small, SmallWire (*)(const Small&, zt_arena*)>(values, out, arena, &SmallToWire);
}

// --- Writing ---

TEST(VectorWriter, StoresTheElementsBackToBackInOrder)
{
    TestArena arena(40);
    zt_ptr_t out = untouched;

    WriteSmall({{0x11, 0x22232425, 0x3132}, {0x41, 0x52535455, 0x6162}}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{0, 24}));
    EXPECT_EQ(arena.Top(), 24u);
    EXPECT_EQ(arena.Contents(), Bytes("11 00*3 25 24 23 22 32 31 00*2 |"
                                      "41 00*3 55 54 53 52 62 61 00*2 |"
                                      "A5*16"));
}

TEST(VectorWriter, AlignsTheArrayAndZeroesTheGap)
{
    TestArena arena(32, 0, 5);
    zt_ptr_t out = untouched;

    VectorToZt<32, LargeWire, Large>({{0x0102030405060708, 0x1112}}, &out, arena.Get(), &LargeToWire);

    EXPECT_EQ(out, (zt_ptr_t{8, 16}));
    EXPECT_EQ(arena.Top(), 24u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*3 08 07 06 05 04 03 02 01 12 11 00*6 A5*8"));
}

TEST(VectorWriter, AlignsTheAddressWhereverStartAndTopLie)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::size_t top = 0; top < 8; ++top) {
            SCOPED_TRACE(testing::Message() << "start " << start << ", top " << top);
            TestArena arena(40, start, top);
            std::size_t first = top;
            while ((start + first) % 4 != 0)
                ++first;
            zt_ptr_t out = untouched;

            WriteSmall({{1, 2, 3}, {4, 5, 6}}, &out, arena.Get());

            EXPECT_EQ(out, (zt_ptr_t{static_cast<std::uint32_t>(first), 24}));
            EXPECT_EQ(arena.Top(), first + 24);
            EXPECT_EQ(arena.Contents(),
                      Bytes("A5*" + std::to_string(top) + " 00*" + std::to_string(first - top) +
                            " 01 00*3 02 00*3 03 00*3 04 00*3 05 00*3 06 00*3" + " A5*" + std::to_string(16 - first)));
        }
}

TEST(VectorWriter, PutsWhatTheElementsReferToBehindTheArrayInOrder)
{
    TestArena arena(34, 0, 3);
    zt_ptr_t out = untouched;

    VectorToZt<32, zt_ptr_t, std::string, WriteString>({"ab", "", "cde"}, &out, arena.Get(), &CastToZt);

    EXPECT_EQ(out, (zt_ptr_t{4, 24}));
    EXPECT_EQ(arena.Top(), 33u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 00 | 1C 00*3 02 00*3 | 1E 00*3 00*4 | 1E 00*3 03 00*3 | 'abcde' A5"));
}

TEST(VectorWriter, StoresThePaddingOfAnElementAsZero)
{
    TestArena arena(56, 0, 1);
    zt_ptr_t out = untouched;

    VectorToZt<2, PaddedWire, Small>({{1, 2, 3}, {4, 5, 6}}, &out, arena.Get(), &PaddedToWire);

    EXPECT_EQ(out, (zt_ptr_t{8, 48}));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*7 | 08 00*7 01 00*3 02 00*3 03 00*7 | 08 00*7 04 00*3 05 00*3 06 00*7"));
}

TEST(VectorWriter, RoundsTheTopUpForAnEmptyList)
{
    TestArena arena(16, 0, 5);
    zt_ptr_t out = untouched;

    WriteSmall({}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{8, 0}));
    EXPECT_EQ(arena.Top(), 8u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 00*3 A5*8"));
}

TEST(VectorWriter, RunsOutOfSpaceWhereTheRoundingOfAnEmptyListPassesTheEnd)
{
    TestArena arena(7, 0, 5);
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteSmall({}, &out, arena.Get()); });

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*7"));
}

TEST(VectorWriter, FillsTheArenaToItsEnd)
{
    TestArena arena(24, 0, 12);
    zt_ptr_t out = untouched;

    WriteSmall({{1, 2, 3}}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{12, 12}));
    EXPECT_EQ(arena.Contents(), Bytes("A5*12 01 00*3 02 00*3 03 00*3"));
}

TEST(VectorWriter, RunsOutOfSpaceOneByteOverTheEnd)
{
    TestArena arena(23, 0, 12);
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteSmall({{1, 2, 3}}, &out, arena.Get()); });

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 12u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*23"));
}

TEST(VectorWriter, TakesMaxCountElements)
{
    TestArena arena(64, 0, 1);
    zt_ptr_t out = untouched;

    WriteSmall<3>({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 36}));
    EXPECT_EQ(arena.Top(), 40u);
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 01 00*3 02 00*3 03 00*3 04 00*3 05 00*3 06 00*3 07 00*3 08 00*3 09 00*3 "
                                      "A5*24"));
}

TEST(VectorWriter, RefusesOneElementMoreBeforeAnythingIsReserved)
{
    TestArena arena(64, 0, 1);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { WriteSmall<3>(std::vector<Small>(4), &out, arena.Get()); }, vectorCodec);
    ExpectOverLimit([&] { WriteSmall<0>(std::vector<Small>(1), &out, arena.Get()); }, vectorCodec);

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 1u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*64"));
}

TEST(VectorWriter, HoldsTheLimitsOfTheRecords)
{
    TestArena arena(600);
    zt_ptr_t out = untouched;

    WriteSmall<5>(std::vector<Small>(5), &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{0, 60}));
    WriteSmall<10>(std::vector<Small>(10), &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{60, 120}));
    WriteSmall<32>(std::vector<Small>(32), &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{180, 384}));
    WriteSmall<2147483647>(std::vector<Small>(3), &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{564, 36}));
    ExpectOverLimit([&] { WriteSmall<5>(std::vector<Small>(6), &out, arena.Get()); }, vectorCodec);
    ExpectOverLimit([&] { WriteSmall<10>(std::vector<Small>(11), &out, arena.Get()); }, vectorCodec);
    ExpectOverLimit([&] { WriteSmall<32>(std::vector<Small>(33), &out, arena.Get()); }, vectorCodec);
    EXPECT_EQ(arena.Top(), 600u);
}

TEST(VectorWriter, RefusesTheNullArenaFirst)
{
    zt_ptr_t out = untouched;

    ExpectInvalidArgument([&] { WriteSmall({}, &out, nullptr); }, vectorCodec, 18);
    ExpectInvalidArgument([&] { WriteSmall({}, nullptr, nullptr); }, vectorCodec, 18);
    ExpectInvalidArgument([&] { WriteSmall<1>(std::vector<Small>(2), &out, nullptr); }, vectorCodec, 18);
    EXPECT_EQ(out, untouched);
}

TEST(VectorWriter, RefusesTheNullDestinationSecond)
{
    TestArena arena(8);

    ExpectInvalidArgument([&] { WriteSmall({}, nullptr, arena.Get()); }, vectorCodec, 19);
    ExpectInvalidArgument([&] { WriteSmall<1>(std::vector<Small>(2), nullptr, arena.Get()); }, vectorCodec, 19);
    EXPECT_EQ(arena.Top(), 0u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
}

TEST(VectorWriter, ChecksTheCountBeforeTheRoom)
{
    TestArena arena(8);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { WriteSmall<1>(std::vector<Small>(2), &out, arena.Get()); }, vectorCodec);
    ExpectOutOfSpace([&] { WriteSmall<2>(std::vector<Small>(2), &out, arena.Get()); });
}

TEST(VectorWriter, FindsNoRoomInAnArenaOfNullAddresses)
{
    zt_arena arena{};
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteSmall({}, &out, &arena); });
    EXPECT_EQ(arena.top, nullptr);
}

TEST(VectorWriter, ReservesTheWholeArrayBeforeItConvertsAnElement)
{
    TestArena arena(48);
    zt_ptr_t out = untouched;
    std::vector<std::size_t> tops;
    std::vector<zt_ptr_t> pointers;

    const auto convert = [&](const Small& value, zt_arena* given) {
        EXPECT_EQ(given, arena.Get());
        tops.push_back(arena.Top());
        pointers.push_back(out);
        return SmallToWire(value, given);
    };
    VectorToZt<32, SmallWire, Small>({{1, 2, 3}, {4, 5, 6}}, &out, arena.Get(), convert);

    EXPECT_EQ(tops, (std::vector<std::size_t>{24, 24}));
    EXPECT_EQ(pointers, (std::vector<zt_ptr_t>{{0, 24}, {0, 24}}));
}

TEST(VectorWriter, LeavesTheElementsFromTheOneThatFailedOnZero)
{
    TestArena arena(64, 0, 2);
    zt_ptr_t out = untouched;
    std::vector<Small> values;
    for (std::uint8_t i = 0; i < 5; ++i)
        values.push_back({static_cast<std::uint8_t>(i + 1), i + 11u, static_cast<std::uint16_t>(i + 21)});

    const auto convert = [](const Small& value, zt_arena* given) {
        if (value.kind == 4) throw ConverterFailed{3};
        return SmallToWire(value, given);
    };
    try {
        VectorToZt<5, SmallWire, Small>(values, &out, arena.Get(), convert);
        FAIL() << "nothing was thrown";
    } catch (const ConverterFailed& failed) {
        EXPECT_EQ(failed.element, 3);
    }

    EXPECT_EQ(out, (zt_ptr_t{4, 60}));
    EXPECT_EQ(arena.Top(), 64u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 00*2 |"
                                      "01 00*3 0B 00*3 15 00*3 | 02 00*3 0C 00*3 16 00*3 | 03 00*3 0D 00*3 17 00*3 |"
                                      "00*24"));
}

TEST(VectorWriter, PassesOnWhatAnElementRaises)
{
    TestArena arena(300);
    zt_ptr_t out = untouched;

    ExpectOverLimit(
        [&] {
            VectorToZt<32, zt_ptr_t, std::string, WriteString>({"a", std::string(129, 'x'), "b"}, &out, arena.Get(),
                                                               &CastToZt);
        },
        stringCodec);

    EXPECT_EQ(out, (zt_ptr_t{0, 24}));
    EXPECT_EQ(arena.Top(), 25u);
    EXPECT_EQ(arena.Contents(), Bytes("18 00*3 01 00*3 00*16 'a' A5*275"));
}

// --- Reading ---
// What all readers of arrays have in common is tested in list_readers_test.cpp.

// Writes down what is done with its objects.
struct Logged {
    Logged() { log += "default "; }
    explicit Logged(int number) : value(number) { log += "convert "; }
    Logged(const Logged& other) : value(other.value) { log += "copy "; }
    Logged(Logged&& other) noexcept : value(other.value) { log += "move "; }
    Logged& operator=(const Logged& other)
    {
        value = other.value;
        log += "copy-assign ";
        return *this;
    }
    Logged& operator=(Logged&& other) noexcept
    {
        value = other.value;
        log += "move-assign ";
        return *this;
    }
    ~Logged() { ++destroyed; }

    int value = 0;
    static inline std::string log;
    static inline int destroyed = 0;
};

TEST(VectorReader, BuildsAllValuesFirstAndThenMovesTheConvertedOnesIn)
{
    TestArena arena(24);
    arena.Put(0, "01 00*11 02 00*11");
    const zt_ptr_t pointer{0, 24};
    Logged::log.clear();

    const std::vector<Logged> values = ZtToVector<SmallWire, Logged>(
        &pointer, arena.Get(), [](const SmallWire& wire, const zt_arena*) { return Logged(wire.kind); });

    EXPECT_EQ(Logged::log, "default default convert move-assign convert move-assign ");
    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0].value, 1);
    EXPECT_EQ(values[1].value, 2);
}

TEST(VectorReader, CopiesNothing)
{
    TestArena arena(24);
    arena.Put(0, "01 00*11 02 00*11");
    const zt_ptr_t pointer{0, 24};

    const auto values = ZtToVector<SmallWire, std::unique_ptr<int>>(
        &pointer, arena.Get(), [](const SmallWire& wire, const zt_arena*) { return std::make_unique<int>(wire.kind); });

    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(*values[0], 1);
    EXPECT_EQ(*values[1], 2);
}

TEST(VectorReader, DestroysThePartialListAndPassesOnWhatTheConverterThrows)
{
    TestArena arena(36);
    const zt_ptr_t pointer{0, 36};
    Logged::destroyed = 0;
    int calls = 0;

    const auto convert = [&](const SmallWire&, const zt_arena*) {
        if (calls == 1) throw ConverterFailed{1};
        return Logged(calls++);
    };
    EXPECT_THROW((ZtToVector<SmallWire, Logged>(&pointer, arena.Get(), convert)), ConverterFailed);

    EXPECT_EQ(calls, 1);
    EXPECT_EQ(Logged::destroyed, 4); // three of the list, one that was moved into it
}

} // namespace
