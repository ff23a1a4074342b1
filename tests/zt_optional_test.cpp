// Optional members: no element is no value, one element is the value, further ones are ignored.
#include <common/zt_optional.h>

#include "arena.h"
#include "elements.h"
#include "errors.h"

#include <memory>

namespace {

using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using vyn_connector::common::OptionalToZt;
using vyn_connector::common::ZtToOptional;

constexpr zt_ptr_t untouched{0xDEADBEEF, 0xFEEDF00D};

void WriteSmall(const std::optional<Small>& value, zt_ptr_t* out, zt_arena* arena)
{
    OptionalToZt<SmallWire, Small>(value, out, arena, &SmallToWire);
}

std::optional<Small> ReadSmall(zt_ptr_t pointer, const zt_arena* arena)
{
    return ZtToOptional<SmallWire, Small>(&pointer, arena, &SmallFromWire);
}

using ReadText = std::string (*)(const zt_ptr_t&, const zt_arena*);

void WriteString(const std::optional<std::string>& value, zt_ptr_t* out, zt_arena* arena)
{
    using Write = zt_ptr_t (*)(const std::string&, zt_arena*);
    OptionalToZt<zt_ptr_t, std::string, Write>(value, out, arena, &CastToZt);
}

// The instantiation that the library exports.
std::optional<std::string> ReadString(zt_ptr_t pointer, const zt_arena* arena)
{
    return ZtToOptional<zt_ptr_t, std::string, ReadText>(&pointer, arena, &CastFromZt);
}

// --- Writing ---

TEST(OptionalWriter, WritesAnAbsentValueAsZerosAndLeavesTheArenaAlone)
{
    TestArena arena(16, 0, 5);
    zt_ptr_t out = untouched;

    WriteSmall(std::nullopt, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{0, 0}));
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*16"));
}

TEST(OptionalWriter, NeedsNoRoomForAnAbsentValue)
{
    TestArena full(8, 3, 8);
    zt_ptr_t out = untouched;
    WriteSmall(std::nullopt, &out, full.Get());
    EXPECT_EQ(out, (zt_ptr_t{0, 0}));
    EXPECT_EQ(full.Top(), 8u);

    zt_arena withoutBuffer{};
    out = untouched;
    WriteSmall(std::nullopt, &out, &withoutBuffer);
    EXPECT_EQ(out, (zt_ptr_t{0, 0}));
    EXPECT_EQ(withoutBuffer.top, nullptr);
}

TEST(OptionalWriter, PutsTheValueIntoASlotOfItsOwn)
{
    TestArena arena(16);
    zt_ptr_t out = untouched;

    WriteSmall(Small{0x11, 0x22232425, 0x3132}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{0, 12}));
    EXPECT_EQ(arena.Top(), 12u);
    EXPECT_EQ(arena.Contents(), Bytes("11 00*3 25 24 23 22 32 31 00*2 A5*4"));
}

TEST(OptionalWriter, ZeroesTheGapBeforeASlotOfSixteenBytes)
{
    TestArena arena(32, 0, 4);
    zt_ptr_t out = untouched;

    OptionalToZt<LargeWire, Large>(Large{0x0102030405060708, 0x1112}, &out, arena.Get(), &LargeToWire);

    EXPECT_EQ(out, (zt_ptr_t{8, 16}));
    EXPECT_EQ(arena.Top(), 24u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*4 00*4 08 07 06 05 04 03 02 01 12 11 00*6 A5*8"));
}

TEST(OptionalWriter, AlignsTheAddressWhereverStartAndTopLie)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::size_t top = 0; top < 8; ++top) {
            SCOPED_TRACE(testing::Message() << "start " << start << ", top " << top);
            TestArena arena(32, start, top);
            std::size_t first = top;
            while ((start + first) % 8 != 0)
                ++first;
            zt_ptr_t out = untouched;

            OptionalToZt<LargeWire, Large>(Large{1, 2}, &out, arena.Get(), &LargeToWire);

            EXPECT_EQ(out, (zt_ptr_t{static_cast<std::uint32_t>(first), 16}));
            EXPECT_EQ(arena.Top(), first + 16);
            EXPECT_EQ(arena.Contents(), Bytes("A5*" + std::to_string(top) + " 00*" + std::to_string(first - top) +
                                              " 01 00*7 02 00*7 A5*" + std::to_string(16 - first)));
        }
}

