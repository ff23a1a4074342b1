// Client certificates: the parameter record, the entries of the list with their optional text, and the list.
#include <common/client_certs.h>

#include "record_test.h"

namespace {

using vyn_connector::ClientCertInfo;
using vyn_connector::ClientCertParams;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;

using ParamsWire = tq_vyn_connector_VynTypes_ClientCertParams;
using InfoWire = tq_vyn_connector_VynTypes_ClientCertInfo;
using ListWire = tq_vyn_connector_VynTypes_ClientCertsInfo;
using Infos = std::vector<ClientCertInfo>;

// --- What never changes ---

PIN_WIRE(ParamsWire, 24, 4);
PIN_WIRE_FIELD(ParamsWire, 0, zt_ptr_t, field1);
PIN_WIRE_FIELD(ParamsWire, 8, zt_ptr_t, field2);
PIN_WIRE_FIELD(ParamsWire, 16, std::uint8_t, field3);
PIN_WIRE_FIELD(ParamsWire, 20, std::uint32_t, field4);

PIN_WIRE(InfoWire, 28, 4);
PIN_WIRE_FIELD(InfoWire, 0, std::uint32_t, field1);
PIN_WIRE_FIELD(InfoWire, 4, zt_ptr_t, field2);
PIN_WIRE_FIELD(InfoWire, 12, zt_ptr_t, field3);
PIN_WIRE_FIELD(InfoWire, 20, zt_ptr_t, field4);

PIN_WIRE(ListWire, 8, 4);
PIN_WIRE_FIELD(ListWire, 0, zt_ptr_t, certs);

// --- ClientCertParams ---

ClientCertParams SampleParams()
{
    ClientCertParams params;
    params.field1 = "certificate";
    params.field2 = "key";
    params.field3 = true;
    params.field4 = 0x12345678;
    return params;
}

const layout::Message paramsMessage("[field1] [field2] 01 00*3 78 56 34 12",
                                    {{"field1", layout::Text, "'certificate'"}, {"field2", layout::Text, "'key'"}});

TEST(ClientCertParams, LieOnTheWireByteByByte)
{
    TestArena arena(16, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(SampleParams(), arena.Get())), Bytes("01 00 00 00 0B 00 00 00 |" // field1
                                                                    "0C 00 00 00 03 00 00 00 |" // field2
                                                                    "01 |"                      // field3
                                                                    "00 00 00 |"                // padding
                                                                    "78 56 34 12"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'certificatekey' A5"));
    EXPECT_EQ(arena.Top(), 15u);
}

TEST(ClientCertParams, TravelBothWays)
{
    ExpectWrites(SampleParams(), paramsMessage);
    ExpectReads(SampleParams(), paramsMessage);
    ExpectNeedsAllItsSpace(SampleParams(), paramsMessage);
    ExpectRefusesBadPointers<ClientCertParams>(paramsMessage);
}

TEST(ClientCertParams, TravelEmpty)
{
    const layout::Message message("[field1] [field2] 00*8",
                                  {{"field1", layout::Text, ""}, {"field2", layout::Text, ""}});
    ExpectWrites(ClientCertParams{}, message);
    ExpectReads(ClientCertParams{}, message);
}

TEST(ClientCertParams, TakeTextsOf16384Bytes)
{
    ClientCertParams params;
    params.field1 = std::string(16384, 'x');
    params.field2 = std::string(16384, 'y');
    TestArena arena(32772, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(params, arena.Get())), Bytes("01 00 00 00 00 40 00 00 |" // field1
                                                            "01 40 00 00 00 40 00 00 |" // field2
                                                            "00*8"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'x'*16384 'y'*16384 A5*3"));
    EXPECT_EQ(arena.Top(), 32769u);
}

TEST(ClientCertParams, RefuseTextsOf16385Bytes)
{
    ClientCertParams params = SampleParams();
    TestArena arena(32772, 0, 1);
    params.field2 = std::string(16385, 'x');
    ExpectOverLimit([&] { CastToZt(params, arena.Get()); }, stringCodec);
    EXPECT_EQ(arena.Contents(), Bytes("A5 'certificate' A5*32760"));
    EXPECT_EQ(arena.Top(), 12u);

    params.field1 = std::string(16385, 'x');
    ExpectOverLimit([&] { CastToZt(params, arena.Get()); }, stringCodec);
    EXPECT_EQ(arena.Contents(), Bytes("A5 'certificate' A5*32760"));
    EXPECT_EQ(arena.Top(), 12u);
}

TEST(ClientCertParams, ReadTextsOfAnyLength)
{
    TestArena arena(32772);
    arena.Put(1, "'x'*16385 'y'*16386");
    const ParamsWire wire{{1, 16385}, {16386, 16386}, 0, 0};

    const ClientCertParams params = CastFromZt(wire, arena.Get());

    EXPECT_EQ(params.field1, std::string(16385, 'x'));
    EXPECT_EQ(params.field2, std::string(16386, 'y'));
}

TEST(ClientCertParams, ReadAnyByteButZeroAsTrue)
{
    TestArena arena(8);
    for (const unsigned byte : {0u, 1u, 2u, 255u}) {
        ParamsWire wire{};
        wire.field3 = static_cast<std::uint8_t>(byte);
        EXPECT_EQ(CastFromZt(wire, arena.Get()).field3, byte != 0) << byte;
    }
}

TEST(ClientCertParams, WriteTheByteOfABoolAsItStands)
{
    TestArena arena(8);
    ClientCertParams params;
    std::memset(&params.field3, 0x02, 1);

    EXPECT_EQ(CastToZt(params, arena.Get()).field3, 0x02);
}

TEST(ClientCertParams, IgnoreThePaddingTheyRead)
{
    ExpectReads(SampleParams(), layout::Message("[field1] [field2] 01 C3*3 78 56 34 12", paramsMessage.parts));
}

TEST(ClientCertParams, NeedAnArena)
{
    ExpectInvalidArgument([] { CastToZt(ClientCertParams{}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(ParamsWire{}, nullptr); }, stringCodec, 39);
}

TEST(ClientCertParams, AreEqualWhereAllMembersAre)
{
    ExpectEveryMemberIsCompared(
        SampleParams(), [](ClientCertParams& params) { params.field1 += "!"; },
        [](ClientCertParams& params) { params.field2 += "!"; }, [](ClientCertParams& params) { params.field3 = false; },
        [](ClientCertParams& params) { params.field4 ^= 1; });
}

// --- ClientCertInfo ---

ClientCertInfo SampleInfo()
{
    ClientCertInfo info;
    info.field1 = 0x01020304;
    info.field2 = "second";
    info.field3 = "3rd";
    info.field4 = "four";
    return info;
}

// The optional text stands behind its slot, and the slot behind the gap that aligns it.
const layout::Message infoMessage("04 03 02 01 [field2] [field3] [field4]",
                                  {{"field2", layout::Text, "'second'"},
                                   {"field3", layout::Text, "'3rd'"},
                                   {"field4", layout::Optional(8, 4), "[text]"},
                                   {"text", layout::Text, "'four'"}});

TEST(ClientCertInfo, LiesOnTheWireByteByByte)
{
    TestArena arena(27, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(SampleInfo(), arena.Get())), Bytes("04 03 02 01 |"             // field1
                                                                  "01 00 00 00 06 00 00 00 |" // field2
                                                                  "07 00 00 00 03 00 00 00 |" // field3
                                                                  "0C 00 00 00 08 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'second' '3rd' 00*2 14 00 00 00 04 00 00 00 'four' A5*3"));
    EXPECT_EQ(arena.Top(), 24u);
}

TEST(ClientCertInfo, TravelsBothWays)
{
    ExpectWrites(SampleInfo(), infoMessage);
    ExpectReads(SampleInfo(), infoMessage);
    ExpectNeedsAllItsSpace(SampleInfo(), infoMessage);
    ExpectRefusesBadPointers<ClientCertInfo>(infoMessage);
}

TEST(ClientCertInfo, TakesNoSlotForAnAbsentText)
{
    const layout::Message message("04 03 02 01 [field2] [field3] 00*8",
                                  {{"field2", layout::Text, "'second'"}, {"field3", layout::Text, "'3rd'"}});
    ClientCertInfo info = SampleInfo();
    info.field4.reset();
    ExpectWrites(info, message);
    ExpectReads(info, message);
    ExpectNeedsAllItsSpace(info, message);
}

TEST(ClientCertInfo, TellsAnEmptyTextFromAnAbsentOne)
{
    ClientCertInfo info = SampleInfo();
    info.field4 = "";
    ExpectWrites(info, infoMessage.With("text", ""));
    ExpectReads(info, infoMessage.With("text", ""));
    ExpectNeedsAllItsSpace(info, infoMessage.With("text", ""));
}

TEST(ClientCertInfo, ReadsTheFirstTextOfSeveral)
{
    layout::Message message = infoMessage.With("field4", "[text] [other]");
    message.parts.push_back({"other", layout::Text, "'not this'"});
    ExpectReads(SampleInfo(), message);
}

TEST(ClientCertInfo, RefusesASlotOfHalfAPointer)
{
    TestArena arena(32);
    const InfoWire wire{0, {0, 0}, {0, 0}, {4, 4}};
    ExpectOutside([&] { CastFromZt(wire, arena.Get()); }, optionalCodec, 4);
}

TEST(ClientCertInfo, KeepsItsLastMemberToItself)
{
    ClientCertInfo info = SampleInfo();
    info.field5 = 9;
    ExpectWrites(info, infoMessage);
    info.field5 = 0;
    ExpectReads(info, infoMessage);
}

TEST(ClientCertInfo, TakesTextsOf16384BytesAndAnOptionalOneOf128)
{
    ClientCertInfo info;
    info.field2 = std::string(16384, 'x');
    info.field3 = std::string(16384, 'y');
    info.field4 = std::string(128, 'z');
    TestArena arena(32912, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(info, arena.Get())), Bytes("00 00 00 00 |"             // field1
                                                          "01 00 00 00 00 40 00 00 |" // field2
                                                          "01 40 00 00 00 40 00 00 |" // field3
                                                          "04 80 00 00 08 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 'x'*16384 'y'*16384 00*3 0C 80 00 00 80 00 00 00 'z'*128 A5*4"));
    EXPECT_EQ(arena.Top(), 32908u);
}

TEST(ClientCertInfo, RefusesAnOptionalTextOf129Bytes)
{
    ClientCertInfo info = SampleInfo();
    info.field4 = std::string(129, 'x');
    ExpectTooLarge(info, infoMessage.With("text", "'x'*129"), "text");
}

TEST(ClientCertInfo, RefusesTextsOf16385BytesTheFirstOneFirst)
{
    ClientCertInfo info = SampleInfo();
    info.field3 = std::string(16385, 'x');
    info.field4 = std::string(129, 'x');
    TestArena arena(32912, 0, 1);
    ExpectOverLimit([&] { CastToZt(info, arena.Get()); }, stringCodec);
    EXPECT_EQ(arena.Contents(), Bytes("A5 'second' A5*32905"));
    EXPECT_EQ(arena.Top(), 7u);

    info.field2 = std::string(16385, 'x');
    ExpectOverLimit([&] { CastToZt(info, arena.Get()); }, stringCodec);
    EXPECT_EQ(arena.Contents(), Bytes("A5 'second' A5*32905"));
    EXPECT_EQ(arena.Top(), 7u);
}

TEST(ClientCertInfo, ReadsTextsOfAnyLength)
{
    TestArena arena(33000);
    arena.Put(0, "09 00 00 00 81 00 00 00 A5 'z'*129 'x'*16385 'y'*16386");
    const InfoWire wire{0, {138, 16385}, {16523, 16386}, {0, 8}};

    const ClientCertInfo info = CastFromZt(wire, arena.Get());

    EXPECT_EQ(info.field2, std::string(16385, 'x'));
    EXPECT_EQ(info.field3, std::string(16386, 'y'));
    EXPECT_EQ(info.field4, std::string(129, 'z'));
}

TEST(ClientCertInfo, NeedsAnArena)
{
    ExpectInvalidArgument([] { CastToZt(SampleInfo(), nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(InfoWire{}, nullptr); }, stringCodec, 39);
}

TEST(ClientCertInfo, IsEqualWhereAllMembersAre)
{
    ExpectEveryMemberIsCompared(
        SampleInfo(), [](ClientCertInfo& info) { info.field1 ^= 1; }, [](ClientCertInfo& info) { info.field2 += "!"; },
        [](ClientCertInfo& info) { info.field3 += "!"; }, [](ClientCertInfo& info) { *info.field4 += "!"; },
        [](ClientCertInfo& info) { info.field4.reset(); }, [](ClientCertInfo& info) { info.field5 = 1; });
}

// --- The list ---

Infos SampleInfos()
{
    ClientCertInfo second;
    second.field1 = 2;
    second.field2 = "q";
    return {SampleInfo(), second, SampleInfo()};
}

const layout::Message listMessage("[certs]", {{"certs", layout::List(28, 4),
                                               "04 03 02 01 [a2] [a3] [a4] |"
                                               "02 00 00 00 [b2] [b3] 00*8 |"
                                               "04 03 02 01 [c2] [c3] [c4]"},
                                              {"a2", layout::Text, "'second'"},
                                              {"a3", layout::Text, "'3rd'"},
                                              {"a4", layout::Optional(8, 4), "[aText]"},
                                              {"aText", layout::Text, "'four'"},
                                              {"b2", layout::Text, "'q'"},
                                              {"b3", layout::Text, ""},
                                              {"c2", layout::Text, "'second'"},
                                              {"c3", layout::Text, "'3rd'"},
                                              {"c4", layout::Optional(8, 4), "[cText]"},
                                              {"cText", layout::Text, "'four'"}});

// Entries with a text of their own, "0" to "9" and on.
Infos CountedInfos(std::size_t count)
{
    Infos infos;
    for (std::size_t i = 0; i < count; ++i) {
        infos.emplace_back().field1 = static_cast<std::uint32_t>(i);
        infos.back().field3 = std::string(1, static_cast<char>('0' + i));
    }
    return infos;
}

layout::Message CountedMessage(std::size_t count)
{
    const char* const digits = "0123456789ABCDEF";
    layout::Message message("[certs]", {{"certs", layout::List(28, 4), ""}});
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        message.parts[0].content +=
            std::string("0") + digits[i] + " 00*3 [second" + number + "] [third" + number + "] 00*8 ";
        message.parts.push_back({"second" + number, layout::Text, ""});
        message.parts.push_back({"third" + number, layout::Text, std::string("'") + static_cast<char>('0' + i) + "'"});
    }
    return message;
}

TEST(ClientCertList, LiesOnTheWireByteByByte)
{
    TestArena arena(88, 0, 3);
    Infos infos = {SampleInfo(), ClientCertInfo{}};
    infos[1].field3 = "z";

    EXPECT_EQ(BytesOf(CastToZt(infos, arena.Get())), Bytes("04 00 00 00 38 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 00 |"
                                      "04 03 02 01 |"             // the first entry
                                      "3C 00 00 00 06 00 00 00 |" //
                                      "42 00 00 00 03 00 00 00 |" //
                                      "48 00 00 00 08 00 00 00 |" //
                                      "00 00 00 00 |"             // the second
                                      "54 00 00 00 00 00 00 00 |" //
                                      "54 00 00 00 01 00 00 00 |" //
                                      "00 00 00 00 00 00 00 00 |" //
                                      "'second' '3rd' 00*3 50 00 00 00 04 00 00 00 'four' |"
                                      "'z' A5*3"));
    EXPECT_EQ(arena.Top(), 85u);
}

TEST(ClientCertList, TravelsBothWays)
{
    ExpectWrites(SampleInfos(), listMessage);
    ExpectReads(SampleInfos(), listMessage);
    ExpectNeedsAllItsSpace(SampleInfos(), listMessage);
    ExpectRefusesBadPointers<Infos>(listMessage);
}

TEST(ClientCertList, TravelsEmpty)
{
    const layout::Message message("[certs]", {{"certs", layout::List(28, 4), ""}});
    ExpectWrites(Infos{}, message);
    ExpectReads(Infos{}, message);
}

TEST(ClientCertList, RunsOutOfSpaceWhereTheAlignmentOfAnEmptyListPassesTheEnd)
{
    TestArena arena(7, 0, 5);
    ExpectOutOfSpace([&] { CastToZt(Infos{}, arena.Get()); });
    EXPECT_EQ(arena.Contents(), Bytes("A5*7"));
    EXPECT_EQ(arena.Top(), 5u);
}

TEST(ClientCertList, TakesTenEntries)
{
    ExpectWrites(CountedInfos(10), CountedMessage(10));
    ExpectReads(CountedInfos(10), CountedMessage(10));
    ExpectTooLarge(CountedInfos(11), CountedMessage(11), "certs");
}

TEST(ClientCertList, ReadsAnyNumberOfEntries)
{
    ExpectReads(CountedInfos(11), CountedMessage(11));
    ExpectReads(CountedInfos(15), CountedMessage(15));
}

TEST(ClientCertList, PassesOnWhatAnEntryRaises)
{
    Infos infos = SampleInfos();
    infos[2].field4 = std::string(129, 'x');
    ExpectTooLarge(infos, listMessage.With("cText", "'x'*129"), "cText");
}

TEST(ClientCertList, KeepsTheLastMemberOfAnEntryToItself)
{
    Infos infos = SampleInfos();
    infos[0].field5 = 9;
    ExpectWrites(infos, listMessage);
}

TEST(ClientCertList, NeedsAnArena)
{
    ExpectInvalidArgument([] { CastToZt(Infos{}, nullptr); }, vectorCodec, 18);
    ExpectInvalidArgument([] { CastToZt(Infos(11), nullptr); }, vectorCodec, 18);
    ExpectInvalidArgument([] { CastFromZt(ListWire{}, nullptr); }, vectorCodec, 39);
}

TEST(ClientCerts, AreEmptyAndZeroByDefault)
{
    const ClientCertParams params;
    EXPECT_FALSE(params.field3);
    EXPECT_EQ(params.field4, 0u);
    const ClientCertInfo info;
    EXPECT_EQ(info.field1 | info.field5, 0u);
    EXPECT_FALSE(info.field4.has_value());
}

} // namespace
