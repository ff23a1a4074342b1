// Blobs: exactly their bytes, at most 65536 of them on writing, any number on reading.
#include <common/zt_blob.h>

#include "arena.h"
#include "errors.h"

namespace {

using vyn_connector::common::BlobToZt;
using vyn_connector::common::ZtToBlob;
using Blob = std::vector<std::uint8_t>;

constexpr zt_ptr_t untouched{0xDEADBEEF, 0xFEEDF00D};

TEST(BlobWriter, PutsExactlyTheBytesAtTheTop)
{
    TestArena arena(16, 0, 2);
    zt_ptr_t out = untouched;

    BlobToZt({0x01, 0x00, 0xFF, 0x80}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{2, 4}));
    EXPECT_EQ(arena.Top(), 6u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 01 00 FF 80 A5*10"));
}

TEST(BlobWriter, AlignsNothingWhereverStartAndTopLie)
{
    for (std::size_t start = 0; start < 16; ++start)
        for (std::size_t top = 0; top < 8; ++top) {
            SCOPED_TRACE(testing::Message() << "start " << start << ", top " << top);
            TestArena arena(16, start, top);
            zt_ptr_t out = untouched;

            BlobToZt({1, 2, 3}, &out, arena.Get());

            EXPECT_EQ(out, (zt_ptr_t{static_cast<std::uint32_t>(top), 3}));
            EXPECT_EQ(arena.Top(), top + 3);
            EXPECT_EQ(arena.Contents(),
                      Bytes("A5*" + std::to_string(top) + " 01 02 03 A5*" + std::to_string(13 - top)));
        }
}

TEST(BlobWriter, GivesAnEmptyBlobTheOffsetOfTheTopAndNoRoom)
{
    TestArena arena(8, 3, 5);
    zt_ptr_t out = untouched;

    BlobToZt({}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{5, 0}));
    EXPECT_EQ(arena.Top(), 5u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
}

TEST(BlobWriter, FillsTheArenaToItsEnd)
{
    TestArena arena(4, 0, 1);
    zt_ptr_t out = untouched;

    BlobToZt({1, 2, 3}, &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{1, 3}));
    EXPECT_EQ(arena.Contents(), Bytes("A5 01 02 03"));
}

TEST(BlobWriter, RunsOutOfSpaceOneByteOverTheEnd)
{
    TestArena arena(4, 0, 1);
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { BlobToZt({1, 2, 3, 4}, &out, arena.Get()); });

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 1u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*4"));
}

TEST(BlobWriter, Takes65536Bytes)
{
    TestArena arena(65540, 0, 1);
    zt_ptr_t out = untouched;

    BlobToZt(Blob(65536, 0x42), &out, arena.Get());

    EXPECT_EQ(out, (zt_ptr_t{1, 65536}));
    EXPECT_EQ(arena.Top(), 65537u);
    EXPECT_EQ(arena.Contents(), Bytes("A5 42*65536 A5*3"));
}

TEST(BlobWriter, RefusesOneByteMoreBeforeAnythingIsReserved)
{
    TestArena arena(65540, 0, 1);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { BlobToZt(Blob(65537, 0x42), &out, arena.Get()); }, blobCodec);

    EXPECT_EQ(out, untouched);
    EXPECT_EQ(arena.Top(), 1u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*65540"));
}

TEST(BlobWriter, RefusesTheNullArenaFirst)
{
    zt_ptr_t out = untouched;

    ExpectInvalidArgument([&] { BlobToZt({1}, &out, nullptr); }, blobCodec, 14);
    ExpectInvalidArgument([&] { BlobToZt({}, &out, nullptr); }, blobCodec, 14);
    ExpectInvalidArgument([&] { BlobToZt({1}, nullptr, nullptr); }, blobCodec, 14);
    ExpectInvalidArgument([&] { BlobToZt(Blob(65537), &out, nullptr); }, blobCodec, 14);
    EXPECT_EQ(out, untouched);
}

TEST(BlobWriter, RefusesTheNullDestinationSecond)
{
    TestArena arena(4);

    ExpectInvalidArgument([&] { BlobToZt({1}, nullptr, arena.Get()); }, blobCodec, 15);
    ExpectInvalidArgument([&] { BlobToZt(Blob(65537), nullptr, arena.Get()); }, blobCodec, 15);
    EXPECT_EQ(arena.Top(), 0u);
    EXPECT_EQ(arena.Contents(), Bytes("A5*4"));
}

