// What is installed, and where: the product, the device, the report of both with the licence, and the eight bytes of
// dynamic information.
#include <common/app_info.h>

#include "arena.h"
#include "errors.h"
#include "record_test.h"

#include <type_traits>

namespace {

using vyn_connector::AppInfo;
using vyn_connector::DeviceInfo;
using vyn_connector::DynamicAppInfo;
using vyn_connector::LicenseInfo;
using vyn_connector::LicenseKeyInfo;
using vyn_connector::ProductHsdpInfo;
using vyn_connector::ProductInfo;
using vyn_connector::ProductUpdCfgArray;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using Sixteen = std::array<std::byte, 16>;
using WireSixteen = std::uint8_t[16];
using WireProduct = tq_vyn_connector_VynTypes_ProductInfo;
using WireDevice = tq_vyn_connector_VynTypes_DeviceInfo;
using WireApp = tq_vyn_connector_VynTypes_AppInfo;
using WireDynamic = tq_vyn_connector_VynTypes_DynamicAppInfo;

PIN_WIRE(WireProduct, 64, 8);
PIN_WIRE_FIELD(WireProduct, 0, zt_ptr_t, field1);
PIN_WIRE_FIELD(WireProduct, 8, zt_ptr_t, field2);
PIN_WIRE_FIELD(WireProduct, 16, std::uint64_t, field3);
PIN_WIRE_FIELD(WireProduct, 24, zt_ptr_t, field4);
PIN_WIRE_FIELD(WireProduct, 32, zt_ptr_t, field5);
PIN_WIRE_FIELD(WireProduct, 40, tq_vyn_connector_VynTypes_ProductUpdCfgArray, updCfgArray);
PIN_WIRE_FIELD(WireProduct, 48, tq_vyn_connector_VynTypes_ProductHsdpInfo, hsdpInfo);
PIN_WIRE_FIELD(WireProduct, 60, std::uint32_t, field6);
PIN_MEMBER(ProductInfo, std::string, field1);
PIN_MEMBER(ProductInfo, std::string, field2);
PIN_MEMBER(ProductInfo, std::uint64_t, field3);
PIN_MEMBER(ProductInfo, std::string, field4);
PIN_MEMBER(ProductInfo, std::string, field5);
PIN_MEMBER(ProductInfo, ProductUpdCfgArray, updCfgArray);
PIN_MEMBER(ProductInfo, ProductHsdpInfo, hsdpInfo);
PIN_MEMBER(ProductInfo, std::uint32_t, field6);

PIN_WIRE(WireDevice, 120, 8);
PIN_WIRE_FIELD(WireDevice, 0, zt_ptr_t, field1);
PIN_WIRE_FIELD(WireDevice, 8, zt_ptr_t, field2);
PIN_WIRE_FIELD(WireDevice, 16, std::uint32_t, field3);
PIN_WIRE_FIELD(WireDevice, 20, std::uint32_t, field4);
PIN_WIRE_FIELD(WireDevice, 24, std::uint32_t, field5);
PIN_WIRE_FIELD(WireDevice, 28, zt_ptr_t, field6);
PIN_WIRE_FIELD(WireDevice, 36, zt_ptr_t, field7);
PIN_WIRE_FIELD(WireDevice, 48, std::uint64_t, field8);
PIN_WIRE_FIELD(WireDevice, 56, zt_ptr_t, field9);
PIN_WIRE_FIELD(WireDevice, 64, zt_ptr_t, field10);
PIN_WIRE_FIELD(WireDevice, 72, zt_ptr_t, field11);
PIN_WIRE_FIELD(WireDevice, 80, zt_ptr_t, field12);
PIN_WIRE_FIELD(WireDevice, 88, zt_ptr_t, field13);
PIN_WIRE_FIELD(WireDevice, 96, WireSixteen, field14);
PIN_WIRE_FIELD(WireDevice, 112, zt_ptr_t, field15);
PIN_MEMBER(DeviceInfo, std::string, field1);
PIN_MEMBER(DeviceInfo, std::string, field2);
PIN_MEMBER(DeviceInfo, std::uint32_t, field3);
PIN_MEMBER(DeviceInfo, std::uint32_t, field4);
PIN_MEMBER(DeviceInfo, std::uint32_t, field5);
PIN_MEMBER(DeviceInfo, std::string, field6);
PIN_MEMBER(DeviceInfo, std::string, field7);
PIN_MEMBER(DeviceInfo, std::uint64_t, field8);
PIN_MEMBER(DeviceInfo, std::string, field9);
PIN_MEMBER(DeviceInfo, std::string, field10);
PIN_MEMBER(DeviceInfo, std::string, field11);
PIN_MEMBER(DeviceInfo, std::string, field12);
PIN_MEMBER(DeviceInfo, std::string, field13);
PIN_MEMBER(DeviceInfo, Sixteen, field14);
PIN_MEMBER(DeviceInfo, std::string, field15);

PIN_WIRE(WireApp, 200, 8);
PIN_WIRE_FIELD(WireApp, 0, WireProduct, productInfo);
PIN_WIRE_FIELD(WireApp, 64, tq_vyn_connector_VynTypes_LicenseInfo, licenseInfo);
PIN_WIRE_FIELD(WireApp, 80, WireDevice, deviceInfo);
PIN_MEMBER(AppInfo, ProductInfo, productInfo);
PIN_MEMBER(AppInfo, LicenseInfo, licenseInfo);
PIN_MEMBER(AppInfo, DeviceInfo, deviceInfo);

PIN_WIRE(WireDynamic, 8, 8);
PIN_WIRE_FIELD(WireDynamic, 0, std::uint64_t, field1);
PIN_MEMBER(DynamicAppInfo, std::uint64_t, field1);
static_assert(sizeof(DynamicAppInfo) == 8 && std::is_trivially_copyable_v<DynamicAppInfo>);

static_assert(IsDeclared<WireProduct(const ProductInfo&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<ProductInfo(const WireProduct&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<WireDevice(const DeviceInfo&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<DeviceInfo(const WireDevice&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<WireApp(const AppInfo&, zt_arena*)>(&CastToZt));
static_assert(IsDeclared<AppInfo(const WireApp&, const zt_arena*)>(&CastFromZt));
static_assert(IsDeclared<WireDynamic(const DynamicAppInfo&)>(&CastToZt));
static_assert(IsDeclared<DynamicAppInfo(const WireDynamic&)>(&CastFromZt));

ProductInfo Product()
{
    return {"p1",      "p-2", 0x0102030405060708, "p--4", "p5", {{{"c1", "c-2"}}}, {0x61626364, {{"s1", "s-2"}}},
            0x71727374};
}
const char* const productWire =
    "[p1] [p2] 08 07 06 05 04 03 02 01 [p4] [p5] [cfgs] 64 63 62 61 [statuses] 74 73 72 71 ";
const std::vector<layout::Part> productParts{
    {"p1", layout::Text, "'p1'"},
    {"p2", layout::Text, "'p-2'"},
    {"p4", layout::Text, "'p--4'"},
    {"p5", layout::Text, "'p5'"},
    {"cfgs", layout::List(16, 4), "[c1] [c2]"},
    {"c1", layout::Text, "'c1'"},
    {"c2", layout::Text, "'c-2'"},
    {"statuses", layout::List(16, 4), "[s1] [s2]"},
    {"s1", layout::Text, "'s1'"},
    {"s2", layout::Text, "'s-2'"},
};
const layout::Message productMessage(productWire, productParts);

Sixteen SixteenBytes()
{
    const Bytes bytes("00 E1 E2 E3 00 E5 E6 E7 E8 E9 EA EB EC ED EE 00");
    Sixteen sixteen;
    std::memcpy(sixteen.data(), bytes.data(), sixteen.size());
    return sixteen;
}

DeviceInfo Device()
{
    return {"d1", "d-2",  0x03132333, 0x04142434, 0x05152535, "d6",           "d-7", 0x0818283848586878,
            "d9", "d-10", "d11",      "d12",      "d-13",     SixteenBytes(), "d15"};
}
const char* const deviceWire = "[d1] [d2] 33 23 13 03 34 24 14 04 35 25 15 05 [d6] [d7] 00 00 00 00"
                               "78 68 58 48 38 28 18 08 [d9] [d10] [d11] [d12] [d13]"
                               "00 E1 E2 E3 00 E5 E6 E7 E8 E9 EA EB EC ED EE 00 [d15]";
const std::vector<layout::Part> deviceParts{
    {"d1", layout::Text, "'d1'"},   {"d2", layout::Text, "'d-2'"},  {"d6", layout::Text, "'d6'"},
    {"d7", layout::Text, "'d-7'"},  {"d9", layout::Text, "'d9'"},   {"d10", layout::Text, "'d-10'"},
    {"d11", layout::Text, "'d11'"}, {"d12", layout::Text, "'d12'"}, {"d13", layout::Text, "'d-13'"},
    {"d15", layout::Text, "'d15'"},
};
const layout::Message deviceMessage(deviceWire, deviceParts);

AppInfo App()
{
    return {Product(), {{}, LicenseKeyInfo{1, 2, 3, wem::types::Timestamp{4}, {}, 6, 7, "key"}}, Device()};
}
layout::Message AppMessage()
{
    layout::Message message(productWire + std::string("00*8 [key] ") + deviceWire, productParts);
    message.parts.insert(message.parts.end(),
                         {{"key", layout::Optional(44, 4), "01 00*3 02 00*3 03 00*3 [l4] 00*8 06 00*3 07 00*3 [l8]"},
                          {"l4", layout::Optional(8, 8), "04 00*7"},
                          {"l8", layout::Optional(8, 4), "[l]"},
                          {"l", layout::Text, "'key'"}});
    message.parts.insert(message.parts.end(), deviceParts.begin(), deviceParts.end());
    return message;
}

// The limits of a record's own strings, and the parts in which a message holds them.
template <typename Record>
struct TextLimit {
    const char* part;
    std::string Record::*member;
    std::size_t limit;
};
template <typename Record>
void ExpectLimits(const Record& record, const layout::Message& message, std::initializer_list<TextLimit<Record>> limits)
{
    for (const TextLimit<Record>& text : limits)
        ExpectLimit(message, text.part, text.limit, [&](std::size_t size) {
            Record changed = record;
            (changed.*text.member).assign(size, 'x');
            return changed;
        });
}

// --- ProductInfo ---

TEST(ProductInfo, IsWrittenFieldByField)
{
    TestArena arena(60);

    const WireProduct wire = CastToZt(Product(), arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("00 00 00 00 02 00 00 00" // field1
                                   "02 00 00 00 03 00 00 00" // field2
                                   "08 07 06 05 04 03 02 01"
                                   "05 00 00 00 04 00 00 00"             // field4
                                   "09 00 00 00 02 00 00 00"             // field5
                                   "0C 00 00 00 10 00 00 00"             // updCfgArray
                                   "64 63 62 61 24 00 00 00 10 00 00 00" // hsdpInfo
                                   "74 73 72 71"));
    EXPECT_EQ(arena.Contents(), Bytes("'p1p-2p--4p5' 00"
                                      "1C 00 00 00 02 00 00 00  1E 00 00 00 03 00 00 00 'c1c-2' 00 00 00"
                                      "34 00 00 00 02 00 00 00  36 00 00 00 03 00 00 00 's1s-2' A5*3"));
    EXPECT_EQ(arena.Top(), 57u);
}

TEST(ProductInfo, IsWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(Product(), productMessage);
    ExpectReads(Product(), productMessage);
}

TEST(ProductInfo, RunsOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(Product(), productMessage);
}

TEST(ProductInfo, Takes32BytesInTheFirstTwoStringsAnd256InTheOthers)
{
    ExpectLimits(Product(), productMessage,
                 {{"p1", &ProductInfo::field1, 32},
                  {"p2", &ProductInfo::field2, 32},
                  {"p4", &ProductInfo::field4, 256},
                  {"p5", &ProductInfo::field5, 256}});
}

TEST(ProductInfo, StopsAtAListThatIsTooLong)
{
    ProductInfo record = Product();
    record.updCfgArray.items.resize(33);
    ExpectTooLarge(record, productMessage.With("cfgs", "00*528"), "cfgs");

    record = Product();
    record.hsdpInfo.statuses.resize(6);
    ExpectTooLarge(record, productMessage.With("statuses", "00*96"), "statuses");
}

TEST(ProductInfo, RefusesBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<ProductInfo>(productMessage);
}

TEST(ProductInfo, RefusesANullArenaBeforeAnyLength)
{
    ProductInfo record = Product();
    record.field1.assign(33, 'x');
    ExpectInvalidArgument([&] { CastToZt(record, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(WireProduct{}, nullptr); }, stringCodec, 39);
}

TEST(ProductInfo, IsReadWithStringsLongerThanMayBeWritten)
{
    ProductInfo record = Product();
    record.field1.assign(33, 'a');
    record.field5.assign(257, 'b');
    ExpectReads(record, productMessage.With("p1", "'a'*33").With("p5", "'b'*257"));
}

TEST(ProductInfo, IsUnequalWhereOneMemberDiffers)
{
    ExpectEveryMemberIsCompared(
        Product(), [](ProductInfo& record) { record.field1 = ""; }, [](ProductInfo& record) { record.field2 = ""; },
        [](ProductInfo& record) { ++record.field3; }, [](ProductInfo& record) { record.field4 = ""; },
        [](ProductInfo& record) { record.field5 = ""; }, [](ProductInfo& record) { record.updCfgArray.items.clear(); },
        [](ProductInfo& record) { ++record.hsdpInfo.field1; },
        [](ProductInfo& record) { record.hsdpInfo.statuses.clear(); }, [](ProductInfo& record) { ++record.field6; });
}

TEST(ProductInfo, DeclaresItsMembersInTheOrderOfTheWire)
{
    const ProductInfo r;
    const auto& [field1, field2, field3, field4, field5, updCfgArray, hsdpInfo, field6] = r;

    EXPECT_EQ(AddressesOf(field1, field2, field3, field4, field5, updCfgArray, hsdpInfo, field6),
              AddressesOf(r.field1, r.field2, r.field3, r.field4, r.field5, r.updCfgArray, r.hsdpInfo, r.field6));
}

// --- DeviceInfo ---

TEST(DeviceInfo, IsWrittenFieldByFieldWithItsPaddingZero)
{
    TestArena arena(32);

    const WireDevice wire = CastToZt(Device(), arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("00 00 00 00 02 00 00 00" // field1
                                   "02 00 00 00 03 00 00 00" // field2
                                   "33 23 13 03 34 24 14 04 35 25 15 05"
                                   "05 00 00 00 02 00 00 00" // field6
                                   "07 00 00 00 03 00 00 00" // field7
                                   "00 00 00 00"
                                   "78 68 58 48 38 28 18 08" // field8
                                   "0A 00 00 00 02 00 00 00"
                                   "0C 00 00 00 04 00 00 00"
                                   "10 00 00 00 03 00 00 00"
                                   "13 00 00 00 03 00 00 00"
                                   "16 00 00 00 04 00 00 00"
                                   "00 E1 E2 E3 00 E5 E6 E7 E8 E9 EA EB EC ED EE 00" // field14
                                   "1A 00 00 00 03 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("'d1d-2d6d-7d9d-10d11d12d-13d15' A5*3"));
    EXPECT_EQ(arena.Top(), 29u);
}

TEST(DeviceInfo, IsWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(Device(), deviceMessage);
    ExpectReads(Device(), deviceMessage);
}

TEST(DeviceInfo, WithoutStringsHasPointersOfSizeZeroAndZeroPadding)
{
    TestArena arena(8, 0, 5);

    const WireDevice wire = CastToZt(DeviceInfo{}, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("05 00*7 05 00*7 00*12 05 00*7 05 00*7 00*4 00*8"
                                   " 05 00*7 05 00*7 05 00*7 05 00*7 05 00*7 00*16 05 00*7"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_TRUE(CastFromZt(wire, arena.Get()) == DeviceInfo{});
}

TEST(DeviceInfo, RunsOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(Device(), deviceMessage);
}

TEST(DeviceInfo, Takes256BytesInTheFirstAndTheTenthFieldAnd128Elsewhere)
{
    ExpectLimits(Device(), deviceMessage,
                 {{"d1", &DeviceInfo::field1, 256},
                  {"d2", &DeviceInfo::field2, 128},
                  {"d6", &DeviceInfo::field6, 128},
                  {"d7", &DeviceInfo::field7, 128},
                  {"d9", &DeviceInfo::field9, 128},
                  {"d10", &DeviceInfo::field10, 256},
                  {"d11", &DeviceInfo::field11, 128},
                  {"d12", &DeviceInfo::field12, 128},
                  {"d13", &DeviceInfo::field13, 128},
                  {"d15", &DeviceInfo::field15, 128}});
}

TEST(DeviceInfo, RefusesBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<DeviceInfo>(deviceMessage);
}

TEST(DeviceInfo, RefusesANullArenaBeforeAnyLength)
{
    DeviceInfo record;
    record.field1.assign(257, 'x');
    ExpectInvalidArgument([&] { CastToZt(record, nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(WireDevice{}, nullptr); }, stringCodec, 39);
}

TEST(DeviceInfo, IsReadWithAnyBytesInItsPaddingAndStringsLongerThanMayBeWritten)
{
    DeviceInfo record = Device();
    record.field2.assign(129, 'a');
    record.field15.assign(300, 'b');
    layout::Message message = deviceMessage.With("d2", "'a'*129").With("d15", "'b'*300");
    message.wire.replace(message.wire.find("00 00 00 00"), 11, "FF FF FF FF");
    ExpectReads(record, message);
}

TEST(DeviceInfo, CarriesEveryBitOfItsNumbersAndBytes)
{
    DeviceInfo record;
    record.field3 = record.field4 = record.field5 = 0xFFFFFFFF;
    record.field8 = 0xFFFFFFFFFFFFFFFF;
    record.field14.fill(std::byte{0xFF});
    TestArena arena(4);

    const WireDevice wire = CastToZt(record, arena.Get());

    EXPECT_EQ(BytesOf(wire), Bytes("00*16 FF*12 00*20 FF*8 00*40 FF*16 00*8"));
    EXPECT_TRUE(CastFromZt(wire, arena.Get()) == record);
}

TEST(DeviceInfo, IsUnequalWhereOneMemberDiffers)
{
    using Record = DeviceInfo;
    ExpectEveryMemberIsCompared(
        Device(), [](Record& record) { record.field1 = ""; }, [](Record& record) { record.field2 = ""; },
        [](Record& record) { ++record.field3; }, [](Record& record) { ++record.field4; },
        [](Record& record) { ++record.field5; }, [](Record& record) { record.field6 = ""; },
        [](Record& record) { record.field7 = ""; }, [](Record& record) { ++record.field8; },
        [](Record& record) { record.field9 = ""; }, [](Record& record) { record.field10 = ""; },
        [](Record& record) { record.field11 = ""; }, [](Record& record) { record.field12 = ""; },
        [](Record& record) { record.field13 = ""; }, [](Record& record) { record.field14[15] = std::byte{1}; },
        [](Record& record) { record.field14[0] = std::byte{1}; }, [](Record& record) { record.field15 = ""; });
}

TEST(DeviceInfo, DeclaresItsMembersInTheOrderOfTheWire)
{
    const DeviceInfo r;
    const auto& [f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15] = r;

    EXPECT_EQ(AddressesOf(f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15),
              AddressesOf(r.field1, r.field2, r.field3, r.field4, r.field5, r.field6, r.field7, r.field8, r.field9,
                          r.field10, r.field11, r.field12, r.field13, r.field14, r.field15));
}

// --- AppInfo ---

TEST(AppInfo, PutsTheProductsDataBeforeTheLicencesAndThatBeforeTheDevices)
{
    TestArena arena(64);
    AppInfo record;
    record.productInfo.field1 = "prod";
    record.licenseInfo.keyInfo1.emplace().field8 = "";
    record.deviceInfo.field2 = "dev";

    const WireApp wire = CastToZt(record, arena.Get());
    EXPECT_EQ(BytesOf(wire), Bytes("00 00 00 00 04 00 00 00  04 00*7  00*8  04 00*7  04 00*7"
                                   " 04 00*7  00*4 04 00*7  00*4"
                                   // 64: the licence
                                   " 04 00 00 00 2C 00 00 00  00*8"
                                   // 80: the device
                                   " 38 00*7  38 00 00 00 03 00 00 00  00*12  3B 00*7  3B 00*7  00*4  00*8"
                                   " 3B 00*7  3B 00*7  3B 00*7  3B 00*7  3B 00*7  00*16  3B 00*7"));
    EXPECT_EQ(arena.Contents(), Bytes("'prod'"
                                      "00*36 30 00 00 00 08 00 00 00"
                                      "38 00*7"
                                      "'dev' A5*5"));
    EXPECT_EQ(arena.Top(), 59u);
}

TEST(AppInfo, IsWrittenAndReadWhereverTheArenaLies)
{
    ExpectWrites(App(), AppMessage());
    ExpectReads(App(), AppMessage());
}

TEST(AppInfo, WithoutKeysHasTwoLicencePointersOfZero)
{
    AppInfo record = App();
    record.licenseInfo = {};
    layout::Message message(productWire + std::string("00*16 ") + deviceWire, productParts);
    message.parts.insert(message.parts.end(), deviceParts.begin(), deviceParts.end());
    ExpectWrites(record, message);
    ExpectReads(record, message);
}

TEST(AppInfo, RunsOutOfSpaceAtEveryStep)
{
    ExpectNeedsAllItsSpace(App(), AppMessage());
}

TEST(AppInfo, PassesOnWhatItsRecordsRefuse)
{
    AppInfo record = App();
    record.productInfo.field1.assign(33, 'x');
    ExpectTooLarge(record, AppMessage().With("p1", "'x'*33"), "p1");

    record = App();
    record.licenseInfo.keyInfo2->field8 = std::string(129, 'x');
    ExpectTooLarge(record, AppMessage().With("l", "'x'*129"), "l");

    record = App();
    record.deviceInfo.field15.assign(129, 'x');
    ExpectTooLarge(record, AppMessage().With("d15", "'x'*129"), "d15");
}

TEST(AppInfo, RefusesBadPointersInTheOrderOfTheFields)
{
    ExpectRefusesBadPointers<AppInfo>(AppMessage());
}

// Each of these strings has memory of its own, which a leak checker misses where the parts of a record that cannot be
// finished are not destroyed.
TEST(AppInfo, DestroysWhatItHasReadWhereTheRestCannotBe)
{
    layout::Message message = AppMessage();
    for (layout::Part& part : message.parts)
        if (part.kind.codec == stringCodec) part.content = "'" + part.name + "'*20";
    ExpectRefusesBadPointers<AppInfo>(message);
}

TEST(AppInfo, RefusesANullArena)
{
    ExpectInvalidArgument([] { CastToZt(App(), nullptr); }, stringCodec, 21);
    ExpectInvalidArgument([] { CastFromZt(WireApp{}, nullptr); }, stringCodec, 39);
}

TEST(AppInfo, IsUnequalWhereOneMemberDiffers)
{
    ExpectEveryMemberIsCompared(
        App(), [](AppInfo& record) { ++record.productInfo.field6; },
        [](AppInfo& record) { record.licenseInfo.keyInfo2.reset(); },
        [](AppInfo& record) { record.deviceInfo.field15 = ""; });

    const AppInfo record;
    const auto& [productInfo, licenseInfo, deviceInfo] = record;
    EXPECT_EQ(AddressesOf(productInfo, licenseInfo, deviceInfo),
              AddressesOf(record.productInfo, record.licenseInfo, record.deviceInfo));
}

// --- DynamicAppInfo ---

TEST(DynamicAppInfo, IsTheSameBytesInBothForms)
{
    const DynamicAppInfo record{0xF1E2D3C4B5A69788};

    const WireDynamic wire = CastToZt(record);

    EXPECT_EQ(BytesOf(wire), Bytes("88 97 A6 B5 C4 D3 E2 F1"));
    EXPECT_EQ(BytesOf(wire), BytesOf(record));
    EXPECT_EQ(CastFromZt(wire).field1, 0xF1E2D3C4B5A69788u);
}

TEST(DynamicAppInfo, IsUnequalWhereItsMemberDiffers)
{
    ExpectEveryMemberIsCompared(DynamicAppInfo{}, [](DynamicAppInfo& record) { ++record.field1; });
}

} // namespace
