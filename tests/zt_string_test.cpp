// Strings: exactly their bytes, at most MaxCount of them on writing, any number on reading.
#include <common/zt_string.h>

#include "arena.h"
#include "errors.h"

namespace {

using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using vyn_connector::common::StringToZt;
using vyn_connector::common::ZtToString;

constexpr zt_ptr_t untouched{0xDEADBEEF, 0xFEEDF00D};

// --- Writing ---

TEST(StringWriter, PutsExactlyTheBytesAtTheTop)
{
    TestArena arena(16, 0, 2);
    zt_ptr_t out = untouched;

    StringToZt<128>("hello", &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{2, 5}));
    EXPECT_EQ(arena.Top(), 7u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 'hello' A5*9"));
}

TEST(StringWriter, AlignsNothingWhereverStartAndTopLie)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::size_t top = 0; top < 8; ++top) {
            SCOPED_TRACE(testing::Message() << "start " << start << ", top " << top);
            TestArena arena(16, start, top);
            zt_ptr_t out = untouched;

            StringToZt<128>("abc", &out, arena.Get());

            EXPECT_EQ(out, (zt_ptr_t{static_cast<std::uint32_t>(top), 3}));
            EXPECT_EQ(arena.Top(), top + 3);
            EXPECT_EQ(arena.Contents(), Bytes("A5*" + std::to_string(top) + " 'abc' A5*" + std::to_string(13 - top)));
        }
}

TEST(StringWriter, PlacesStringsOneAfterTheOther)
{
    TestArena arena(8);
    zt_ptr_t first = untouched;
    zt_ptr_t second = untouched;

    StringToZt<128>("abc", &first, arena.Get());
    StringToZt<128>("de", &second, arena.Get());

    EXPECT_EQ(first, (zt_ptr_t{0, 3}));
    EXPECT_EQ(second, (zt_ptr_t{3, 2}));
    EXPECT_EQ(arena.Contents(), Bytes("'abcde' A5*3"));
}

TEST(StringWriter, GivesAnEmptyStringTheOffsetOfTheTopAndNoRoom)
{
    TestArena arena(8, 3, 5);
    zt_ptr_t out = untouched;

    StringToZt<128>("", &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{5, 0}));
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
}

TEST(StringWriter, TakesAnEmptyStringWithoutCharacters)
{
    TestArena arena(8, 0, 8);
    zt_ptr_t out = untouched;

    StringToZt<128>(std::string_view(), &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{8, 0}));
    EXPECT_EQ(arena.Top(), 8u);
}

TEST(StringWriter, CarriesZeroBytesLikeAnyOther)
{
    TestArena arena(8);
    zt_ptr_t out = untouched;

    StringToZt<128>(std::string_view("a\0b\0", 4), &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{0, 4}));
    EXPECT_EQ(arena.Contents(), Bytes("'a' 00 'b' 00 A5*4"));
}

TEST(StringWriter, DoesNotInterpretTheBytes)
{
    TestArena arena(8);
    zt_ptr_t out = untouched;

    StringToZt<128>("\xFF\x80\xC3\x28", &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{0, 4}));
    EXPECT_EQ(arena.Contents(), Bytes("FF 80 C3 28 A5*4"));
}

TEST(StringWriter, FillsTheArenaToItsEnd)
{
    TestArena arena(8, 0, 3);
    zt_ptr_t out = untouched;

    StringToZt<128>("abcde", &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{3, 5}));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 'abcde'"));
}

TEST(StringWriter, RunsOutOfSpaceOneByteOverTheEnd)
{
    TestArena arena(8, 0, 3);
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { StringToZt<128>("abcdef", &out, arena.Get()); });

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 3u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
}

// A limit of MaxCount takes MaxCount bytes and not one more.
template <std::size_t MaxCount>
void ExpectLimit()
{
    SCOPED_TRACE(testing::Message() << "limit " << MaxCount);
    TestArena arena(MaxCount + 8, 0, 1);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { StringToZt<MaxCount>(std::string(MaxCount + 1, 'x'), &out, arena.Get()); }, stringCodec);
    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 1u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*" + std::to_string(MaxCount + 8)));

    StringToZt<MaxCount>(std::string(MaxCount, 'x'), &out, arena.Get());
    EXPECT_EQ(out, (zt_ptr_t{1, static_cast<std::uint32_t>(MaxCount)}));
    EXPECT_EQ(arena.Top(), MaxCount + 1);
    EXPECT_EQ(arena.Contents(), Bytes("A5 'x'*" + std::to_string(MaxCount) + " A5*7"));
}