TEST(BlobWriter, ChecksTheSizeBeforeTheRoom)
{
    TestArena arena(4);
    zt_ptr_t out = untouched;

    ExpectOverLimit([&] { BlobToZt(Blob(65537), &out, arena.Get()); }, blobCodec);
    ExpectOutOfSpace([&] { BlobToZt(Blob(65536), &out, arena.Get()); });
}

TEST(BlobWriter, FindsNoRoomInAnArenaOfNullAddresses)
{
    zt_arena arena{};
    zt_ptr_t out = untouched;

    ExpectOutOfSpace([&] { BlobToZt({}, &out, &arena); });
    ExpectOutOfSpace([&] { BlobToZt({1}, &out, &arena); });
    EXPECT_EQ(arena.top, nullptr);
}

TEST(BlobReader, ReturnsExactlyTheBytes)
{
    TestArena arena(8, 7);
    arena.Put(3, "01 00 FF 80");
    const zt_ptr_t pointer{3, 4};

    EXPECT_EQ(ZtToBlob(&pointer, arena.Get()), (Blob{0x01, 0x00, 0xFF, 0x80}));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 01 00 FF 80 A5"));
}

TEST(BlobReader, ReturnsAnEmptyBlobThatOwnsNoMemoryForNoBytes)
{
    TestArena arena(8);
    for (const zt_ptr_t pointer : {zt_ptr_t{0, 0}, zt_ptr_t{3, 0}, zt_ptr_t{8, 0}})
        EXPECT_EQ(ZtToBlob(&pointer, arena.Get()).capacity(), 0u);
}

TEST(BlobReader, HasNoLimit)
{
    TestArena arena(70000);
    arena.Put(0, "42*70000");
    const zt_ptr_t pointer{0, 70000};

    EXPECT_EQ(ZtToBlob(&pointer, arena.Get()), Blob(70000, 0x42));
}

TEST(BlobReader, ReadsBehindTheTop)
{
    TestArena arena(4, 0, 1);
    arena.Put(0, "01 02 03 04");
    const zt_ptr_t pointer{2, 2};

    EXPECT_EQ(ZtToBlob(&pointer, arena.Get()), (Blob{3, 4}));
}

TEST(BlobReader, RefusesWhatEndsBehindTheArena)
{
    const TestArena arena(8);
    const auto read = [&](zt_ptr_t pointer) { return ZtToBlob(&pointer, arena.Get()); };

    EXPECT_EQ(read({5, 3}).size(), 3u);
    ExpectOutside([&] { read({5, 4}); }, blobCodec, 5);
    ExpectOutside([&] { read({9, 0}); }, blobCodec, 9);
    ExpectOutside([&] { read({0, 9}); }, blobCodec, 0);
    ExpectOutside([&] { read({4294967295, 1}); }, blobCodec, 4294967295);
    ExpectOutside([&] { read({2147483648, 2147483648}); }, blobCodec, 2147483648);
    ExpectOutside([&] { read({1, 4294967295}); }, blobCodec, 1);
}

TEST(BlobReader, RefusesTheNullAddress)
{
    const zt_arena arena{};
    const zt_ptr_t pointer{0, 0};

    ExpectOutside([&] { ZtToBlob(&pointer, &arena); }, blobCodec, 0);
}

TEST(BlobReader, RefusesTheNullArenaFirst)
{
    const zt_ptr_t pointer{0, 0};

    ExpectInvalidArgument([&] { ZtToBlob(&pointer, nullptr); }, blobCodec, 32);
    ExpectInvalidArgument([&] { ZtToBlob(nullptr, nullptr); }, blobCodec, 32);
}

TEST(BlobReader, RefusesTheNullPointerSecond)
{
    const TestArena arena(8);

    ExpectInvalidArgument([&] { ZtToBlob(nullptr, arena.Get()); }, blobCodec, 33);
}

TEST(Blob, ComesBackAsItWasWritten)
{
    for (const Blob& blob : {Blob{}, Blob{7}, Blob(20, 0), Blob(65536, 0xA5)}) {
        TestArena arena(65600, 9, 3);
        zt_ptr_t pointer{};

        BlobToZt(blob, &pointer, arena.Get());

        EXPECT_EQ(ZtToBlob(&pointer, arena.Get()), blob);
    }
}

} // namespace