TEST(OptionalWriter, AlignsASlotOfFourByteFieldsToFour)
{
    TestArena arena(20, 0, 1);
    zt_ptr_t out = untouched;

    WriteSmall(Small{1, 2, 3}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 12}));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 01 00*3 02 00*3 03 00*3 A5*4"));
}

TEST(OptionalWriter, StoresThePaddingOfTheValueAsZero)
{
    TestArena arena(32, 0, 1);
    zt_ptr_t out = untouched;

    OptionalToZt<PaddedWire, Small>(Small{1, 2, 3}, &out, arena.Get(), &PaddedToWire);

    EXPECT_EQ(out, (zt_ptr_t{8, 24}));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*7 | 08 00*7 01 00*3 02 00*3 03 00*7"));
}

TEST(OptionalWriter, WritesATimeStampAlignedToEight)
{
    TestArena arena(24, 0, 1);
    zt_ptr_t out = untouched;

    OptionalToZt<std::int64_t, std::int64_t>(std::int64_t{-2}, &out, arena.Get(),
                                             [](const std::int64_t& value, zt_arena*) { return value; });

    EXPECT_EQ(out, (zt_ptr_t{8, 8}));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*7 FE FF*7 A5*8"));
}

TEST(OptionalWriter, PutsWhatTheValueRefersToBehindTheSlot)
{
    TestArena arena(16, 0, 1);
    zt_ptr_t out = untouched;

    WriteString("abc", &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 8}));
    EXPECT_EQ(arena.Top(), 15u);
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 | 0C 00*3 03 00*3 | 'abc' A5"));
}

TEST(OptionalWriter, TellsAnEmptyStringFromNone)
{
    TestArena arena(8);
    zt_ptr_t out = untouched;

    WriteString("", &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{0, 8}));
    EXPECT_EQ(arena.Contents(), Bytes("08 00*3 00*4"));
    EXPECT_EQ(ReadString(out, arena.Get()), std::optional<std::string>(""));
}

TEST(OptionalWriter, CallsTheConverterWhenTheSlotIsThere)
{
    TestArena arena(16, 0, 1);
    zt_ptr_t out = untouched;
    const std::optional<Small> value(Small{1, 2, 3});
    int calls = 0;

    OptionalToZt<SmallWire, Small>(value, &out, arena.Get(), [&](const Small& given, zt_arena* givenArena) {
        ++calls;
        EXPECT_EQ(&given, &*value);
        EXPECT_EQ(givenArena, arena.Get());
        EXPECT_EQ(out, (zt_ptr_t{4, 12}));
        EXPECT_EQ(arena.Top(), 16u);
        return SmallToWire(given, givenArena);
    });

    EXPECT_EQ(calls, 1);
}

TEST(OptionalWriter, FillsTheArenaToItsEnd)
{
    TestArena arena(16, 0, 3);
    zt_ptr_t out = untouched;

    WriteSmall(Small{1, 2, 3}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{4, 12}));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 00 01 00*3 02 00*3 03 00*3"));
}

TEST(OptionalWriter, RunsOutOfSpaceOneByteOverTheEnd)
{
    TestArena arena(15, 0, 3);
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteSmall(Small{1, 2, 3}, &out, arena.Get()); });

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 3u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*15"));
}

TEST(OptionalWriter, FindsNoRoomInAnArenaOfNullAddresses)
{
    zt_arena arena{};
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { WriteSmall(Small{}, &out, &arena); });
    EXPECT_EQ(arena.top, nullptr);
}

TEST(OptionalWriter, RefusesTheNullArenaAlsoForAnAbsentValue)
{
    zt_ptr_t out = untouched;

    ExpectInvalidArgument([&] { WriteSmall(std::nullopt, &out, nullptr); }, optionalCodec, 17);
    ExpectInvalidArgument([&] { WriteSmall(Small{}, &out, nullptr); }, optionalCodec, 17);
    EXPECT_EQ(out, untouched);
}