TEST(StringWriter, HoldsEveryLimitToTheByte)
{
    ExpectLimit<0>();
    ExpectLimit<1>();
    ExpectLimit<32>();
    ExpectLimit<128>();
    ExpectLimit<256>();
    ExpectLimit<1024>();
    ExpectLimit<16384>();
}

TEST(StringWriter, RefusesTheNullArenaFirst)
{
    zt_ptr_t out = untouched;

    ExpectInvalidArgument([&] { StringToZt<128>("abc", &out, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([&] { StringToZt<128>("abc", nullptr, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([&] { StringToZt<2>("abc", &out, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([&] { StringToZt<256>("abc", nullptr, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([&] { StringToZt<128>("", &out, nullptr); }, stringCodec, 21);
    EXPECT_EQ(out, untouched);
}

TEST(StringWriter, RefusesTheNullDestinationSecond)
{
    TestArena arena(2);

    ExpectInvalidArgument([&] { StringToZt<128>("a", nullptr, arena.Get()); }, stringCodec, 22);
    ExpectInvalidArgument([&] { StringToZt<256>("a", nullptr, arena.Get()); }, stringCodec, 22);
    ExpectInvalidArgument([&] { StringToZt<2>("abc", nullptr, arena.Get()); }, stringCodec, 22);
    EXPECT_EQ(arena.Top(), 0u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*2"));
}

TEST(StringWriter, ChecksTheLengthBeforeTheRoom)
{
    TestArena arena(2);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { StringToZt<2>("abc", &out, arena.Get()); }, stringCodec);
    ExpectOutOfSpace([&] { StringToZt<3>("abc", &out, arena.Get()); });
}

TEST(StringWriter, FindsNoRoomInAnArenaOfNullAddresses)
{
    zt_arena arena{};
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { StringToZt<128>("", &out, &arena); });
    ExpectOutOfSpace([&] { StringToZt<128>("a", &out, &arena); });
    EXPECT_EQ(arena.top, nullptr);
}

// --- Writing by value ---

TEST(StringByValue, IsWrittenAsThePointerWriterDoes)
{
    TestArena arena(16, 5, 2);

    EXPECT_EQ(CastToZt(std::string("a\0b", 3), arena.Get()), (zt_ptr_t{2, 3}));
    EXPECT_EQ(CastToZt(std::string(), arena.Get()), (zt_ptr_t{5, 0}));
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 'a' 00 'b' A5*11"));
}

TEST(StringByValue, TakesAHundredAndTwentyEightBytes)
{
    TestArena arena(300);

    EXPECT_EQ(CastToZt(std::string(128, 'x'), arena.Get()), (zt_ptr_t{0, 128}));
    ExpectOverLimit([&] { CastToZt(std::string(129, 'y'), arena.Get()); }, stringCodec);
    EXPECT_EQ(arena.Top(), 128u);
    EXPECT_EQ(arena.Contents(), Bytes("'x'*128 A5*172"));
}

TEST(StringByValue, RefusesTheNullArenaBeforeTheLength)
{
    ExpectInvalidArgument([] { CastToZt(std::string("abc"), nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastToZt(std::string(129, 'x'), nullptr); }, stringCodec, 21);
}

TEST(StringByValue, RunsOutOfSpace)
{
    TestArena arena(2);

    ExpectOutOfSpace([&] { CastToZt(std::string("abc"), arena.Get()); });
    EXPECT_EQ(arena.Top(), 0u);
}

// --- Reading ---

// Each of the two readers of a string, which differ in how the pointer is handed over.
using Reader = std::string (*)(const zt_ptr_t&, const zt_arena*);
const Reader readers[] = {[](const zt_ptr_t& pointer, const zt_arena* arena) { return ZtToString(&pointer, arena); },
                          [](const zt_ptr_t& pointer, const zt_arena* arena) { return CastFromZt(pointer, arena); }};

TEST(StringReader, ReturnsExactlyTheBytes)
{
    for (const Reader read : readers) {
        TestArena arena(16, 7);
        arena.Put(3, "'hello' 21");

        EXPECT_EQ(read({3, 5}, arena.Get()), "hello");
        EXPECT_EQ(read({4, 1}, arena.Get()), "e");
        EXPECT_EQ(arena.Contents(), Bytes("A5*3 'hello!' A5*7"));
    }
}

TEST(StringReader, TrimsNothing)
{
    for (const Reader read : readers) {
        TestArena arena(8);
        arena.Put(0, "20 'a' 00 'b' 00 20 00 00");

        EXPECT_EQ(read({0, 8}, arena.Get()), std::string(" a\0b\0 \0\0", 8));
        EXPECT_EQ(read({4, 1}, arena.Get()), std::string(1, '\0'));
    }
}

TEST(StringReader, ReturnsAnEmptyStringForNoBytes)
{
    for (const Reader read : readers) {
        TestArena arena(8);

        EXPECT_EQ(read({0, 0}, arena.Get()), "");
        EXPECT_EQ(read({3, 0}, arena.Get()), "");
        EXPECT_EQ(read({8, 0}, arena.Get()), "");
    }
}

TEST(StringReader, HasNoLimit)
{
    for (const Reader read : readers) {
        TestArena arena(70000);
        arena.Put(0, "'x'*70000");

        EXPECT_EQ(read({0, 129}, arena.Get()), std::string(129, 'x'));
        EXPECT_EQ(read({0, 70000}, arena.Get()), std::string(70000, 'x'));
    }
}

TEST(StringReader, ReadsBehindTheTop)
{
    for (const Reader read : readers) {
        TestArena arena(8, 0, 2);
        arena.Put(0, "'abcdefgh'");

        EXPECT_EQ(read({4, 4}, arena.Get()), "efgh");
    }
}

TEST(StringReader, RefusesWhatEndsBehindTheArena)
{
    for (const Reader read : readers) {
        TestArena arena(8);

        EXPECT_EQ(read({5, 3}, arena.Get()).size(), 3u);
        ExpectOutside([&] { read({5, 4}, arena.Get()); }, stringCodec, 5);
        ExpectOutside([&] { read({9, 0}, arena.Get()); }, stringCodec, 9);
        ExpectOutside([&] { read({0, 9}, arena.Get()); }, stringCodec, 0);
        ExpectOutside([&] { read({4294967295, 0}, arena.Get()); }, stringCodec, 4294967295);
        ExpectOutside([&] { read({4294967295, 1}, arena.Get()); }, stringCodec, 4294967295);
        ExpectOutside([&] { read({2147483648, 2147483648}, arena.Get()); }, stringCodec, 2147483648);
        ExpectOutside([&] { read({1, 4294967295}, arena.Get()); }, stringCodec, 1);
        EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    }
}

TEST(StringReader, RefusesTheNullAddress)
{
    const zt_arena arena{};
    for (const Reader read : readers)
        ExpectOutside([&] { read({0, 0}, &arena); }, stringCodec, 0);
}

TEST(StringReader, RefusesTheNullArenaFirst)
{
    const zt_ptr_t pointer{0, 1};

    ExpectInvalidArgument([&] { ZtToString(&pointer, nullptr); }, stringCodec, 39);
    ExpectInvalidArgument([&] { ZtToString(nullptr, nullptr); }, stringCodec, 39);
    ExpectInvalidArgument([&] { CastFromZt(pointer, nullptr); }, stringCodec, 39);
}

TEST(StringReader, RefusesTheNullPointerSecond)
{
    TestArena arena(8);

    ExpectInvalidArgument([&] { ZtToString(nullptr, arena.Get()); }, stringCodec, 40);
}

TEST(String, ComesBackAsItWasWritten)
{
    for (const std::string& text :
         {std::string(), std::string("a"), std::string("a\0", 2), std::string("\0", 1), std::string(128, '\xFF')}) {
        TestArena arena(160, 9, 3);

        EXPECT_EQ(CastFromZt(CastToZt(text, arena.Get()), arena.Get()), text);
    }
}

} // namespace
