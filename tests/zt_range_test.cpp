// Ranges: a list between iterators. An empty range cannot be written, and every error is a runtime exception.
#include <common/zt_range.h>

#include "arena.h"
#include "elements.h"
#include "errors.h"

#include <array>
#include <deque>
#include <iterator>
#include <utility>

namespace {

using vyn_connector::common::RangeToZt;
using vyn_connector::common::ZtToRange;

constexpr zt_ptr_t untouched{0xDEADBEEF, 0xFEEDF00D};

// Sixteen bytes without alignment, as update identifiers travel.
struct IdentifierWire {
    std::uint8_t bytes[16];
};
static_assert(sizeof(IdentifierWire) == 16 && alignof(IdentifierWire) == 1);
using Identifier = std::array<std::byte, 16>;

IdentifierWire IdentifierToWire(const Identifier& value, zt_arena*)
{
    IdentifierWire wire;
    std::memcpy(&wire, value.data(), sizeof(wire));
    return wire;
}

Identifier IdentifierFromWire(const IdentifierWire& wire, const zt_arena*)
{
    Identifier value;
    std::memcpy(value.data(), &wire, sizeof(wire));
    return value;
}

Identifier Filled(std::uint8_t byte)
{
    Identifier value;
    value.fill(std::byte{byte});
    return value;
}

void WriteIdentifiers(const std::vector<Identifier>& values, zt_ptr_t* out, zt_arena* arena)
{
    RangeToZt<10, IdentifierWire>(values.begin(), values.end(), out, arena, &IdentifierToWire);
}

template <std::int64_t MaxCount = 10>
void WriteSmall(const std::vector<Small>& values, zt_ptr_t* out, zt_arena* arena)
{
    RangeToZt<MaxCount, SmallWire>(values.begin(), values.end(), out, arena, &SmallToWire);
}

void ReadSmall(zt_ptr_t pointer, std::vector<Small>& values, const zt_arena* arena)
{
    ZtToRange<SmallWire, Small>(&pointer, std::back_inserter(values), arena, &SmallFromWire);
}

void ExpectTooMany(const std::vector<Identifier>& values, zt_ptr_t* out, zt_arena* arena)
{
    ExpectResultCode([&] { WriteIdentifiers(values, out, arena); }, 0x80000046, "0x80000046 (Invalid argument)");
}

// --- Writing ---

TEST(RangeWriter, StoresTheElementsBackToBackInOrder)
{
    TestArena arena(40, 0, 5);
    zt_ptr_t out = untouched;

    WriteIdentifiers({Filled(0x11), Filled(0x22)}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{5, 32}));
    EXPECT_EQ(arena.Top(), 37u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*5 11*16 22*16 A5*3"));
}

TEST(RangeWriter, LeavesNoGapBeforeElementsOfBytesWhereverStartAndTopLie)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::size_t top = 0; top < 8; ++top) {
            SCOPED_TRACE(testing::Message() << "start " << start << ", top " << top);
            TestArena arena(24, start, top);
            zt_ptr_t out = untouched;

            WriteIdentifiers({Filled(0x33)}, &out, arena.Get());

            EXPECT_EQ(out, (zt_ptr_t{static_cast<std::uint32_t>(top), 16}));
            EXPECT_EQ(arena.Top(), top + 16);
            EXPECT_EQ(arena.Contents(), Bytes("A5*" + std::to_string(top) + " 33*16 A5*" + std::to_string(8 - top)));
        }
}

TEST(RangeWriter, AlignsElementsThatHaveAnAlignment)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::size_t top = 0; top < 8; ++top) {
            SCOPED_TRACE(testing::Message() << "start " << start << ", top " << top);
            TestArena arena(48, start, top);
            std::size_t first = top;
            while ((start + first) % 8 != 0)
                ++first;
            const std::vector<Large> values{{1, 2}, {3, 4}};
            zt_ptr_t out = untouched;

            RangeToZt<2, LargeWire>(values.begin(), values.end(), &out, arena.Get(), &LargeToWire);

            EXPECT_EQ(out, (zt_ptr_t{static_cast<std::uint32_t>(first), 32}));
            EXPECT_EQ(arena.Top(), first + 32);
            EXPECT_EQ(arena.Contents(), Bytes("A5*" + std::to_string(top) + " 00*" + std::to_string(first - top) +
                                              " 01 00*7 02 00*7 03 00*7 04 00*7 A5*" + std::to_string(16 - first)));
        }
}