TEST(OptionalWriter, LeavesTheSlotZeroWhereTheConverterThrows)
{
    TestArena arena(16, 0, 1);
    zt_ptr_t out = untouched;

    EXPECT_THROW(
        (OptionalToZt<SmallWire, Small>(Small{1, 2, 3}, &out, arena.Get(),
                                        [](const Small&, zt_arena*) -> SmallWire { throw ConverterFailed{0}; })),
        ConverterFailed);

    EXPECT_EQ(out, (zt_ptr_t{4, 12}));
    EXPECT_EQ(arena.Top(), 16u);
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*15"));
}

TEST(OptionalWriter, PassesOnWhatTheValueRaises)
{
    TestArena arena(300);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { WriteString(std::string(129, 'x'), &out, arena.Get()); }, stringCodec);

    EXPECT_EQ(out, (zt_ptr_t{0, 8}));
    EXPECT_EQ(arena.Top(), 8u);
    EXPECT_EQ(arena.Contents(), Bytes("00*8 A5*292"));
}

// --- Reading ---
// What all readers of arrays have in common is tested in list_readers_test.cpp.

TEST(OptionalReader, DoesNotCallTheConverterForNoBytes)
{
    const TestArena arena(8);
    const zt_ptr_t pointer{0, 0};

    const auto value = ZtToOptional<SmallWire, Small>(
        &pointer, arena.Get(), [](const SmallWire&, const zt_arena*) -> Small { throw ConverterFailed{0}; });

    EXPECT_EQ(value, std::nullopt);
}

TEST(OptionalReader, IgnoresFurtherElements)
{
    TestArena arena(36);
    arena.Put(0, "01 00*3 02 00*3 03 00*3 | 04 00*3 05 00*3 06 00*3");
    const zt_ptr_t pointer{0, 24};
    int calls = 0;

    const auto value =
        ZtToOptional<SmallWire, Small>(&pointer, arena.Get(), [&](const SmallWire& wire, const zt_arena* given) {
            ++calls;
            EXPECT_EQ(given, arena.Get());
            return SmallFromWire(wire, given);
        });

    EXPECT_EQ(value, std::optional<Small>({1, 2, 3}));
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(ReadSmall({0, 36}, arena.Get()), std::optional<Small>({1, 2, 3}));
}

TEST(OptionalReader, ReadsAStringThroughTwoLevels)
{
    TestArena arena(32, 5);
    arena.Put(3, "13 00*3 03 00*3 | 16 00*3 02 00*3 | 'abcde'");

    EXPECT_EQ(ReadString({3, 8}, arena.Get()), std::optional<std::string>("abc"));
    EXPECT_EQ(ReadString({11, 8}, arena.Get()), std::optional<std::string>("de"));
    EXPECT_EQ(ReadString({3, 16}, arena.Get()), std::optional<std::string>("abc"));
}

TEST(OptionalReader, CopiesNothing)
{
    TestArena arena(12);
    arena.Put(0, "07 00*11");
    const zt_ptr_t pointer{0, 12};

    const auto value = ZtToOptional<SmallWire, std::unique_ptr<int>>(
        &pointer, arena.Get(), [](const SmallWire& wire, const zt_arena*) { return std::make_unique<int>(wire.kind); });

    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(**value, 7);
}

TEST(OptionalReader, TakesWhatCannotBeMoved)
{
    struct Fixed {
        explicit Fixed(int given) : kind(given) {}
        Fixed(Fixed&&) = delete;
        int kind;
    };
    TestArena arena(12);
    arena.Put(0, "07 00*11");
    const zt_ptr_t pointer{0, 12};

    const auto value = ZtToOptional<SmallWire, Fixed>(
        &pointer, arena.Get(), [](const SmallWire& wire, const zt_arena*) { return Fixed(wire.kind); });

    ASSERT_TRUE(value.has_value());
    EXPECT_EQ(value->kind, 7);
}

TEST(Optional, ComesBackAsItWasWritten)
{
    for (const std::optional<std::string>& value :
         {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("a b")}) {
        TestArena arena(32, 9, 3);
        zt_ptr_t pointer = untouched;

        WriteString(value, &pointer, arena.Get());

        EXPECT_EQ(ReadString(pointer, arena.Get()), value);
    }
}

} // namespace
