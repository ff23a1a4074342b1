// Licence information: up to two keys, each with two optional time stamps and an optional string in slots of their own.
#include <common/license_info.h>

#include "arena.h"
#include "errors.h"
#include "record_test.h"

namespace {

using vyn_connector::LicenseInfo;
using vyn_connector::LicenseKeyInfo;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using wem::types::Timestamp;
using WireKey = tq_vyn_connector_VynTypes_LicenseKeyInfo;
using WireInfo = tq_vyn_connector_VynTypes_LicenseInfo;

PIN_WIRE(WireKey, 44, 4);
PIN_WIRE_FIELD(WireKey, 0, std::uint32_t, field1);
PIN_WIRE_FIELD(WireKey, 4, std::uint32_t, field2);
PIN_WIRE_FIELD(WireKey, 8, std::uint32_t, field3);
PIN_WIRE_FIELD(WireKey, 12, zt_ptr_t, field4);
PIN_WIRE_FIELD(WireKey, 20, zt_ptr_t, field5);
PIN_WIRE_FIELD(WireKey, 28, std::uint32_t, field6);
PIN_WIRE_FIELD(WireKey, 32, std::uint32_t, field7);
PIN_WIRE_FIELD(WireKey, 36, zt_ptr_t, field8);
PIN_MEMBER(LicenseKeyInfo, std::uint32_t, field1);
PIN_MEMBER(LicenseKeyInfo, std::uint32_t, field2);
PIN_MEMBER(LicenseKeyInfo, std::uint32_t, field3);
PIN_MEMBER(LicenseKeyInfo, std::optional<Timestamp>, field4);
PIN_MEMBER(LicenseKeyInfo, std::optional<Timestamp>, field5);
PIN_MEMBER(LicenseKeyInfo, std::uint32_t, field6);
PIN_MEMBER(LicenseKeyInfo, std::uint32_t, field7);
PIN_MEMBER(LicenseKeyInfo, std::optional<std::string>, field8);

PIN_WIRE(WireInfo, 16, 4);
PIN_WIRE_FIELD(WireInfo, 0, zt_ptr_t, keyInfo1);
PIN_WIRE_FIELD(WireInfo, 8, zt_ptr_t, keyInfo2);
PIN_MEMBER(LicenseInfo, std::optional<LicenseKeyInfo>, keyInfo1);
PIN_MEMBER(LicenseInfo, std::optional<LicenseKeyInfo>, keyInfo2);

static_assert(IsDeclared<WireKey(const LicenseKeyInfo&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<LicenseKeyInfo(const WireKey&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<WireInfo(const LicenseInfo&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<LicenseInfo(const WireInfo&, const zt_arena*)>(&CastFromZt));

const LicenseKeyInfo key{0x01020304,    0x11121314, 0x21222324, Timestamp{0x0102030405060708},
                         Timestamp{-2}, 0x31323334, 0x41424344, "key"};
const layout::Message keyMessage("04 03 02 01 14 13 12 11 24 23 22 21"
                                 "[field4] [field5] 34 33 32 31 44 43 42 41 [field8]",
                                 {{"field4", layout::Optional(8, 8), "08 07 06 05 04 03 02 01"},
                                  {"field5", layout::Optional(8, 8), "FE FF*7"},
                                  {"field8", layout::Optional(8, 4), "[text]"},
                                  {"text", layout::Text, "'key'"}});

const LicenseInfo info{
    key, LicenseKeyInfo{0xA1A2A3A4, 0xB1B2B3B4, 0xC1C2C3C4, Timestamp{-3}, Timestamp{4}, 0xD1D2D3D4, 0xE1E2E3E4, "k2"}};
const std::vector<layout::Part> firstKeyParts{
    {"key1", layout::Optional(44, 4),
     "04 03 02 01 14 13 12 11 24 23 22 21 [key1.field4] [key1.field5] 34 33 32 31 44 43 42 41 [key1.field8]"},
    {"key1.field4", layout::Optional(8, 8), "08 07 06 05 04 03 02 01"},
    {"key1.field5", layout::Optional(8, 8), "FE FF*7"},
    {"key1.field8", layout::Optional(8, 4), "[key1.text]"},
    {"key1.text", layout::Text, "'key'"},
};
const std::vector<layout::Part> secondKeyParts{
    {"key2", layout::Optional(44, 4),
     "A4 A3 A2 A1 B4 B3 B2 B1 C4 C3 C2 C1 [key2.field4] [key2.field5] D4 D3 D2 D1 E4 E3 E2 E1 [key2.field8]"},
    {"key2.field4", layout::Optional(8, 8), "FD FF*7"},
    {"key2.field5", layout::Optional(8, 8), "04 00*7"},
    {"key2.field8", layout::Optional(8, 4), "[key2.text]"},
    {"key2.text", layout::Text, "'k2'"},
};
layout::Message InfoMessage()
{
    layout::Message message("[key1] [key2]", firstKeyParts);
    message.parts.insert(message.parts.end(), secondKeyParts.begin(), secondKeyParts.end());
    return message;
}

// --- LicenseKeyInfo: writing ---

TEST(LicenseKeyInfo, IsWrittenFieldByFieldWithEachOptionalValueInASlot)
{
    TestArena arena(40, 0, 4);

    const WireKey wire = CastToZt(key, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("04 03 02 01  14 13 12 11  24 23 22 21"
                                   "08 00 00 00 08 00 00 00" // field4
                                   "10 00 00 00 08 00 00 00" // field5
                                   "34 33 32 31  44 43 42 41"
                                   "18 00 00 00 08 00 00 00")); // field8
    EXPECT_EQ(arena.Contents(), Bytes("A5*4 00*4"
                                      " 08 07 06 05 04 03 02 01"
                                      "FE FF FF FF FF FF FF FF"
                                      "20 00 00 00 03 00 00 00 'key' A5*5"));
    EXPECT_EQ(arena.Top(), 35u);
}

TEST(LicenseKeyInfo, IsWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(key, keyMessage);
    ExpectReads(key, keyMessage);
}

TEST(LicenseKeyInfo, MayLackAnyOfItsOptionalMembers)
{
    for (int present = 0; present < 8; ++present) {
        SCOPED_TRACE(present);
        LicenseKeyInfo record = key;
        layout::Message message = keyMessage;
        const auto drop = [&message](const std::string& name, std::size_t parts) {
            message.wire.replace(message.wire.find('[' + name + ']'), name.size() + 2, "00*8 ");
            const auto first = message.parts.begin() + static_cast<std::ptrdiff_t>(message.IndexOf(name));
            message.parts.erase(first, first + static_cast<std::ptrdiff_t>(parts));
        };
        if ((present & 1) == 0) {
            record.field4.reset();
            drop("field4", 1);
        }
        if ((present & 2) == 0) {
            record.field5.reset();
            drop("field5", 1);
        }
        if ((present & 4) == 0) {
            record.field8.reset();
            drop("field8", 2);
        }

        ExpectWrites(record, message);
        ExpectReads(record, message);
    }
}

TEST(LicenseKeyInfo, ReservesTwelveBytesForATimeStampFourBytesPastAMultipleOfEight)
{
    TestArena arena(24, 8, 4);
    LicenseKeyInfo record;
    record.field4 = Timestamp{1};

    const WireKey wire = CastToZt(record, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("00*12  08 00 00 00 08 00 00 00  00*24"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*4 00*4 01 00*7 A5*8"));
    EXPECT_EQ(arena.Top(), 16u);
}

TEST(LicenseKeyInfo, AlignsTheSlotOfItsStringToFourBytesOnly)
{
    TestArena arena(24, 0, 4);
    LicenseKeyInfo record;
    record.field8 = "abc";

    const WireKey wire = CastToZt(record, arena.Get());

    EXPECT_EQ(wire.field8, (zt_ptr_t{4, 8}));
    EXPECT_EQ(arena.Contents(), Bytes("A5*4 0C 00 00 00 03 00 00 00 'abc' A5*9"));
}

TEST(LicenseKeyInfo, TellsAnEmptyStringFromNone)
{
    TestArena arena(16, 0, 1);
    LicenseKeyInfo record;
    record.field8 = "";

    const WireKey wire = CastToZt(record, arena.Get());

    EXPECT_EQ(wire.field8, (zt_ptr_t{4, 8}));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 0C 00 00 00 00 00 00 00 A5*4"));
    EXPECT_EQ(CastFromZt(wire, arena.Get()).field8, "");
    EXPECT_EQ(CastFromZt(WireKey{}, arena.Get()).field8, std::nullopt);
}

TEST(LicenseKeyInfo, CarriesEveryCountOfATimeStamp)
{
    for (const std::int64_t count : {std::int64_t{0}, std::int64_t{-1}, INT64_MIN, INT64_MAX}) {
        TestArena arena(16);
        LicenseKeyInfo record;
        record.field5 = Timestamp{count};
        EXPECT_EQ(CastFromZt(CastToZt(record, arena.Get()), arena.Get()).field5, Timestamp{count});
    }
}

TEST(LicenseKeyInfo, CarriesEveryBitOfItsNumbers)
{
    LicenseKeyInfo record;
    record.field1 = record.field2 = record.field3 = record.field6 = record.field7 = 0xFFFFFFFF;
    TestArena arena(0);

    const WireKey wire = CastToZt(record, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("FF*12 00*16 FF*8 00*8"));
    EXPECT_TRUE(CastFromZt(wire, arena.Get()) == record);
}

TEST(LicenseKeyInfo, RunsOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(key, keyMessage);
}

TEST(LicenseKeyInfo, TakesOneHundredAndTwentyEightBytesOfStringOnceItsSlotIsReserved)
{
    ExpectLimit(keyMessage, "text", 128, [](std::size_t size) {
        LicenseKeyInfo record = key;
        record.field8 = std::string(size, 'x');
        return record;
    });

    TestArena arena(256, 0, 1);
    LicenseKeyInfo record;
    record.field8 = std::string(129, 'x');
    ExpectOverLimit([&] { CastToZt(record, arena.Get()); }, stringCodec);
    EXPECT_EQ(arena.Used(), Bytes("A5 00*3 00*8"));
}

TEST(LicenseKeyInfo, RefusesANullArenaAlsoWhereEveryOptionalMemberIsAbsent)
{
    LicenseKeyInfo tooLong;
    tooLong.field8 = std::string(129, 'x');
    ExpectInvalidArgument([] { CastToZt(LicenseKeyInfo{}, nullptr); }, optionalCodec, 17);
    ExpectInvalidArgument([] { CastToZt(key, nullptr); }, optionalCodec, 17);
    ExpectInvalidArgument([&] { CastToZt(tooLong, nullptr); }, optionalCodec, 17);
    ExpectInvalidArgument([] { CastFromZt(WireKey{}, nullptr); }, optionalCodec, 39);
}

// --- LicenseKeyInfo: reading ---

TEST(LicenseKeyInfo, RefusesBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<LicenseKeyInfo>(keyMessage);
}

TEST(LicenseKeyInfo, ReadsTheFirstOfSeveralElements)
{
    ExpectReads(key, keyMessage.With("field4", "08 07 06 05 04 03 02 01 11*8"));
    ExpectReads(key, keyMessage.With("field5", "FE FF*7 22*8 33*8"));
    ExpectReads(key, keyMessage.With("field8", "[text] FF*8"));
}

TEST(LicenseKeyInfo, ReadsNoPartOfAnElement)
{
    TestArena arena(64);
    for (const auto field : {&WireKey::field4, &WireKey::field5, &WireKey::field8})
        for (const std::uint32_t size : {1u, 4u, 7u, 9u, 12u}) {
            SCOPED_TRACE(size);
            WireKey wire{};
            wire.*field = {3, size};
            ExpectOutside([&] { CastFromZt(wire, arena.Get()); }, optionalCodec, 3);
        }
}

TEST(LicenseKeyInfo, FindsNothingNotEvenAnAbsentValueInAnArenaWithoutBuffer)
{
    const zt_arena nowhere{nullptr, nullptr, nullptr};
    ExpectOutside([&] { CastFromZt(WireKey{}, &nowhere); }, optionalCodec, 0);
}

TEST(LicenseKeyInfo, IsReadWithAStringLongerThanMayBeWritten)
{
    LicenseKeyInfo record = key;
    record.field8 = std::string(129, 'x');
    ExpectReads(record, keyMessage.With("text", "'x'*129"));
}

TEST(LicenseKeyInfo, IsUnequalWhereOneMemberDiffers)
{
    using Record = LicenseKeyInfo;
    ExpectEveryMemberIsCompared(
        key, [](Record& record) { ++record.field1; }, [](Record& record) { ++record.field2; },
        [](Record& record) { ++record.field3; }, [](Record& record) { record.field4.reset(); },
        [](Record& record) { ++record.field4.value().count; }, [](Record& record) { record.field5.reset(); },
        [](Record& record) { ++record.field5.value().count; }, [](Record& record) { ++record.field6; },
        [](Record& record) { ++record.field7; }, [](Record& record) { record.field8.reset(); },
        [](Record& record) { record.field8 = ""; });
}

TEST(LicenseKeyInfo, DeclaresItsMembersInTheOrderOfTheWire)
{
    const LicenseKeyInfo r;
    const auto& [field1, field2, field3, field4, field5, field6, field7, field8] = r;

    EXPECT_EQ(AddressesOf(field1, field2, field3, field4, field5, field6, field7, field8),
              AddressesOf(r.field1, r.field2, r.field3, r.field4, r.field5, r.field6, r.field7, r.field8));
}

// --- LicenseInfo ---

TEST(LicenseInfo, IsWrittenKeyByKeyWithEachElementBeforeWhatItRefersTo)
{
    TestArena arena(150);

    const WireInfo wire = CastToZt(info, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("00 00 00 00 2C 00 00 00  4C 00 00 00 2C 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("04 03 02 01 14 13 12 11 24 23 22 21  30 00 00 00 08 00 00 00"
                                      "38 00 00 00 08 00 00 00  34 33 32 31 44 43 42 41  40 00 00 00 08 00 00 00"
                                      "00*4"
                                      " 08 07 06 05 04 03 02 01  FE FF FF FF FF FF FF FF"
                                      "48 00 00 00 03 00 00 00 'key' 00"
                                      // 76
                                      "A4 A3 A2 A1 B4 B3 B2 B1 C4 C3 C2 C1  78 00 00 00 08 00 00 00"
                                      "80 00 00 00 08 00 00 00  D4 D3 D2 D1 E4 E3 E2 E1  88 00 00 00 08 00 00 00"
                                      "FD FF FF FF FF FF FF FF  04 00 00 00 00 00 00 00"
                                      "90 00 00 00 02 00 00 00 'k2' A5*4"));
    EXPECT_EQ(arena.Top(), 146u);
}

TEST(LicenseInfo, IsWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(info, InfoMessage());
    ExpectReads(info, InfoMessage());
}

TEST(LicenseInfo, MayHoldEitherKeyAlone)
{
    ExpectWrites(LicenseInfo{info.keyInfo1, {}}, layout::Message("[key1] 00*8", firstKeyParts));
    ExpectReads(LicenseInfo{info.keyInfo1, {}}, layout::Message("[key1] 00*8", firstKeyParts));
    ExpectWrites(LicenseInfo{{}, info.keyInfo2}, layout::Message("00*8 [key2]", secondKeyParts));
    ExpectReads(LicenseInfo{{}, info.keyInfo2}, layout::Message("00*8 [key2]", secondKeyParts));
}

TEST(LicenseInfo, WithoutKeysIsSixteenZeroBytesAndReservesNothing)
{
    TestArena arena(8, 0, 3);

    const WireInfo wire = CastToZt(LicenseInfo{}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("00*16"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_EQ(arena.Top(), 3u);
    EXPECT_TRUE(CastFromZt(wire, arena.Get()) == LicenseInfo{});
}

TEST(LicenseInfo, RefusesANullArenaAlsoWithoutKeys)
{
    ExpectInvalidArgument([] { CastToZt(LicenseInfo{}, nullptr); }, optionalCodec, 17);
    ExpectInvalidArgument([] { CastToZt(info, nullptr); }, optionalCodec, 17);
    ExpectInvalidArgument([] { CastFromZt(WireInfo{}, nullptr); }, optionalCodec, 39);
}

TEST(LicenseInfo, RunsOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(info, InfoMessage());
}

TEST(LicenseInfo, StopsAtTheStringOfTheSecondKeyWhenTheFirstIsComplete)
{
    LicenseInfo record = info;
    record.keyInfo2->field8 = std::string(129, 'x');
    ExpectTooLarge(record, InfoMessage().With("key2.text", "'x'*129"), "key2.text");
}

TEST(LicenseInfo, RefusesBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<LicenseInfo>(InfoMessage());
}

TEST(LicenseInfo, ReadsTheFirstOfSeveralKeys)
{
    ExpectReads(info, InfoMessage().With("key1", firstKeyParts.front().content + " FF*44"));
    ExpectReads(info, InfoMessage().With("key2", secondKeyParts.front().content + " FF*88"));
}

// The reader that other conversions share with this one.
TEST(LicenseInfo, SharesTheReaderOfAnOptionalKey)
{
    const layout::Image image(InfoMessage(), {});
    TestArena arena(image.Top());
    arena.Put(0, image.Contents(arena.Capacity()));
    LicenseKeyInfo (*const read)(const WireKey&, const zt_arena*) = &CastFromZt;
    const zt_ptr_t second = image.PointerTo("key2");

    EXPECT_TRUE((vyn_connector::common::ZtToOptional<WireKey, LicenseKeyInfo>(&second, arena.Get(), read)) ==
                info.keyInfo2);
}

TEST(LicenseInfo, IsUnequalWhereOneMemberDiffers)
{
    ExpectEveryMemberIsCompared(
        info, [](LicenseInfo& record) { record.keyInfo1.reset(); },
        [](LicenseInfo& record) { record.keyInfo2.reset(); },
        [](LicenseInfo& record) { ++record.keyInfo1.value().field7; },
        [](LicenseInfo& record) { ++record.keyInfo2.value().field1; });

    const LicenseInfo record;
    const auto& [keyInfo1, keyInfo2] = record;
    EXPECT_EQ(AddressesOf(keyInfo1, keyInfo2), AddressesOf(record.keyInfo1, record.keyInfo2));
}

} // namespace