TEST(RangeWriter, StoresThePaddingOfAnElementAsZero)
{
    TestArena arena(32, 0, 1);
    const Small value{1, 2, 3};
    zt_ptr_t out = untouched;

    RangeToZt<1, PaddedWire>(&value, &value + 1, &out, arena.Get(), &PaddedToWire);

    EXPECT_EQ(out, (zt_ptr_t{8, 24}));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*7 | 08 00*7 01 00*3 02 00*3 03 00*7"));
}

TEST(RangeWriter, WritesPartOfAContainer)
{
    TestArena arena(40);
    const std::vector<Small> values{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
    zt_ptr_t out = untouched;

    RangeToZt<2, SmallWire>(values.begin() + 1, values.begin() + 3, &out, arena.Get(), &SmallToWire);

    EXPECT_EQ(out, (zt_ptr_t{0, 24}));
    EXPECT_EQ(arena.Contents(), Bytes("04 00*3 05 00*3 06 00*3 07 00*3 08 00*3 09 00*3 A5*16"));
}

TEST(RangeWriter, TakesEveryRandomAccessIterator)
{
    std::vector<Small> vector{{1, 2, 3}};
    const Small array[] = {{1, 2, 3}};
    const std::deque<Small> deque{{1, 2, 3}};
    const auto expectWritten = [](auto first, auto last) {
        TestArena arena(12);
        zt_ptr_t out = untouched;
        RangeToZt<1, SmallWire>(first, last, &out, arena.Get(), &SmallToWire);
        EXPECT_EQ(out, (zt_ptr_t{0, 12}));
        EXPECT_EQ(arena.Contents(), Bytes("01 00*3 02 00*3 03 00*3"));
    };

    expectWritten(vector.begin(), vector.end());
    expectWritten(vector.begin(), vector.cend()); // of two types
    expectWritten(vector.rbegin(), vector.rend());
    expectWritten(std::begin(array), std::end(array));
    expectWritten(deque.begin(), deque.end());
}

TEST(RangeWriter, ReservesExactly160BytesForTenIdentifiers)
{
    TestArena arena(170, 3, 7);
    zt_ptr_t out = untouched;

    WriteIdentifiers(std::vector<Identifier>(10, Filled(0x44)), &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{7, 160}));
    EXPECT_EQ(arena.Top(), 167u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*7 44*160 A5*3"));
}

TEST(RangeWriter, RefusesElevenIdentifiersBeforeAnythingIsReserved)
{
    TestArena arena(200, 0, 1);
    zt_ptr_t out = untouched;

    ExpectTooMany(std::vector<Identifier>(11), &out, arena.Get());

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 1u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*200"));
}

TEST(RangeWriter, HoldsOtherLimitsToTheElement)
{
    TestArena arena(100);
    zt_ptr_t out = untouched;
    const auto expectRefused = [](auto&& write) {
        ExpectResultCode(write, 0x80000046, "0x80000046 (Invalid argument)");
    };

    WriteSmall<1>(std::vector<Small>(1), &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{0, 12}));
    expectRefused([&] { WriteSmall<1>(std::vector<Small>(2), &out, arena.Get()); });
    expectRefused([&] { WriteSmall<0>(std::vector<Small>(1), &out, arena.Get()); });
    WriteSmall<3>(std::vector<Small>(3), &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{12, 36}));
    expectRefused([&] { WriteSmall<3>(std::vector<Small>(4), &out, arena.Get()); });
    EXPECT_EQ(arena.Top(), 48u);
}

TEST(RangeWriter, FillsTheArenaToItsEnd)
{
    TestArena arena(20, 0, 4);
    zt_ptr_t out = untouched;

    WriteIdentifiers({Filled(0x55)}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 16}));
    EXPECT_EQ(arena.Contents(), Bytes("A5*4 55*16"));
}

