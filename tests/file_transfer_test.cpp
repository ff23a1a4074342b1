// The transfer of files: what a request for a file and for a chunk of it, and the two answers, look like on the wire.
#include <common/file_transfer.h>

#include "record_test.h"

#include <limits>

namespace {

using vyn_connector::FileChunk;
using vyn_connector::FileChunkParams;
using vyn_connector::FileInfo;
using vyn_connector::FileInfoParams;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using wem::types::Timestamp;

using FileInfoParamsWire = tq_vyn_connector_VynTypes_FileInfoParams;
using FileInfoWire = tq_vyn_connector_VynTypes_FileInfo;
using FileChunkParamsWire = tq_vyn_connector_VynTypes_FileChunkParams;
using FileChunkWire = tq_vyn_connector_VynTypes_FileChunk;

// --- What never changes ---

PIN_WIRE(FileInfoParamsWire, 8, 4);
PIN_WIRE_FIELD(FileInfoParamsWire, 0, zt_ptr_t, fileName);

PIN_WIRE(FileInfoWire, 32, 8);
PIN_WIRE_FIELD(FileInfoWire, 0, zt_ptr_t, fileName);
PIN_WIRE_FIELD(FileInfoWire, 8, std::uint8_t, field2);
PIN_WIRE_FIELD(FileInfoWire, 9, std::uint8_t, field3);
PIN_WIRE_FIELD(FileInfoWire, 16, std::int64_t, timestamp);
PIN_WIRE_FIELD(FileInfoWire, 24, std::uint64_t, fileSize);

PIN_WIRE(FileChunkParamsWire, 24, 8);
PIN_WIRE_FIELD(FileChunkParamsWire, 0, zt_ptr_t, fileName);
PIN_WIRE_FIELD(FileChunkParamsWire, 8, std::uint64_t, chunkOffset);
PIN_WIRE_FIELD(FileChunkParamsWire, 16, std::uint64_t, chunkSize);

PIN_WIRE(FileChunkWire, 32, 8);
PIN_WIRE_FIELD(FileChunkWire, 0, zt_ptr_t, fileName);
PIN_WIRE_FIELD(FileChunkWire, 8, std::uint64_t, chunkOffset);
PIN_WIRE_FIELD(FileChunkWire, 16, std::uint64_t, chunkSize);
PIN_WIRE_FIELD(FileChunkWire, 24, zt_ptr_t, data);

// --- FileInfoParams ---

FileInfoParams SampleInfoParams()
{
    return {"report.txt"};
}

const layout::Message infoParamsMessage("[fileName]", {{"fileName", layout::Text, "'report.txt'"}});

TEST(FileInfoParams, LieOnTheWireByteByByte)
{
    TestArena arena(16, 0, 3);

    EXPECT_EQ(BytesOf(CastToZt(SampleInfoParams(), arena.Get())), Bytes("03 00 00 00 0A 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 'report.txt' A5*3"));
    EXPECT_EQ(arena.Top(), 13u);
}

TEST(FileInfoParams, TravelBothWays)
{
    ExpectWrites(SampleInfoParams(), infoParamsMessage);
    ExpectReads(SampleInfoParams(), infoParamsMessage);
    ExpectNeedsAllItsSpace(SampleInfoParams(), infoParamsMessage);
    ExpectRefusesBadPointers<FileInfoParams>(infoParamsMessage);
}

TEST(FileInfoParams, TravelEmpty)
{
    ExpectWrites(FileInfoParams{}, infoParamsMessage.With("fileName", ""));
    ExpectReads(FileInfoParams{}, infoParamsMessage.With("fileName", ""));
}

TEST(FileInfoParams, TakeANameOf1024Bytes)
{
    ExpectLimit(infoParamsMessage, "fileName", 1024, [](std::size_t n) { return FileInfoParams{std::string(n, 'x')}; });
    ExpectReads(FileInfoParams{std::string(1025, 'x')}, infoParamsMessage.With("fileName", "'x'*1025"));
}

TEST(FileInfoParams, NeedAnArena)
{
    ExpectInvalidArgument([] { CastToZt(FileInfoParams{std::string(1025, 'x')}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(FileInfoParamsWire{}, nullptr); }, stringCodec, 39);
}

TEST(FileInfoParams, AreEqualWhereAllMembersAre)
{
    ExpectEveryMemberIsCompared(SampleInfoParams(), [](FileInfoParams& params) { params.fileName += "!"; });
}

// --- FileInfo ---

FileInfo SampleInfo()
{
    FileInfo info;
    info.fileName = "a.log";
    info.field2 = true;
    info.field3 = false;
    info.timestamp = Timestamp{-2};
    info.fileSize = 0xF1E2D3C4B5A69788;
    return info;
}

const layout::Message infoMessage("[fileName] 01 00 00*6 | FE FF*7 | 88 97 A6 B5 C4 D3 E2 F1",
                                  {{"fileName", layout::Text, "'a.log'"}});

TEST(FileInfo, LiesOnTheWireByteByByte)
{
    TestArena arena(8, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(SampleInfo(), arena.Get())), Bytes("01 00 00 00 05 00 00 00 |" // fileName
                                                                  "01 |"                      // field2
                                                                  "00 |"                      // field3
                                                                  "00 00 00 00 00 00 |"       // padding
                                                                  "FE FF FF FF FF FF FF FF |" // timestamp
                                                                  "88 97 A6 B5 C4 D3 E2 F1"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'a.log' A5*2"));
    EXPECT_EQ(arena.Top(), 6u);
}

TEST(FileInfo, TravelsBothWays)
{
    ExpectWrites(SampleInfo(), infoMessage);
    ExpectReads(SampleInfo(), infoMessage);
    ExpectNeedsAllItsSpace(SampleInfo(), infoMessage);
    ExpectRefusesBadPointers<FileInfo>(infoMessage);
}

TEST(FileInfo, TravelsEmpty)
{
    const layout::Message message("[fileName] 00*24", {{"fileName", layout::Text, ""}});
    ExpectWrites(FileInfo{}, message);
    ExpectReads(FileInfo{}, message);
}

TEST(FileInfo, KeepsItsBoolsApart)
{
    FileInfo info;
    info.field3 = true;
    const layout::Message message("[fileName] 00 01 00*22", {{"fileName", layout::Text, ""}});
    ExpectWrites(info, message);
    ExpectReads(info, message);
}

TEST(FileInfo, ReadsAnyByteButZeroAsTrue)
{
    TestArena arena(8);
    for (const unsigned byte : {0u, 1u, 2u, 255u}) {
        SCOPED_TRACE(byte);
        FileInfoWire wire{};
        wire.field2 = static_cast<std::uint8_t>(byte);
        EXPECT_EQ(CastFromZt(wire, arena.Get()).field2, byte != 0);
        EXPECT_FALSE(CastFromZt(wire, arena.Get()).field3);
        wire.field3 = wire.field2;
        wire.field2 = 0;
        EXPECT_EQ(CastFromZt(wire, arena.Get()).field3, byte != 0);
        EXPECT_FALSE(CastFromZt(wire, arena.Get()).field2);
    }
}

TEST(FileInfo, WritesTheByteOfABoolAsItStands)
{
    TestArena arena(8);
    FileInfo info;
    std::memset(&info.field2, 0x02, 1);
    std::memset(&info.field3, 0xFF, 1);

    const FileInfoWire wire = CastToZt(info, arena.Get());

    EXPECT_EQ(wire.field2, 0x02);
    EXPECT_EQ(wire.field3, 0xFF);
}

TEST(FileInfo, IgnoresThePaddingItReads)
{
    ExpectReads(SampleInfo(),
                layout::Message("[fileName] 01 00 C3*6 | FE FF*7 | 88 97 A6 B5 C4 D3 E2 F1", infoMessage.parts));
}

TEST(FileInfo, TakesANameOf1024Bytes)
{
    const auto make = [](std::size_t n) {
        FileInfo info = SampleInfo();
        info.fileName = std::string(n, 'x');
        return info;
    };
    ExpectLimit(infoMessage, "fileName", 1024, make);
    ExpectReads(make(1025), infoMessage.With("fileName", "'x'*1025"));
}

TEST(FileInfo, NeedsAnArena)
{
    ExpectInvalidArgument([] { CastToZt(FileInfo{}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(FileInfoWire{}, nullptr); }, stringCodec, 39);
}

TEST(FileInfo, IsEqualWhereAllMembersAre)
{
    ExpectEveryMemberIsCompared(
        SampleInfo(), [](FileInfo& info) { info.fileName += "!"; }, [](FileInfo& info) { info.field2 = false; },
        [](FileInfo& info) { info.field3 = true; }, [](FileInfo& info) { info.timestamp = Timestamp{-1}; },
        [](FileInfo& info) { info.fileSize ^= 1; });
}

// --- FileChunkParams ---

FileChunkParams SampleChunkParams()
{
    FileChunkParams params;
    params.fileName = "b.bin";
    params.chunkOffset = 0x0102030405060708;
    params.chunkSize = 0x1112131415161718;
    return params;
}

const layout::Message chunkParamsMessage("[fileName] 08 07 06 05 04 03 02 01 | 18 17 16 15 14 13 12 11",
                                         {{"fileName", layout::Text, "'b.bin'"}});

TEST(FileChunkParams, LieOnTheWireByteByByte)
{
    TestArena arena(8, 0, 2);

    EXPECT_EQ(BytesOf(CastToZt(SampleChunkParams(), arena.Get())), Bytes("02 00 00 00 05 00 00 00 |" // fileName
                                                                         "08 07 06 05 04 03 02 01 |" // chunkOffset
                                                                         "18 17 16 15 14 13 12 11"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 'b.bin' A5"));
    EXPECT_EQ(arena.Top(), 7u);
}

TEST(FileChunkParams, TravelBothWays)
{
    ExpectWrites(SampleChunkParams(), chunkParamsMessage);
    ExpectReads(SampleChunkParams(), chunkParamsMessage);
    ExpectNeedsAllItsSpace(SampleChunkParams(), chunkParamsMessage);
    ExpectRefusesBadPointers<FileChunkParams>(chunkParamsMessage);
}

TEST(FileChunkParams, TakeTheSmallestAndTheLargestBlock)
{
    FileChunkParams params;
    const layout::Message zeros("[fileName] 00*16", {{"fileName", layout::Text, ""}});
    ExpectWrites(params, zeros);
    ExpectReads(params, zeros);

    params.chunkOffset = params.chunkSize = std::numeric_limits<std::uint64_t>::max();
    const layout::Message ones("[fileName] FF*16", {{"fileName", layout::Text, ""}});
    ExpectWrites(params, ones);
    ExpectReads(params, ones);
}

TEST(FileChunkParams, TakeANameOf1024Bytes)
{
    const auto make = [](std::size_t n) {
        FileChunkParams params = SampleChunkParams();
        params.fileName = std::string(n, 'x');
        return params;
    };
    ExpectLimit(chunkParamsMessage, "fileName", 1024, make);
    ExpectReads(make(1025), chunkParamsMessage.With("fileName", "'x'*1025"));
}

TEST(FileChunkParams, NeedAnArena)
{
    ExpectInvalidArgument([] { CastToZt(FileChunkParams{}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(FileChunkParamsWire{}, nullptr); }, stringCodec, 39);
}

TEST(FileChunkParams, AreEqualWhereAllMembersAre)
{
    ExpectEveryMemberIsCompared(
        SampleChunkParams(), [](FileChunkParams& params) { params.fileName += "!"; },
        [](FileChunkParams& params) { params.chunkOffset ^= 1; },
        [](FileChunkParams& params) { params.chunkSize ^= 1; });
}

// --- FileChunk ---

FileChunk SampleChunk()
{
    FileChunk chunk;
    chunk.fileName = "c.img";
    chunk.chunkOffset = 0x2122232425262728;
    chunk.chunkSize = 0x3132333435363738;
    chunk.data = {0x00, 0xFF, 0x7F, 0x80};
    return chunk;
}

FileChunk SampleChunkOf(std::size_t nameSize, std::size_t dataSize)
{
    FileChunk chunk = SampleChunk();
    chunk.fileName = std::string(nameSize, 'x');
    chunk.data = std::vector<std::uint8_t>(dataSize, 'x');
    return chunk;
}

const layout::Message chunkMessage("[fileName] 28 27 26 25 24 23 22 21 | 38 37 36 35 34 33 32 31 | [data]",
                                   {{"fileName", layout::Text, "'c.img'"}, {"data", layout::Blob, "00 FF 7F 80"}});

TEST(FileChunk, LiesOnTheWireByteByByte)
{
    TestArena arena(12, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(SampleChunk(), arena.Get())), Bytes("01 00 00 00 05 00 00 00 |" // fileName
                                                                   "28 27 26 25 24 23 22 21 |" // chunkOffset
                                                                   "38 37 36 35 34 33 32 31 |" // chunkSize
                                                                   "06 00 00 00 04 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'c.img' 00 FF 7F 80 A5*2"));
    EXPECT_EQ(arena.Top(), 10u);
}

TEST(FileChunk, TravelsBothWays)
{
    ExpectWrites(SampleChunk(), chunkMessage);
    ExpectReads(SampleChunk(), chunkMessage);
    ExpectNeedsAllItsSpace(SampleChunk(), chunkMessage);
    ExpectRefusesBadPointers<FileChunk>(chunkMessage);
}

TEST(FileChunk, KeepsItsFirstMemberToItself)
{
    FileChunk chunk = SampleChunk();
    chunk.field1 = 7;
    ExpectWrites(chunk, chunkMessage);
    chunk.field1 = 0;
    ExpectReads(chunk, chunkMessage);
}

TEST(FileChunk, TravelsWithoutData)
{
    const layout::Message message("[fileName] 00*16 [data]",
                                  {{"fileName", layout::Text, "'name'"}, {"data", layout::Blob, ""}});
    FileChunk chunk;
    chunk.fileName = "name";
    ExpectWrites(chunk, message);
    ExpectReads(chunk, message);
}

TEST(FileChunk, TakesTheLargestBlock)
{
    const layout::Message message("[fileName] FF*16 [data]",
                                  {{"fileName", layout::Text, ""}, {"data", layout::Blob, "00*3"}});
    FileChunk chunk;
    chunk.chunkOffset = chunk.chunkSize = std::numeric_limits<std::uint64_t>::max();
    chunk.data = {0, 0, 0};
    ExpectWrites(chunk, message);
    ExpectReads(chunk, message);
}

TEST(FileChunk, TakesANameOf1024Bytes)
{
    ExpectLimit(chunkMessage.With("data", "'x'*2"), "fileName", 1024,
                [](std::size_t n) { return SampleChunkOf(n, 2); });
    ExpectReads(SampleChunkOf(1025, 2), chunkMessage.With("fileName", "'x'*1025").With("data", "'x'*2"));
}

TEST(FileChunk, Takes65536BytesOfData)
{
    TestArena arena(65544, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(SampleChunkOf(3, 65536), arena.Get())), Bytes("01 00 00 00 03 00 00 00 |" // fileName
                                                                             "28 27 26 25 24 23 22 21 |" // chunkOffset
                                                                             "38 37 36 35 34 33 32 31 |" // chunkSize
                                                                             "04 00 00 00 00 00 01 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'x'*65539 A5*4"));
    EXPECT_EQ(arena.Top(), 65540u);
}

TEST(FileChunk, Refuses65537BytesOfDataWhenTheNameIsPlaced)
{
    TestArena arena(65544, 0, 1);

    ExpectOverLimit([&] { CastToZt(SampleChunkOf(3, 65537), arena.Get()); }, blobCodec);

    EXPECT_EQ(arena.Contents(), Bytes("A5 'xxx' A5*65540"));
    EXPECT_EQ(arena.Top(), 4u);
}

TEST(FileChunk, NamesTheNameFirstWhereBothAreTooLarge)
{
    TestArena arena(66600, 0, 1);

    ExpectOverLimit([&] { CastToZt(SampleChunkOf(1025, 65537), arena.Get()); }, stringCodec);

    EXPECT_EQ(arena.Contents(), Bytes("A5*66600"));
    EXPECT_EQ(arena.Top(), 1u);
}

TEST(FileChunk, ReadsDataOfAnySize)
{
    TestArena arena(65600);
    arena.Put(1, "'name' 'x'*65537");
    const FileChunkWire wire{{1, 4}, 0, 0, {5, 65537}};

    EXPECT_EQ(CastFromZt(wire, arena.Get()).data, std::vector<std::uint8_t>(65537, 'x'));
}

TEST(FileChunk, NeedsAnArena)
{
    ExpectInvalidArgument([] { CastToZt(SampleChunkOf(1025, 65537), nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(FileChunkWire{}, nullptr); }, stringCodec, 39);
}

TEST(FileChunk, IsEqualWhereAllMembersAre)
{
    ExpectEveryMemberIsCompared(
        SampleChunk(), [](FileChunk& chunk) { chunk.field1 = 1; }, [](FileChunk& chunk) { chunk.fileName += "!"; },
        [](FileChunk& chunk) { chunk.chunkOffset ^= 1; }, [](FileChunk& chunk) { chunk.chunkSize ^= 1; },
        [](FileChunk& chunk) { chunk.data.push_back(0); });
}

TEST(FileTransfer, IsEmptyAndZeroByDefault)
{
    const FileInfo info;
    EXPECT_FALSE(info.field2 || info.field3);
    EXPECT_EQ(info.timestamp, Timestamp{0});
    EXPECT_EQ(info.fileSize, 0u);
    const FileChunkParams params;
    EXPECT_EQ(params.chunkOffset | params.chunkSize, 0u);
    const FileChunk chunk;
    EXPECT_EQ(chunk.field1 | chunk.chunkOffset | chunk.chunkSize, 0u);
}

} // namespace
