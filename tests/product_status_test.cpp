// What a product reports about itself: update configuration and HSDP status.
#include <common/product_status.h>

#include "arena.h"
#include "errors.h"
#include "record_test.h"

namespace {

using vyn_connector::ProductHsdpInfo;
using vyn_connector::ProductHsdpStatus;
using vyn_connector::ProductUpdCfg;
using vyn_connector::ProductUpdCfgArray;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using WireCfg = tq_vyn_connector_VynTypes_ProductUpdCfg;
using WireCfgArray = tq_vyn_connector_VynTypes_ProductUpdCfgArray;
using WireStatus = tq_vyn_connector_VynTypes_ProductHsdpStatus;
using WireInfo = tq_vyn_connector_VynTypes_ProductHsdpInfo;

PIN_WIRE(WireCfg, 16, 4);
PIN_WIRE_FIELD(WireCfg, 0, zt_ptr_t, field1);
PIN_WIRE_FIELD(WireCfg, 8, zt_ptr_t, field2);
PIN_MEMBER(ProductUpdCfg, std::string, field1);
PIN_MEMBER(ProductUpdCfg, std::string, field2);

PIN_WIRE(WireCfgArray, 8, 4);
PIN_WIRE_FIELD(WireCfgArray, 0, zt_ptr_t, items);
PIN_MEMBER(ProductUpdCfgArray, std::vector<ProductUpdCfg>, items);

PIN_WIRE(WireStatus, 16, 4);
PIN_WIRE_FIELD(WireStatus, 0, zt_ptr_t, field1);
PIN_WIRE_FIELD(WireStatus, 8, zt_ptr_t, field2);
PIN_MEMBER(ProductHsdpStatus, std::string, field1);
PIN_MEMBER(ProductHsdpStatus, std::string, field2);

PIN_WIRE(WireInfo, 12, 4);
PIN_WIRE_FIELD(WireInfo, 0, std::uint32_t, field1);
PIN_WIRE_FIELD(WireInfo, 4, zt_ptr_t, statuses);
PIN_MEMBER(ProductHsdpInfo, std::uint32_t, field1);
PIN_MEMBER(ProductHsdpInfo, std::vector<ProductHsdpStatus>, statuses);

static_assert(IsDeclared<WireCfg(const ProductUpdCfg&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<ProductUpdCfg(const WireCfg&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<WireCfgArray(const ProductUpdCfgArray&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<ProductUpdCfgArray(const WireCfgArray&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<WireStatus(const ProductHsdpStatus&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<ProductHsdpStatus(const WireStatus&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<WireInfo(const ProductHsdpInfo&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<ProductHsdpInfo(const WireInfo&, const zt_arena*)>(&CastFromZt));

// Both records of two strings look the same on the wire.
const layout::Message twoTexts("[field1] [field2]",
                               {{"field1", layout::Text, "'first'"}, {"field2", layout::Text, "'2nd'"}});

// A list of `count` elements of two strings each; element 7 holds "first 7" and "second 7".
layout::Message ListMessage(const std::string& wire, const std::string& list, std::size_t count)
{
    layout::Message message(wire, {{list, layout::List(16, 4), ""}});
    for (std::size_t i = 0; i < count; ++i) {
        const std::string number = std::to_string(i);
        message.parts.front().content += "[field1 " + number + "] [field2 " + number + "] ";
        message.parts.push_back({"field1 " + number, layout::Text, "'first " + number + "'"});
        message.parts.push_back({"field2 " + number, layout::Text, "'second " + number + "'"});
    }
    return message;
}
template <typename Element>
std::vector<Element> List(std::size_t count)
{
    std::vector<Element> list;
    for (std::size_t i = 0; i < count; ++i)
        list.push_back({"first " + std::to_string(i), "second " + std::to_string(i)});
    return list;
}

layout::Message CfgsMessage(std::size_t count)
{
    return ListMessage("[items]", "items", count);
}
ProductUpdCfgArray Cfgs(std::size_t count)
{
    return {List<ProductUpdCfg>(count)};
}

layout::Message InfoMessage(std::size_t count)
{
    return ListMessage("04 03 02 01 [statuses]", "statuses", count);
}
ProductHsdpInfo Info(std::size_t count)
{
    return {0x01020304, List<ProductHsdpStatus>(count)};
}

// --- The two records of two strings ---

template <typename Record>
class TwoTexts : public testing::Test {
};
using RecordsOfTwoTexts = testing::Types<ProductUpdCfg, ProductHsdpStatus>;
TYPED_TEST_SUITE(TwoTexts, RecordsOfTwoTexts, );

TYPED_TEST(TwoTexts, AreWrittenOneDirectlyBehindTheOther)
{
    TestArena arena(16, 0, 3);

    const auto wire = CastToZt(TypeParam{"first", "2nd"}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("03 00 00 00 05 00 00 00  08 00 00 00 03 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*3 'first2nd' A5*5"));
    EXPECT_EQ(arena.Top(), 11u);
}

TYPED_TEST(TwoTexts, AreWrittenAndReadWhereverTheArenaLies)
{
    const TypeParam record{"first", "2nd"};

    ExpectWrites(record, twoTexts);
    ExpectReads(record, twoTexts);
    ExpectNeedsAllItsSpace(record, twoTexts);
    ExpectRefusesBadPointers<TypeParam>(twoTexts);
}

TYPED_TEST(TwoTexts, MayBeEmpty)
{
    ExpectWrites(TypeParam{}, twoTexts.With("field1", "").With("field2", ""));
    ExpectReads(TypeParam{}, twoTexts.With("field1", "").With("field2", ""));
}

TYPED_TEST(TwoTexts, AreReadWhenTheyAreLongerThanMayBeWritten)
{
    ExpectReads(TypeParam{std::string(257, 'a'), std::string(1000, 'b')},
                twoTexts.With("field1", "'a'*257").With("field2", "'b'*1000"));
}

TYPED_TEST(TwoTexts, FollowWhatOtherRecordsPutIntoTheArena)
{
    TestArena arena(16);

    CastToZt(TypeParam{"ab", "c"}, arena.Get());
    const auto wire = CastToZt(TypeParam{"de", "f"}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("03 00 00 00 02 00 00 00  05 00 00 00 01 00 00 00"));
    EXPECT_EQ(arena.Used(), Bytes("'abcdef'"));
}

TYPED_TEST(TwoTexts, RefuseANullArenaBeforeAnyLength)
{
    using Wire = layout::WireOf<TypeParam>;
    ExpectInvalidArgument([] { CastToZt(TypeParam{std::string(257, 'x'), ""}, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(Wire{}, nullptr); }, stringCodec, 39);
}

TYPED_TEST(TwoTexts, AreComparedBothAndDeclaredInOrder)
{
    const TypeParam record{"first", "2nd"};
    ExpectEveryMemberIsCompared(
        record, [](TypeParam& changed) { changed.field1 = "First"; }, [](TypeParam& changed) { changed.field2 = ""; });

    const auto& [field1, field2] = record;
    EXPECT_EQ(AddressesOf(field1, field2), AddressesOf(record.field1, record.field2));
}

TEST(ProductUpdCfg, TakesTwoHundredAndFiftySixBytesInBothStrings)
{
    ExpectLimit(twoTexts, "field1", 256, [](std::size_t size) { return ProductUpdCfg{std::string(size, 'x'), "2nd"}; });
    ExpectLimit(twoTexts, "field2", 256, [](std::size_t size) {
        return ProductUpdCfg{"first", std::string(size, 'x')};
    });
}

TEST(ProductHsdpStatus, TakesHalfAsMuchInItsFirstStringAsInItsSecond)
{
    ExpectLimit(twoTexts, "field1", 128, [](std::size_t size) {
        return ProductHsdpStatus{std::string(size, 'x'), "2nd"};
    });
    ExpectLimit(twoTexts, "field2", 256, [](std::size_t size) {
        return ProductHsdpStatus{"first", std::string(size, 'x')};
    });
}

TEST(ProductHsdpStatus, IsReadWithAFirstStringOfTwoHundredBytes)
{
    ExpectReads(ProductHsdpStatus{std::string(200, 'x'), "2nd"}, twoTexts.With("field1", "'x'*200"));
}

// --- ProductUpdCfgArray ---

TEST(ProductUpdCfgArray, IsWrittenBeforeTheStringsOfItsElements)
{
    TestArena arena(48, 0, 2);

    const WireCfgArray wire = CastToZt(ProductUpdCfgArray{{{"a", "bc"}, {"def", ""}}}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("04 00 00 00 20 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 00*2 "
                                      "24 00 00 00 01 00 00 00  25 00 00 00 02 00 00 00"
                                      "27 00 00 00 03 00 00 00  2A 00 00 00 00 00 00 00"
                                      "'abcdef' A5*6"));
    EXPECT_EQ(arena.Top(), 42u);
}

TEST(ProductUpdCfgArray, IsWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(Cfgs(3), CfgsMessage(3));
    ExpectReads(Cfgs(3), CfgsMessage(3));
    ExpectNeedsAllItsSpace(Cfgs(3), CfgsMessage(3));
    ExpectRefusesBadPointers<ProductUpdCfgArray>(CfgsMessage(3));
}

TEST(ProductUpdCfgArray, MayBeEmpty)
{
    ExpectWrites(ProductUpdCfgArray{}, CfgsMessage(0));
    ExpectReads(ProductUpdCfgArray{}, CfgsMessage(0));
}

TEST(ProductUpdCfgArray, TakesThirtyTwoElements)
{
    ExpectWrites(Cfgs(32), CfgsMessage(32));
    ExpectTooLarge(Cfgs(33), CfgsMessage(33), "items");
}

TEST(ProductUpdCfgArray, IsReadWithAnyNumberOfElements)
{
    ExpectReads(Cfgs(33), CfgsMessage(33));
    ExpectReads(Cfgs(50), CfgsMessage(50));
}

TEST(ProductUpdCfgArray, StopsAtAnElementWhoseStringIsTooLong)
{
    ProductUpdCfgArray record = Cfgs(3);
    record.items[1].field2.assign(257, 'x');
    ExpectTooLarge(record, CfgsMessage(3).With("field2 1", "'x'*257"), "field2 1");
}

TEST(ProductUpdCfgArray, RefusesANullArenaBeforeAnyCount)
{
    ExpectInvalidArgument([] { CastToZt(Cfgs(33), nullptr); }, vectorCodec, 18);
    ExpectInvalidArgument([] { CastFromZt(WireCfgArray{}, nullptr); }, vectorCodec, 39);
}

TEST(ProductUpdCfgArray, IsUnequalWhereAnElementDiffers)
{
    using Record = ProductUpdCfgArray;
    ExpectEveryMemberIsCompared(
        Cfgs(2), [](Record& record) { record.items.pop_back(); },
        [](Record& record) { record.items[1].field2 = "other"; });

    const Record record;
    const auto& [items] = record;
    EXPECT_EQ(AddressesOf(items), AddressesOf(record.items));
}

// --- ProductHsdpInfo ---

TEST(ProductHsdpInfo, IsWrittenWithThePointerDirectlyBehindTheNumber)
{
    TestArena arena(32, 0, 1);

    const WireInfo wire = CastToZt(ProductHsdpInfo{0xFEDCBA98, {{"up", "now"}}}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("98 BA DC FE  04 00 00 00 10 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 14 00 00 00 02 00 00 00  16 00 00 00 03 00 00 00 'upnow' A5*7"));
    EXPECT_EQ(arena.Top(), 25u);
}

TEST(ProductHsdpInfo, IsWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(Info(4), InfoMessage(4));
    ExpectReads(Info(4), InfoMessage(4));
    ExpectNeedsAllItsSpace(Info(4), InfoMessage(4));
    ExpectRefusesBadPointers<ProductHsdpInfo>(InfoMessage(4));
}

TEST(ProductHsdpInfo, MayHaveNoStatus)
{
    ExpectWrites(Info(0), InfoMessage(0));
    ExpectReads(Info(0), InfoMessage(0));
}

TEST(ProductHsdpInfo, KeepsEveryBitOfItsNumber)
{
    for (const std::uint32_t number : {0x00000000u, 0x00000001u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        TestArena arena(8);
        const WireInfo wire = CastToZt(ProductHsdpInfo{number, {}}, arena.Get());
        EXPECT_EQ(wire.field1, number);
        EXPECT_EQ(CastFromZt(wire, arena.Get()).field1, number);
    }
}

TEST(ProductHsdpInfo, TakesFiveStatuses)
{
    ExpectWrites(Info(5), InfoMessage(5));
    ExpectTooLarge(Info(6), InfoMessage(6), "statuses");
}

TEST(ProductHsdpInfo, IsReadWithFortyStatuses)
{
    ExpectReads(Info(6), InfoMessage(6));
    ExpectReads(Info(40), InfoMessage(40));
}

TEST(ProductHsdpInfo, StopsAtAStatusWhoseFirstStringIsTooLong)
{
    ProductHsdpInfo record = Info(3);
    record.statuses[2].field1.assign(129, 'x');
    ExpectTooLarge(record, InfoMessage(3).With("field1 2", "'x'*129"), "field1 2");
}

TEST(ProductHsdpInfo, RefusesANullArenaBeforeAnyCount)
{
    ExpectInvalidArgument([] { CastToZt(Info(6), nullptr); }, vectorCodec, 18);
    ExpectInvalidArgument([] { CastFromZt(WireInfo{}, nullptr); }, vectorCodec, 39);
}

TEST(ProductHsdpInfo, IsUnequalWhereOneMemberDiffers)
{
    using Record = ProductHsdpInfo;
    ExpectEveryMemberIsCompared(
        Info(2), [](Record& record) { ++record.field1; }, [](Record& record) { record.statuses.pop_back(); },
        [](Record& record) { record.statuses[0].field1 = "other"; });

    const Record record;
    const auto& [field1, statuses] = record;
    EXPECT_EQ(AddressesOf(field1, statuses), AddressesOf(record.field1, record.statuses));
}

// --- The list codecs, shared with other conversions ---

TEST(ProductLists, ShareTheirCodecsWithOtherConversions)
{
    using vyn_connector::common::VectorToZt;
    using vyn_connector::common::ZtToVector;
    WireCfg (*const writeCfg)(const ProductUpdCfg&, zt_arena*) = &CastToZt;
    ProductUpdCfg (*const readCfg)(const WireCfg&, const zt_arena*) = &CastFromZt;
    WireStatus (*const writeStatus)(const ProductHsdpStatus&, zt_arena*) = &CastToZt;
    ProductHsdpStatus (*const readStatus)(const WireStatus&, const zt_arena*) = &CastFromZt;
    TestArena arena(256);
    zt_ptr_t cfgs{};
    zt_ptr_t statuses{};

    VectorToZt<32, WireCfg>(Cfgs(3).items, &cfgs, arena.Get(), writeCfg);
    VectorToZt<5, WireStatus>(Info(2).statuses, &statuses, arena.Get(), writeStatus);

    EXPECT_EQ(cfgs, (zt_ptr_t{0, 48}));
    EXPECT_EQ(statuses.size, 32u);
    EXPECT_TRUE((ZtToVector<WireCfg, ProductUpdCfg>(&cfgs, arena.Get(), readCfg)) == Cfgs(3).items);
    EXPECT_TRUE((ZtToVector<WireStatus, ProductHsdpStatus>(&statuses, arena.Get(), readStatus)) == Info(2).statuses);
}

} // namespace