TEST(RangeWriter, RunsOutOfSpaceOneByteOverTheEnd)
{
    TestArena arena(19, 0, 4);
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteIdentifiers({Filled(0x55)}, &out, arena.Get()); });

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 4u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*19"));
}

TEST(RangeWriter, RefusesTheNullArenaFirst)
{
    zt_ptr_t out = untouched;

    ExpectInvalidArgument([&] { WriteIdentifiers({Filled(1)}, &out, nullptr); }, rangeCodec, 20);
    ExpectInvalidArgument([&] { WriteIdentifiers({}, &out, nullptr); }, rangeCodec, 20);
    ExpectInvalidArgument([&] { WriteIdentifiers({Filled(1)}, nullptr, nullptr); }, rangeCodec, 20);
    ExpectInvalidArgument([&] { WriteIdentifiers({}, nullptr, nullptr); }, rangeCodec, 20);
    ExpectInvalidArgument([&] { WriteIdentifiers(std::vector<Identifier>(11), &out, nullptr); }, rangeCodec, 20);
    EXPECT_EQ(out, untouched);
}

TEST(RangeWriter, RefusesAnEmptyRangeSecond)
{
    TestArena arena(40);
    zt_ptr_t out = untouched;

    ExpectInvalidArgument([&] { WriteIdentifiers({}, &out, arena.Get()); }, rangeCodec, 21);
    ExpectInvalidArgument([&] { WriteIdentifiers({}, nullptr, arena.Get()); }, rangeCodec, 21);
    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 0u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*40"));
}

TEST(RangeWriter, RefusesAReversedRangeSecond)
{
    TestArena arena(40);
    zt_ptr_t out = untouched;
    const std::vector<Identifier> values(2);
    const auto write = [&](zt_ptr_t* destination) {
        RangeToZt<10, IdentifierWire>(values.end(), values.begin(), destination, arena.Get(), &IdentifierToWire);
    };

    ExpectInvalidArgument([&] { write(&out); }, rangeCodec, 21);
    ExpectInvalidArgument([&] { write(nullptr); }, rangeCodec, 21);
    EXPECT_EQ(arena.Top(), 0u);
}

TEST(RangeWriter, RefusesTheNullDestinationThird)
{
    TestArena arena(40);

    ExpectInvalidArgument([&] { WriteIdentifiers({Filled(1)}, nullptr, arena.Get()); }, rangeCodec, 22);
    ExpectInvalidArgument([&] { WriteIdentifiers(std::vector<Identifier>(11), nullptr, arena.Get()); }, rangeCodec, 22);
    EXPECT_EQ(arena.Top(), 0u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*40"));
}

TEST(RangeWriter, ChecksTheCountBeforeTheRoom)
{
    TestArena arena(8);
    zt_ptr_t out = untouched;

    ExpectTooMany(std::vector<Identifier>(11), &out, arena.Get());
    ExpectOutOfSpace([&] { WriteIdentifiers(std::vector<Identifier>(10), &out, arena.Get()); });
}

TEST(RangeWriter, FindsNoRoomInAnArenaOfNullAddresses)
{
    zt_arena arena{};
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteIdentifiers({Filled(1)}, &out, &arena); });
    EXPECT_EQ(arena.top, nullptr);
}

// A converter that can be neither copied nor moved, and that counts.
struct Counting {
    Counting() = default;
    Counting(const Counting&) = delete;
    Counting& operator=(const Counting&) = delete;
    SmallWire operator()(const Small& value, zt_arena* arena)
    {
        ++calls;
        return SmallToWire(value, arena);
    }
    Small operator()(const SmallWire& wire, const zt_arena* arena)
    {
        ++calls;
        return SmallFromWire(wire, arena);
    }
    int calls = 0;
};

TEST(RangeWriter, CallsTheConverterThatItWasGivenAndNoCopy)
{
    TestArena arena(24);
    zt_ptr_t out = untouched;
    const std::vector<Small> values(2);
    Counting convert;

    RangeToZt<2, SmallWire>(values.begin(), values.end(), &out, arena.Get(), convert);

    EXPECT_EQ(convert.calls, 2);
}

TEST(RangeWriter, HandsTheConverterAConstantValueAndTheArena)
{
    TestArena arena(12);
    zt_ptr_t out = untouched;
    std::vector<Small> values(1);
    const Small* given = nullptr;

    const auto convert = [&](auto& value, zt_arena* givenArena) {
        static_assert(std::is_same_v<decltype(value), const Small&>);
        given = &value;
        EXPECT_EQ(givenArena, arena.Get());
        EXPECT_EQ(arena.Top(), 12u);
        EXPECT_EQ(out, (zt_ptr_t{0, 12}));
        return SmallToWire(value, givenArena);
    };
    RangeToZt<1, SmallWire>(values.begin(), values.end(), &out, arena.Get(), convert);

    EXPECT_EQ(given, values.data());
}

TEST(RangeWriter, LeavesTheElementsFromTheOneThatFailedOnZero)
{
    TestArena arena(64, 0, 2);
    zt_ptr_t out = untouched;
    const std::vector<Small> values{{1, 11, 21}, {2, 12, 22}, {3, 13, 23}, {4, 14, 24}, {5, 15, 25}};

    const auto convert = [](const Small& value, zt_arena* given) {
        if (value.kind == 4) throw ConverterFailed{3};
        return SmallToWire(value, given);
    };
    EXPECT_THROW((RangeToZt<5, SmallWire>(values.begin(), values.end(), &out, arena.Get(), convert)), ConverterFailed);

    EXPECT_EQ(out, (zt_ptr_t{4, 60}));
    EXPECT_EQ(arena.Top(), 64u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 00*2 |"
                                      "01 00*3 0B 00*3 15 00*3 | 02 00*3 0C 00*3 16 00*3 | 03 00*3 0D 00*3 17 00*3 |"
                                      "00*24"));
}

// --- Reading ---
// What all readers of arrays have in common is tested in list_readers_test.cpp.

TEST(RangeReader, AppendsTheElementsInOrder)
{
    TestArena arena(40);
    arena.Put(4, "01 EE*3 02 00*3 03 00 EE*2 | 04 EE*3 05 00*3 06 00 EE*2");
    std::vector<Small> values{{7, 8, 9}, {10, 11, 12}};

    ReadSmall({4, 24}, values, arena.Get());

    EXPECT_EQ(values, (std::vector<Small>{{7, 8, 9}, {10, 11, 12}, {1, 2, 3}, {4, 5, 6}}));
}

TEST(RangeReader, ReadsIdentifiersAtAnyOffset)
{
    TestArena arena(40);
    arena.Put(3, "11*16 22*16");
    const zt_ptr_t pointer{3, 32};
    std::vector<Identifier> values;

    ZtToRange<IdentifierWire, Identifier>(&pointer, std::back_inserter(values), arena.Get(), &IdentifierFromWire);

    EXPECT_EQ(values, (std::vector<Identifier>{Filled(0x11), Filled(0x22)}));
}

TEST(RangeReader, WritesThroughAnyOutputIterator)
{
    TestArena arena(24);
    arena.Put(0, "01 00*3 02 00*3 03 00*3 04 00*3 05 00*3 06 00*3");
    const zt_ptr_t pointer{0, 24};
    Small values[3];

    ZtToRange<SmallWire, Small>(&pointer, &values[0], arena.Get(), &SmallFromWire);

    EXPECT_EQ(values[0], (Small{1, 2, 3}));
    EXPECT_EQ(values[1], (Small{4, 5, 6}));
    EXPECT_EQ(values[2], Small());
}

// Writes down what is done with it.
struct LoggingOutput {
    std::string* log;
    LoggingOutput& operator*() { return *this; }
    LoggingOutput& operator++()
    {
        *log += "advance ";
        return *this;
    }
    LoggingOutput& operator=(const Small& value)
    {
        *log += "assign " + std::to_string(value.kind) + " ";
        return *this;
    }
};

TEST(RangeReader, AdvancesTheOutputAfterEachAssignment)
{
    TestArena arena(24);
    arena.Put(0, "01 00*11 02 00*11");
    const zt_ptr_t pointer{0, 24};
    std::string log;

    ZtToRange<SmallWire, Small>(&pointer, LoggingOutput{&log}, arena.Get(), &SmallFromWire);

    EXPECT_EQ(log, "assign 1 advance assign 2 advance ");
}

// Takes whatever it is assigned, and tells whether that was a Small.
struct AnythingOutput {
    bool* onlySmall;
    AnythingOutput& operator*() { return *this; }
    AnythingOutput& operator++() { return *this; }
    template <typename T>
    AnythingOutput& operator=(const T&)
    {
        *onlySmall = *onlySmall && std::is_same_v<T, Small>;
        return *this;
    }
};

TEST(RangeReader, AssignsADomainValueWhateverTheConverterReturns)
{
    TestArena arena(12);
    const zt_ptr_t pointer{0, 12};
    struct Convertible {
        operator Small() const { return {}; }
    };
    bool onlySmall = true;

    ZtToRange<SmallWire, Small>(&pointer, AnythingOutput{&onlySmall}, arena.Get(),
                                [](const SmallWire&, const zt_arena*) { return Convertible(); });

    EXPECT_TRUE(onlySmall);
}

TEST(RangeReader, CallsTheConverterThatItWasGivenAndNoCopy)
{
    TestArena arena(24);
    const zt_ptr_t pointer{0, 24};
    std::vector<Small> values;
    Counting convert;

    ZtToRange<SmallWire, Small>(&pointer, std::back_inserter(values), arena.Get(), convert);

    EXPECT_EQ(convert.calls, 2);
}

TEST(RangeReader, AppendsNothingForNoBytes)
{
    const TestArena arena(8);
    std::vector<Small> values{{1, 2, 3}};

    ReadSmall({0, 0}, values, arena.Get());
    ReadSmall({5, 0}, values, arena.Get());
    ReadSmall({8, 0}, values, arena.Get());

    EXPECT_EQ(values, (std::vector<Small>{{1, 2, 3}}));
}

TEST(RangeReader, HasNoLimit)
{
    const TestArena arena(16 * 11);
    const zt_ptr_t pointer{0, 16 * 11};
    std::vector<Identifier> values;

    ZtToRange<IdentifierWire, Identifier>(&pointer, std::back_inserter(values), arena.Get(), &IdentifierFromWire);

    EXPECT_EQ(values, std::vector<Identifier>(11, Filled(0xA5)));
}

TEST(RangeReader, ReportsABadPointerLikeAFullArena)
{
    const TestArena arena(24);
    std::vector<Small> values;

    ReadSmall({12, 12}, values, arena.Get());
    ASSERT_EQ(values.size(), 1u);
    ExpectOutOfSpace([&] { ReadSmall({13, 12}, values, arena.Get()); });
    ExpectOutOfSpace([&] { ReadSmall({0, 36}, values, arena.Get()); });
    ExpectOutOfSpace([&] { ReadSmall({25, 0}, values, arena.Get()); });
    ExpectOutOfSpace([&] { ReadSmall({4294967295, 12}, values, arena.Get()); });
    ExpectOutOfSpace([&] { ReadSmall({1, 4294967292}, values, arena.Get()); });
    EXPECT_EQ(values.size(), 1u);
}

TEST(RangeReader, KeepsWhatWasAppendedBeforeTheConverterThrew)
{
    TestArena arena(36);
    arena.Put(0, "01 00*11 02 00*11 03 00*11");
    const zt_ptr_t pointer{0, 36};
    std::vector<Small> values{{9, 9, 9}};

    const auto convert = [](const SmallWire& wire, const zt_arena* given) {
        if (wire.kind == 3) throw ConverterFailed{2};
        return SmallFromWire(wire, given);
    };
    EXPECT_THROW((ZtToRange<SmallWire, Small>(&pointer, std::back_inserter(values), arena.Get(), convert)),
                 ConverterFailed);

    EXPECT_EQ(values, (std::vector<Small>{{9, 9, 9}, {1, 0, 0}, {2, 0, 0}}));
}

} // namespace
