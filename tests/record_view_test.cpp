// A borrowed look at a message: each kind of field with its type and value, what a bad pointer raises at the field that
// is asked for and only there, arrays as ranges, and views of verified messages.
#include "counted_allocations.h"

#include "conversion.h"
#include "errors.h"
#include "received.h"

#include <common/record_view.h>
#include <common/verify.h>
#include <common/vyn_connector_common.h>

#include <iterator>
#include <numeric>

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;

using Names = std::vector<std::string_view>;
using Sixteen = std::array<std::byte, 16>;

template <typename View, auto Member>
using GetOf = decltype(std::declval<const View&>().template Get<Member>());
template <typename Record, auto Member>
using TypeOf = GetOf<RecordView<Record>, Member>;

// What an array of a record's gives.
template <typename Record, auto Member>
using ElementOf = decltype(std::declval<TypeOf<Record, Member>>()[0]);

template <typename Strings>
Names NamesOf(const Strings& strings)
{
    return Names(strings.begin(), strings.end());
}

const void* At(const TestArena& arena, std::size_t offset)
{
    return arena.Start() + offset;
}

// --- What never throws: everything but taking a field or an element ---

using Elements = TypeOf<ProductUpdCfgArray, &ProductUpdCfgArray::items>;
using Iterator = Elements::iterator;

template <typename Array>
constexpr bool isNoexceptToGoOver = noexcept(std::declval<const Array&>().size()) && noexcept(
    std::declval<const Array&>().begin()) && noexcept(std::declval<const Array&>().end());
static_assert(isNoexceptToGoOver<Elements> && isNoexceptToGoOver<BytesView> && isNoexceptToGoOver<VynSubscriptions>);
static_assert(noexcept(std::declval<const Elements&>().empty()) && noexcept(std::declval<const BytesView&>().empty()));
static_assert(std::is_nothrow_constructible_v<BytesView, const std::uint8_t*, std::size_t>);
static_assert(noexcept(std::declval<const BytesView&>().data()) && noexcept(std::declval<const BytesView&>()[0]));
static_assert(std::is_nothrow_constructible_v<RecordView<Credentials>, const WireOf<Credentials>&, const zt_arena*>);

static_assert(std::is_nothrow_default_constructible_v<Iterator>);
static_assert(noexcept(std::declval<Iterator&>() += 1) && noexcept(std::declval<Iterator&>() -= 1));
static_assert(noexcept(++std::declval<Iterator&>()) && noexcept(--std::declval<Iterator&>()));
static_assert(noexcept(std::declval<Iterator&>()++) && noexcept(std::declval<Iterator&>()--));
static_assert(noexcept(Iterator() + 1) && noexcept(1 + Iterator()) && noexcept(Iterator() - 1));
static_assert(noexcept(Iterator() - Iterator()));
static_assert(noexcept(Iterator() == Iterator()) && noexcept(Iterator() != Iterator()));
static_assert(noexcept(Iterator() < Iterator()) && noexcept(Iterator() <= Iterator()));
static_assert(noexcept(Iterator() > Iterator()) && noexcept(Iterator() >= Iterator()));

// --- Fields by value ---

static_assert(std::is_same_v<TypeOf<ProxySettings, &ProxySettings::port>, std::uint16_t>);
static_assert(std::is_same_v<TypeOf<ProductInfo, &ProductInfo::field3>, std::uint64_t>);
static_assert(std::is_same_v<TypeOf<VynEvent, &VynEvent::field8>, std::uint32_t>);
static_assert(std::is_same_v<TypeOf<VynSubscriptionsWithHash, &VynSubscriptionsWithHash::first>, unsigned long>);
static_assert(std::is_same_v<TypeOf<FileInfo, &FileInfo::field2>, bool>);
static_assert(std::is_same_v<TypeOf<VynSubscription, &VynSubscription::first>, VynEventSeverity>);
static_assert(std::is_same_v<TypeOf<VynEvent, &VynEvent::severity>, VynEventSeverity>);
static_assert(std::is_same_v<TypeOf<FileInfo, &FileInfo::timestamp>, wem::types::Timestamp>);
static_assert(std::is_same_v<TypeOf<DeviceInfo, &DeviceInfo::field14>, Sixteen>);
static_assert(std::is_same_v<decltype(std::declval<RecordView<VynUpdateIdentifier>>().Get()), VynUpdateIdentifier>);

TEST(RecordView, ShowsNumbers)
{
    WireOf<ProxySettings> proxy{};
    proxy.port = 0xFEDC;
    EXPECT_EQ(RecordView<ProxySettings>(proxy, nullptr).Get<&ProxySettings::port>(), 0xFEDC);

    const WireOf<VynRequestsTimeouts> timeouts{0x0102030405060708, 0xF1F2F3F4F5F6F7F8};
    const RecordView<VynRequestsTimeouts> view(timeouts, nullptr);
    EXPECT_EQ(view.Get<&VynRequestsTimeouts::field1>(), 0x0102030405060708u);
    EXPECT_EQ(view.Get<&VynRequestsTimeouts::field2>(), 0xF1F2F3F4F5F6F7F8u);

    WireOf<VynEvent> event{};
    event.field8 = 0x81828384;
    event.field9 = 0x9192939495969798;
    EXPECT_EQ(RecordView<VynEvent>(event, nullptr).Get<&VynEvent::field8>(), 0x81828384u);
    EXPECT_EQ(RecordView<VynEvent>(event, nullptr).Get<&VynEvent::field9>(), 0x9192939495969798u);
}

TEST(RecordView, ShowsAnyByteButZeroAsATrueFlag)
{
    for (int byte = 0; byte < 256; ++byte) {
        WireOf<FileInfo> wire{};
        wire.field3 = static_cast<std::uint8_t>(byte);
        const RecordView<FileInfo> view(wire, nullptr);
        EXPECT_EQ(view.Get<&FileInfo::field3>(), byte != 0);
        EXPECT_FALSE(view.Get<&FileInfo::field2>());
    }
}

TEST(RecordView, ShowsEnumerationsAndTakesAnyValue)
{
    for (const std::int32_t value : {0, 2, 3, 4, -1}) {
        const WireOf<VynSubscription> wire{value, {}};
        const RecordView<VynSubscription> view(wire, nullptr);
        EXPECT_EQ(static_cast<std::int32_t>(view.Get<&VynSubscription::first>()), value);

        WireOf<VynEvent> event{};
        event.severity = static_cast<std::uint32_t>(value);
        EXPECT_EQ(static_cast<std::int32_t>(RecordView<VynEvent>(event, nullptr).Get<&VynEvent::severity>()), value);
    }
}

TEST(RecordView, ShowsTimes)
{
    WireOf<FileInfo> wire{};
    wire.timestamp = -0x0102030405060708;
    EXPECT_EQ(RecordView<FileInfo>(wire, nullptr).Get<&FileInfo::timestamp>().count, -0x0102030405060708);
}

TEST(RecordView, ShowsSixteenBytes)
{
    WireOf<DeviceInfo> device{};
    VynUpdateIdentifier expected{};
    for (std::size_t i = 0; i < 16; ++i) {
        device.field14[i] = static_cast<std::uint8_t>(0xE0 + i);
        expected[i] = static_cast<std::byte>(0xE0 + i);
    }
    EXPECT_EQ(RecordView<DeviceInfo>(device, nullptr).Get<&DeviceInfo::field14>(), expected);

    WireOf<VynUpdateIdentifier> identifier{};
    std::memcpy(identifier.bytes, device.field14, 16);
    EXPECT_EQ(RecordView<VynUpdateIdentifier>(identifier, nullptr).Get(), expected);
}

// --- Texts and blobs ---

static_assert(std::is_same_v<TypeOf<Credentials, &Credentials::userName>, std::string_view>);
static_assert(std::is_same_v<TypeOf<Credentials, &Credentials::password>, std::string_view>);
static_assert(std::is_same_v<TypeOf<VynEvent, &VynEvent::field7>, std::string_view>);
static_assert(std::is_same_v<TypeOf<RawVynParam, &RawVynParam::value>, BytesView>);

TEST(RecordView, ShowsTextsWhereTheyStandInTheArena)
{
    TestArena arena(7, 0, 7);
    arena.Put(0, "'userpwd'");
    const WireOf<Credentials> wire{{0, 4}, {4, 3}};
    const RecordView<Credentials> view(wire, arena.Get());

    EXPECT_EQ(view.Get<&Credentials::userName>(), "user");
    EXPECT_EQ(view.Get<&Credentials::password>(), "pwd");
    EXPECT_EQ(view.Get<&Credentials::userName>().data(), At(arena, 0));
    EXPECT_EQ(view.Get<&Credentials::password>().data(), At(arena, 4));
}

TEST(RecordView, ShowsABlobWhereItStandsInTheArena)
{
    TestArena arena(8, 0, 8);
    arena.Put(0, "'name' 01 00 FE FF");
    const WireOf<RawVynParam> wire{{0, 4}, {4, 4}};
    const RecordView<RawVynParam> view(wire, arena.Get());

    const BytesView value = view.Get<&RawVynParam::value>();
    EXPECT_EQ(value.size(), 4u);
    EXPECT_FALSE(value.empty());
    EXPECT_EQ(value.data(), At(arena, 4));
    EXPECT_EQ(value[0], 0x01);
    EXPECT_EQ(value[2], 0xFE);
    EXPECT_EQ(value[3], 0xFF);
    EXPECT_EQ(std::vector<std::uint8_t>(value.begin(), value.end()),
              (std::vector<std::uint8_t>{0x01, 0x00, 0xFE, 0xFF}));
    EXPECT_EQ(view.Get<&RawVynParam::name>(), "name");

    const WireOf<RawVynParam> none{{0, 4}, {8, 0}};
    EXPECT_TRUE(RecordView<RawVynParam>(none, arena.Get()).Get<&RawVynParam::value>().empty());
    EXPECT_EQ(RecordView<RawVynParam>(none, arena.Get()).Get<&RawVynParam::value>().begin(), At(arena, 8));
}

// --- Records and lists ---

static_assert(std::is_same_v<TypeOf<AppInfo, &AppInfo::productInfo>, RecordView<ProductInfo>>);
static_assert(
    std::is_same_v<TypeOf<VynSubscriptionsWithHash, &VynSubscriptionsWithHash::second>, RecordView<VynSubscriptions>>);
static_assert(std::is_same_v<ElementOf<ProductUpdCfgArray, &ProductUpdCfgArray::items>, RecordView<ProductUpdCfg>>);
static_assert(std::is_same_v<decltype(std::declval<RecordView<VynUpdateIdentifiers>>().Get()[0]),
                             RecordView<VynUpdateIdentifier>>);
static_assert(
    std::is_same_v<decltype(std::declval<RecordView<std::vector<RawVynParam>>>().Get()[0]), RecordView<RawVynParam>>);

TEST(RecordView, ShowsRecordsInsideRecords)
{
    const AppInfo app = conversion::Full<AppInfo>();
    const Received<AppInfo> message(app);
    const RecordView<AppInfo> view(message.wire, message.arena.Get());
    const auto product = view.Get<&AppInfo::productInfo>();

    EXPECT_EQ(product.Get<&ProductInfo::field4>(), app.productInfo.field4);
    EXPECT_EQ(product.Get<&ProductInfo::field6>(), app.productInfo.field6);
    EXPECT_EQ(product.Get<&ProductInfo::hsdpInfo>().Get<&ProductHsdpInfo::field1>(), app.productInfo.hsdpInfo.field1);
    EXPECT_EQ(view.Get<&AppInfo::deviceInfo>().Get<&DeviceInfo::field15>(), app.deviceInfo.field15);
    EXPECT_EQ(view.Get<&AppInfo::deviceInfo>().Get<&DeviceInfo::field14>(), app.deviceInfo.field14);
}

TEST(RecordView, ShowsTheElementsOfAList)
{
    TestArena arena(38, 0, 38);
    arena.Put(0, BytesOf(zt_ptr_t{32, 1}) + BytesOf(zt_ptr_t{33, 2}) + BytesOf(zt_ptr_t{35, 3}) +
                     BytesOf(zt_ptr_t{38, 0}) + Bytes("'abcdef'"));
    const WireOf<ProductUpdCfgArray> wire{{0, 32}};
    const auto items = RecordView<ProductUpdCfgArray>(wire, arena.Get()).Get<&ProductUpdCfgArray::items>();

    ASSERT_EQ(items.size(), 2u);
    EXPECT_FALSE(items.empty());
    EXPECT_EQ(items[0].Get<&ProductUpdCfg::field1>(), "a");
    EXPECT_EQ(items[0].Get<&ProductUpdCfg::field2>(), "bc");
    EXPECT_EQ(items[1].Get<&ProductUpdCfg::field1>(), "def");
    EXPECT_EQ(items[1].Get<&ProductUpdCfg::field2>(), "");

    const WireOf<ProductUpdCfgArray> none{{38, 0}};
    const auto empty = RecordView<ProductUpdCfgArray>(none, arena.Get()).Get<&ProductUpdCfgArray::items>();
    EXPECT_TRUE(empty.empty());
    EXPECT_EQ(empty.size(), 0u);
    EXPECT_TRUE(empty.begin() == empty.end());
}

TEST(RecordView, ShowsMoreElementsThanAWriterWrites)
{
    TestArena arena(600, 0, 600);
    const WireOf<ProductHsdpInfo> wire{7, {0, 592}};
    EXPECT_EQ(RecordView<ProductHsdpInfo>(wire, arena.Get()).Get<&ProductHsdpInfo::statuses>().size(), 37u);
}

TEST(RecordView, ShowsUpdateIdentifiers)
{
    TestArena arena(33, 0, 33);
    arena.Put(0, "AA 11*16 22*16");
    const WireOf<VynUpdateIdentifiers> wire{{1, 32}};
    const auto identifiers = RecordView<VynUpdateIdentifiers>(wire, arena.Get()).Get();

    VynUpdateIdentifier first;
    VynUpdateIdentifier second;
    first.fill(std::byte{0x11});
    second.fill(std::byte{0x22});
    ASSERT_EQ(identifiers.size(), 2u);
    EXPECT_EQ(identifiers[0].Get(), first);
    EXPECT_EQ(identifiers[1].Get(), second);
}

// --- Optional values ---

static_assert(std::is_same_v<TypeOf<ClientCertInfo, &ClientCertInfo::field4>, std::optional<std::string_view>>);
static_assert(std::is_same_v<TypeOf<LicenseKeyInfo, &LicenseKeyInfo::field4>, std::optional<wem::types::Timestamp>>);
static_assert(std::is_same_v<TypeOf<LicenseInfo, &LicenseInfo::keyInfo1>, std::optional<RecordView<LicenseKeyInfo>>>);

TEST(RecordView, ShowsTheFirstElementOfAnOptionalText)
{
    TestArena arena(18, 0, 18);
    arena.Put(0, BytesOf(zt_ptr_t{16, 1}) + BytesOf(zt_ptr_t{17, 1}) + Bytes("'xy'"));
    const auto get = [&](zt_ptr_t field4) {
        const WireOf<ClientCertInfo> wire{1, {}, {}, field4};
        return RecordView<ClientCertInfo>(wire, arena.Get()).Get<&ClientCertInfo::field4>();
    };
    EXPECT_EQ(get({0, 8}), "x");
    EXPECT_EQ(get({8, 8}), "y");
    EXPECT_EQ(get({0, 16}), "x");
    EXPECT_EQ(get({0, 0}), std::nullopt);
    EXPECT_EQ(get({18, 0}), std::nullopt);
}

TEST(RecordView, ShowsTheFirstElementOfAnOptionalTime)
{
    TestArena arena(16, 0, 16);
    arena.Put(0, "01 02 00*6 FF*8");
    const auto get = [&](zt_ptr_t field5) {
        WireOf<LicenseKeyInfo> wire{};
        wire.field5 = field5;
        return RecordView<LicenseKeyInfo>(wire, arena.Get()).Get<&LicenseKeyInfo::field5>();
    };
    EXPECT_EQ(get({0, 8})->count, 0x0201);
    EXPECT_EQ(get({8, 8})->count, -1);
    EXPECT_EQ(get({0, 16})->count, 0x0201);
    EXPECT_FALSE(get({0, 0}).has_value());
}

TEST(RecordView, ShowsTheFirstElementOfAnOptionalRecord)
{
    TestArena arena(32, 0, 32);
    arena.Put(0, "01 00*7 02 00*7 03 00*7 04 00*7");
    const auto get = [&](zt_ptr_t timeouts) {
        const WireOf<ServerConnectionParameters> wire{{}, {}, {}, timeouts};
        return RecordView<ServerConnectionParameters>(wire, arena.Get()).Get<&ServerConnectionParameters::timeouts>();
    };
    EXPECT_EQ(get({16, 16})->Get<&VynRequestsTimeouts::field1>(), 3u);
    EXPECT_EQ(get({16, 16})->Get<&VynRequestsTimeouts::field2>(), 4u);
    EXPECT_EQ(get({0, 32})->Get<&VynRequestsTimeouts::field1>(), 1u);
    EXPECT_FALSE(get({32, 0}).has_value());
}

// --- Sets, entries and events ---

static_assert(std::is_same_v<ElementOf<VynSubscription, &VynSubscription::second>, std::string_view>);
static_assert(
    std::is_same_v<decltype(std::declval<RecordView<VynSubscriptions>>().Get()[0]), RecordView<VynSubscription>>);
static_assert(std::is_same_v<ElementOf<VynEvent, &VynEvent::stringArray>, std::string_view>);

TEST(RecordView, ShowsASetInTheOrderOfTheWireWithWhatIsRepeated)
{
    TestArena arena(34, 0, 34);
    arena.Put(0, BytesOf(zt_ptr_t{32, 1}) + BytesOf(zt_ptr_t{33, 1}) + BytesOf(zt_ptr_t{32, 1}) +
                     BytesOf(zt_ptr_t{32, 2}) + Bytes("'ba'"));
    const WireOf<VynSubscription> wire{1, {0, 32}};
    const auto names = RecordView<VynSubscription>(wire, arena.Get()).Get<&VynSubscription::second>();

    EXPECT_EQ(names.size(), 4u);
    EXPECT_EQ(NamesOf(names), (Names{"b", "a", "b", "ba"}));
    EXPECT_EQ(names[2].data(), At(arena, 32));
}

TEST(RecordView, ShowsAllFourEntriesOfSubscriptions)
{
    TestArena arena(9, 0, 9);
    arena.Put(0, BytesOf(zt_ptr_t{8, 1}) + Bytes("'n'"));
    const WireOf<VynSubscriptions> wire{{{3, {0, 8}}, {3, {0, 0}}, {0, {0, 0}}, {0, {0, 0}}}};
    const auto entries = RecordView<VynSubscriptions>(wire, arena.Get()).Get();

    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[0].Get<&VynSubscription::first>(), VynEventSeverity::Severity3);
    EXPECT_EQ(NamesOf(entries[0].Get<&VynSubscription::second>()), Names{"n"});
    EXPECT_EQ(entries[1].Get<&VynSubscription::first>(), VynEventSeverity::Severity3);
    EXPECT_TRUE(entries[1].Get<&VynSubscription::second>().empty());
    EXPECT_EQ(entries[3].Get<&VynSubscription::first>(), VynEventSeverity::Severity0);
    EXPECT_TRUE(entries[3].Get<&VynSubscription::second>().empty());

    const WireOf<VynSubscriptionsWithHash> hashed{0x0102030405060708, wire};
    const RecordView<VynSubscriptionsWithHash> view(hashed, arena.Get());
    EXPECT_EQ(view.Get<&VynSubscriptionsWithHash::first>(), 0x0102030405060708u);
    EXPECT_EQ(view.Get<&VynSubscriptionsWithHash::second>().Get().size(), 4u);
    EXPECT_EQ(NamesOf(view.Get<&VynSubscriptionsWithHash::second>().Get()[0].Get<&VynSubscription::second>()),
              Names{"n"});
}

TEST(RecordView, ShowsAnEventsStringThatLiesOutsideAsEmpty)
{
    TestArena arena(9, 0, 5);
    arena.Put(0, "'abcdefghi'");
    const auto get = [&](zt_ptr_t field1) {
        WireOf<VynEvent> wire{};
        wire.field1 = field1;
        return RecordView<VynEvent>(wire, arena.Get()).Get<&VynEvent::field1>();
    };
    EXPECT_EQ(get({1, 4}), "bcde");
    EXPECT_EQ(get({1, 4}).data(), At(arena, 1));
    EXPECT_EQ(get({4, 1}), "e");
    EXPECT_EQ(get({4, 0}), "");
    EXPECT_EQ(get({4, 2}), "");
    EXPECT_EQ(get({5, 1}), "");
    EXPECT_EQ(get({0, 0xFFFFFFFF}), "");
    EXPECT_EQ(get({0xFFFFFFFF, 1}), "");
    const WireOf<VynEvent> wire{};
    EXPECT_EQ(RecordView<VynEvent>(wire, nullptr).Get<&VynEvent::field1>(), "");
}

TEST(RecordView, ShowsAnEventsArrayOfStrings)
{
    TestArena arena(5, 0, 5);
    arena.Put(0, "'abcde'");
    WireOf<VynEvent> wire{};
    wire.stringArray[0] = {0, 1};
    wire.stringArray[1] = {1, 5};
    wire.stringArray[8] = {1, 4};
    const auto strings = RecordView<VynEvent>(wire, arena.Get()).Get<&VynEvent::stringArray>();
    EXPECT_EQ(NamesOf(strings), (Names{"a", "", "", "", "", "", "", "", "bcde"}));
    EXPECT_EQ(strings.size(), 9u);
}

// --- At any address ---

TEST(RecordView, ReadsArraysAndRecordsAtOddAddresses)
{
    TestArena arena(60, 0, 60);
    arena.Put(0, "'x'");
    arena.Put(1, "05 00*7 06 00*7"); // timeouts
    arena.Put(17, BytesOf(zt_ptr_t{0, 1}) + Bytes("22 11 00 00") + BytesOf(zt_ptr_t{1, 0}) +
                      BytesOf(zt_ptr_t{0, 1})); // proxy
    const WireOf<ServerConnectionParameters> wire{{0, 1}, {17, 28}, {0, 0}, {1, 16}};
    const RecordView<ServerConnectionParameters> view(wire, arena.Get());

    EXPECT_EQ(view.Get<&ServerConnectionParameters::timeouts>()->Get<&VynRequestsTimeouts::field2>(), 6u);
    const auto proxy = view.Get<&ServerConnectionParameters::proxy>();
    EXPECT_EQ(proxy->Get<&ProxySettings::port>(), 0x1122);
    EXPECT_EQ(proxy->Get<&ProxySettings::credentials>().Get<&Credentials::password>(), "x");
    EXPECT_EQ(ToRecord(*proxy), (ProxySettings{"x", 0x1122, {"", "x"}}));
    EXPECT_EQ(ToRecord(view), CastFromZt(wire, arena.Get()));
}

TEST(RecordView, ReadsASetAndTimesAtOddAddresses)
{
    TestArena arena(30, 0, 30);
    arena.Put(0, "'xyz'");
    arena.Put(3, BytesOf(zt_ptr_t{1, 2}) + BytesOf(zt_ptr_t{0, 1}));
    const WireOf<VynSubscription> set{2, {3, 16}};
    EXPECT_EQ(NamesOf(RecordView<VynSubscription>(set, arena.Get()).Get<&VynSubscription::second>()),
              (Names{"yz", "x"}));

    arena.Put(21, "09 00*7");
    WireOf<LicenseKeyInfo> key{};
    key.field4 = {21, 8};
    EXPECT_EQ(RecordView<LicenseKeyInfo>(key, arena.Get()).Get<&LicenseKeyInfo::field4>()->count, 9);
}

// --- What Get throws ---

TEST(RecordView, TestsThePointerOfTheFieldThatIsAskedForAndNoOther)
{
    TestArena arena(4, 0, 4);
    arena.Put(0, "'user'");
    const WireOf<Credentials> wire{{0, 4}, {3, 2}};
    const RecordView<Credentials> view(wire, arena.Get());

    EXPECT_EQ(view.Get<&Credentials::userName>(), "user");
    ExpectOutside([&] { view.Get<&Credentials::password>(); }, stringCodec, 3);
}

TEST(RecordView, TestsAnElementWhenItIsTaken)
{
    TestArena arena(17, 0, 17);
    arena.Put(0, BytesOf(zt_ptr_t{16, 1}) + BytesOf(zt_ptr_t{16, 2}) + Bytes("'n'"));
    const WireOf<VynSubscription> set{2, {0, 16}};
    const auto names = RecordView<VynSubscription>(set, arena.Get()).Get<&VynSubscription::second>();
    EXPECT_EQ(names[0], "n");
    EXPECT_EQ(*names.begin(), "n");
    ExpectOutside([&] { names[1]; }, stringCodec, 16);
    ExpectOutside([&] { *(names.begin() + 1); }, stringCodec, 16);

    // Elements that are records test nothing until they are asked.
    const WireOf<ProductUpdCfgArray> list{{0, 16}};
    const auto items = RecordView<ProductUpdCfgArray>(list, arena.Get()).Get<&ProductUpdCfgArray::items>();
    const auto item = items[0];
    EXPECT_EQ(item.Get<&ProductUpdCfg::field1>(), "n");
    ExpectOutside([&] { item.Get<&ProductUpdCfg::field2>(); }, stringCodec, 16);
}

TEST(RecordView, TestsTheTextOfAnOptionalWithItsSlot)
{
    TestArena arena(9, 0, 9);
    arena.Put(0, BytesOf(zt_ptr_t{8, 2}) + Bytes("'n'"));
    const WireOf<ClientCertInfo> wire{1, {}, {}, {0, 8}};
    ExpectOutside([&] { RecordView<ClientCertInfo>(wire, arena.Get()).Get<&ClientCertInfo::field4>(); }, stringCodec,
                  8);
}

// Asks `view` for the one field of each kind of pointer, as `spoil` leaves it.
template <typename Check>
void ForEachPointer(zt_ptr_t pointer, const zt_arena* arena, Check&& check)
{
    const WireOf<FileInfoParams> text{pointer};
    check([&] { RecordView<FileInfoParams>(text, arena).Get<&FileInfoParams::fileName>(); }, stringCodec, 39);
    const WireOf<RawVynParam> blob{{}, pointer};
    check([&] { RecordView<RawVynParam>(blob, arena).Get<&RawVynParam::value>(); }, blobCodec, 32);
    const WireOf<ProductUpdCfgArray> list{pointer};
    check([&] { RecordView<ProductUpdCfgArray>(list, arena).Get<&ProductUpdCfgArray::items>(); }, vectorCodec, 39);
    const WireOf<VynUpdateIdentifiers> range{pointer};
    check([&] { RecordView<VynUpdateIdentifiers>(range, arena).Get(); }, rangeCodec, 49);
    const WireOf<LicenseInfo> record{{}, pointer};
    check([&] { RecordView<LicenseInfo>(record, arena).Get<&LicenseInfo::keyInfo2>(); }, optionalCodec, 39);
    WireOf<LicenseKeyInfo> key{};
    key.field4 = pointer;
    key.field8 = pointer;
    check([&] { RecordView<LicenseKeyInfo>(key, arena).Get<&LicenseKeyInfo::field4>(); }, optionalCodec, 39);
    check([&] { RecordView<LicenseKeyInfo>(key, arena).Get<&LicenseKeyInfo::field8>(); }, optionalCodec, 39);
    const WireOf<VynSubscription> set{0, pointer};
    check([&] { RecordView<VynSubscription>(set, arena).Get<&VynSubscription::second>(); }, setCodec, 43);
}

TEST(RecordView, ThrowsWhatTheReaderThrowsForAPointerOutside)
{
    const TestArena arena(16, 0, 16);
    for (const zt_ptr_t pointer : {zt_ptr_t{17, 0}, zt_ptr_t{1, 176}, zt_ptr_t{0xFFFFFFFF, 0xFFFFFFF0}})
        ForEachPointer(pointer, arena.Get(), [&](const auto& get, const Codec& codec, int) {
            SCOPED_TRACE(codec.name);
            ExpectOutside(get, codec, pointer.offset);
        });
}

TEST(RecordView, ThrowsWhatTheReaderThrowsForPartOfAnElement)
{
    const TestArena arena(16, 0, 16);
    ForEachPointer({2, 7}, arena.Get(), [](const auto& get, const Codec& codec, int) {
        SCOPED_TRACE(codec.name);
        if (codec == stringCodec || codec == blobCodec)
            EXPECT_NO_THROW(get());
        else
            ExpectOutside(get, codec, 2);
    });
}

TEST(RecordView, ThrowsWhatTheReaderThrowsForANullArena)
{
    for (const zt_ptr_t pointer : {zt_ptr_t{0, 0}, zt_ptr_t{5, 7}})
        ForEachPointer(pointer, nullptr, [](const auto& get, const Codec& codec, int line) {
            SCOPED_TRACE(codec.name);
            ExpectInvalidArgument(get, codec, line);
        });
}

// --- Arrays as ranges ---

class TenParams : public testing::Test {
protected:
    static std::vector<RawVynParam> Params()
    {
        std::vector<RawVynParam> params(10);
        for (std::size_t i = 0; i < params.size(); ++i)
            params[i].name = "n" + std::to_string(i);
        return params;
    }

    const Received<std::vector<RawVynParam>> message{Params()};
    const RecordView<std::vector<RawVynParam>> view{message.wire, message.arena.Get()};
    const decltype(view.Get()) params = view.Get();
    using Iterator = decltype(params.begin());

    static std::string_view Name(const RecordView<RawVynParam>& param) { return param.Get<&RawVynParam::name>(); }
};

static_assert(
    std::is_same_v<std::iterator_traits<
                       decltype(std::declval<RecordView<std::vector<RawVynParam>>>().Get().begin())>::iterator_category,
                   std::random_access_iterator_tag>);

TEST_F(TenParams, AreGoneOverForwards)
{
    std::string names;
    for (const auto& param : params)
        names += Name(param);
    EXPECT_EQ(names, "n0n1n2n3n4n5n6n7n8n9");
}

TEST_F(TenParams, AreGoneOverBackwards)
{
    std::string names;
    for (Iterator at = params.end(); at != params.begin();)
        names += Name(*--at);
    EXPECT_EQ(names, "n9n8n7n6n5n4n3n2n1n0");
}

TEST_F(TenParams, AreReachedFromAnyOther)
{
    const Iterator begin = params.begin();
    const Iterator end = params.end();
    EXPECT_EQ(Name(*(begin + 3)), "n3");
    EXPECT_EQ(Name(*(3 + begin)), "n3");
    EXPECT_EQ(Name(*(end - 3)), "n7");
    EXPECT_EQ(Name(begin[9]), "n9");
    EXPECT_EQ(Name((begin + 5)[-2]), "n3");
    EXPECT_EQ(Name(params[8]), "n8");
    EXPECT_EQ(end - begin, 10);
    EXPECT_EQ(begin - end, -10);
    EXPECT_EQ(std::distance(begin + 2, end), 8);
}

TEST_F(TenParams, AreSteppedOver)
{
    Iterator at = params.begin();
    EXPECT_EQ(Name(*at++), "n0");
    EXPECT_EQ(Name(*at), "n1");
    EXPECT_EQ(Name(*++at), "n2");
    EXPECT_EQ(Name(*at--), "n2");
    EXPECT_EQ(Name(*at), "n1");
    EXPECT_EQ(Name(*--at), "n0");
    EXPECT_EQ(Name(*(at += 7)), "n7");
    EXPECT_EQ(Name(*(at -= 2)), "n5");
}

TEST_F(TenParams, HaveAnOrder)
{
    const Iterator first = params.begin();
    const Iterator second = first + 1;
    EXPECT_TRUE(first == params.begin() && !(first == second) && first != second && !(first != params.begin()));
    EXPECT_TRUE(first < second && !(second < first) && !(first < first));
    EXPECT_TRUE(second > first && !(first > second) && !(first > first));
    EXPECT_TRUE(first <= second && first <= first && !(second <= first));
    EXPECT_TRUE(second >= first && first >= first && !(first >= second));
    EXPECT_TRUE(Iterator() == Iterator());
}

TEST_F(TenParams, AreFoundByTheAlgorithmsOfTheStandardLibrary)
{
    const auto found =
        std::find_if(params.begin(), params.end(), [](const auto& param) { return Name(param) == "n6"; });
    EXPECT_EQ(found - params.begin(), 6);
    const auto none = std::find_if(params.begin(), params.end(), [](const auto& param) { return Name(param) == "x"; });
    EXPECT_TRUE(none == params.end());
    const auto bound = std::lower_bound(params.begin(), params.end(), "n4",
                                        [](const auto& param, std::string_view name) { return Name(param) < name; });
    EXPECT_EQ(bound - params.begin(), 4);
    EXPECT_EQ(std::accumulate(params.begin(), params.end(), std::size_t{0},
                              [](std::size_t sum, const auto& param) { return sum + Name(param).size(); }),
              20u);
}

// --- Lifetimes ---

TEST(RecordView, WorksWithoutTheArenaObjectThatItWasMadeOf)
{
    TestArena arena(4, 0, 4);
    arena.Put(0, "'name'");
    zt_arena received = *arena.Get();
    const WireOf<FileInfoParams> wire{{0, 4}};
    const RecordView<FileInfoParams> view(wire, &received);
    received = {};
    EXPECT_EQ(view.Get<&FileInfoParams::fileName>(), "name");
    EXPECT_EQ(ToRecord(view).fileName, "name");

    WireOf<VynEvent> event{};
    event.field1 = {1, 3};
    received = *arena.Get();
    const RecordView<VynEvent> eventView(event, &received);
    received = {};
    EXPECT_EQ(eventView.Get<&VynEvent::field1>(), "ame");
    EXPECT_EQ(ToRecord(eventView).field1, "ame");
}

TEST(RecordView, ShowsTheSameWhenItIsCopied)
{
    TestArena arena(4, 0, 4);
    arena.Put(0, "'name'");
    const WireOf<FileInfoParams> first{{0, 2}};
    const WireOf<FileInfoParams> second{{2, 2}};
    RecordView<FileInfoParams> view(first, arena.Get());
    const RecordView<FileInfoParams> copy = view;
    view = RecordView<FileInfoParams>(second, arena.Get());
    EXPECT_EQ(copy.Get<&FileInfoParams::fileName>(), "na");
    EXPECT_EQ(view.Get<&FileInfoParams::fileName>(), "me");
    static_assert(std::is_trivially_copyable_v<RecordView<FileInfoParams>>);
}

TEST(RecordView, ShowsTheWireStructureAsItIsWhenItIsAsked)
{
    WireOf<VynServerData> wire{1};
    const RecordView<VynServerData> view(wire, nullptr);
    wire.field1 = 2;
    EXPECT_EQ(view.Get<&VynServerData::field1>(), 2u);
}

TEST(RecordView, ReadsEachKindOfFieldWithoutAnAllocation)
{
    const Received<AppInfo> app(conversion::Full<AppInfo>());
    const Received<VynEvent> event(conversion::Full<VynEvent>());
    const Received<VynSubscriptions> subscriptions(conversion::Full<VynSubscriptions>());
    const Received<VynUpdateIdentifiers> identifiers(conversion::Full<VynUpdateIdentifiers>());
    const Received<FileChunk> chunk(conversion::Full<FileChunk>());
    const Received<FileInfo> file(conversion::Full<FileInfo>());
    std::size_t seen = 0;
    const Allocations made = CountAllocations([&] {
        const RecordView<AppInfo> view(app.wire, app.arena.Get());
        const auto product = view.Get<&AppInfo::productInfo>();
        seen += product.Get<&ProductInfo::field4>().size();
        for (const auto& item : product.Get<&ProductInfo::updCfgArray>().Get<&ProductUpdCfgArray::items>())
            seen += item.Get<&ProductUpdCfg::field2>().size();
        const auto key = view.Get<&AppInfo::licenseInfo>().Get<&LicenseInfo::keyInfo2>();
        seen += key->Get<&LicenseKeyInfo::field8>()->size();
        seen += key->Get<&LicenseKeyInfo::field4>().has_value() ? 1 : 0;
        seen += view.Get<&AppInfo::deviceInfo>().Get<&DeviceInfo::field14>().size();
        for (const std::string_view text :
             RecordView<VynEvent>(event.wire, event.arena.Get()).Get<&VynEvent::stringArray>())
            seen += text.size();
        for (const auto& entry : RecordView<VynSubscriptions>(subscriptions.wire, subscriptions.arena.Get()).Get())
            for (const std::string_view name : entry.Get<&VynSubscription::second>())
                seen += name.size();
        seen += RecordView<VynUpdateIdentifiers>(identifiers.wire, identifiers.arena.Get()).Get()[9].Get().size();
        seen += RecordView<FileChunk>(chunk.wire, chunk.arena.Get()).Get<&FileChunk::data>().size();
        seen += RecordView<FileInfo>(file.wire, file.arena.Get()).Get<&FileInfo::field3>() ? 1 : 0;
        const auto verified = Verified<AppInfo>(app.wire, app.arena.Get());
        seen += verified->Get<&AppInfo::deviceInfo>().Get<&DeviceInfo::field15>().size();
    });
    EXPECT_EQ(made.count, 0u);
    EXPECT_GT(seen, 1000u);
}

// --- Verified messages ---

static_assert(std::is_same_v<GetOf<VerifiedView<AppInfo>, &AppInfo::productInfo>, VerifiedView<ProductInfo>>);
static_assert(!std::is_constructible_v<VerifiedView<Credentials>, const WireOf<Credentials>&, const zt_arena*>);

TEST(VerifiedView, IsOfAGoodMessageOnly)
{
    TestArena arena(4, 0, 4);
    arena.Put(0, "'user'");
    const WireOf<Credentials> good{{0, 4}, {4, 0}};
    const WireOf<Credentials> bad{{0, 4}, {4, 1}};
    const auto view = Verified<Credentials>(good, arena.Get());
    ASSERT_TRUE(view.has_value());
    EXPECT_EQ(view->Get<&Credentials::userName>(), "user");
    EXPECT_EQ(view->Get<&Credentials::userName>().data(), At(arena, 0));
    EXPECT_EQ(view->Get<&Credentials::password>(), "");
    EXPECT_FALSE(Verified<Credentials>(bad, arena.Get()).has_value());
    EXPECT_FALSE(Verified<Credentials>(good, nullptr).has_value());
}

TEST(VerifiedView, TestsAndThrowsNothing)
{
    TestArena arena(8, 0, 8);
    zt_arena half = *arena.Get();
    half.top = half.end = half.start + 4;
    WireOf<Credentials> wire{{0, 4}, {0, 0}};
    const auto view = Verified<Credentials>(wire, &half);
    wire.userName = {3, 5};
    EXPECT_EQ(view->Get<&Credentials::userName>().data(), At(arena, 3));
    EXPECT_EQ(view->Get<&Credentials::userName>().size(), 5u);

    WireOf<VynEvent> event{};
    const auto eventView = Verified<VynEvent>(event, &half);
    event.field5 = {2, 6};
    EXPECT_EQ(eventView->Get<&VynEvent::field5>().data(), At(arena, 2));
    EXPECT_EQ(eventView->Get<&VynEvent::field5>().size(), 6u);
}

TEST(VerifiedView, ShowsTheSameAsAViewThatTests)
{
    const Received<AppInfo> app(conversion::Full<AppInfo>());
    const auto view = Verified<AppInfo>(app.wire, app.arena.Get());
    ASSERT_TRUE(view.has_value());
    const AppInfo record = ToRecord(RecordView<AppInfo>(app.wire, app.arena.Get()));
    const auto items =
        view->Get<&AppInfo::productInfo>().Get<&ProductInfo::updCfgArray>().Get<&ProductUpdCfgArray::items>();
    ASSERT_EQ(items.size(), record.productInfo.updCfgArray.items.size());
    EXPECT_EQ(items[19].Get<&ProductUpdCfg::field2>(), record.productInfo.updCfgArray.items[19].field2);
    const auto key = view->Get<&AppInfo::licenseInfo>().Get<&LicenseInfo::keyInfo2>();
    EXPECT_EQ(*key->Get<&LicenseKeyInfo::field8>(), *record.licenseInfo.keyInfo2->field8);
    EXPECT_EQ(ToRecord(*view), record);
    EXPECT_EQ(ToRecord(items[19]), record.productInfo.updCfgArray.items[19]);
}

// --- Back to a record ---

template <typename Record>
class EveryRecord : public testing::Test {
};
TYPED_TEST_SUITE(EveryRecord, conversion::Records, );

TYPED_TEST(EveryRecord, IsWhatItsReaderMakesOfTheMessage)
{
    for (const std::uint64_t size : {0u, 1u, 3u, 15u, 16u, 40u}) {
        const std::uint64_t least = std::is_same_v<TypeParam, VynUpdateIdentifiers> ? 1 : 0;
        const Received<TypeParam> message(
            any_record::Make<TypeParam>([=](std::uint64_t limit) { return std::min(limit, std::max(size, least)); }));
        const TypeParam read = Conversion<TypeParam>::Read(message.wire, message.arena.Get());
        EXPECT_TRUE(ToRecord(RecordView<TypeParam>(message.wire, message.arena.Get())) == read);
        EXPECT_TRUE(ToRecord(*Verified<TypeParam>(message.wire, message.arena.Get())) == read);
    }
}

TEST(ToRecord, MakesARecordOfAnElement)
{
    const AppInfo app = conversion::Full<AppInfo>();
    const Received<AppInfo> message(app);
    const RecordView<AppInfo> view(message.wire, message.arena.Get());
    EXPECT_TRUE(ToRecord(view.Get<&AppInfo::deviceInfo>()) == app.deviceInfo);
    EXPECT_TRUE(ToRecord(*view.Get<&AppInfo::licenseInfo>().Get<&LicenseInfo::keyInfo2>()) ==
                *app.licenseInfo.keyInfo2);
    const auto statuses =
        view.Get<&AppInfo::productInfo>().Get<&ProductInfo::hsdpInfo>().Get<&ProductHsdpInfo::statuses>();
    EXPECT_TRUE(ToRecord(statuses[4]) == app.productInfo.hsdpInfo.statuses[4]);
}

TEST(ToRecord, ThrowsWhatTheReaderThrows)
{
    const TestArena arena(4, 0, 4);
    const WireOf<Credentials> wire{{0, 4}, {3, 2}};
    ExpectOutside([&] { ToRecord(RecordView<Credentials>(wire, arena.Get())); }, stringCodec, 3);
    ExpectInvalidArgument([&] { ToRecord(RecordView<Credentials>(wire, nullptr)); }, stringCodec, 39);
    const WireOf<VynUpdateIdentifiers> identifiers{{0, 5}};
    ExpectOutOfSpace([&] { ToRecord(RecordView<VynUpdateIdentifiers>(identifiers, arena.Get())); });
}

TEST(ToRecord, MakesOfABadEventWhatItsReaderMakes)
{
    TestArena arena(8, 0, 4);
    arena.Put(0, "'abcdefgh'");
    WireOf<VynEvent> wire{};
    wire.field1 = {0, 4};
    wire.field3 = {4, 4}; // behind the top
    wire.severity = 7;
    wire.field9 = 99;
    const RecordView<VynEvent> view(wire, arena.Get());
    const VynEvent event = ToRecord(view);

    EXPECT_EQ(event.field1, "abcd");
    EXPECT_EQ(event.field3, "");
    EXPECT_EQ(static_cast<int>(event.severity), 7);
    EXPECT_EQ(event.field9, 99u);
    auto status = lyr::ipc::arena::conv::Status::Ok;
    EXPECT_TRUE(event == lyr::ipc::arena::conv::FromZt(*arena.Get(), wire, status));
    EXPECT_TRUE(status == lyr::ipc::arena::conv::Status::Failed);

    wire.severity = 2;
    VynEvent empty;
    empty.severity = VynEventSeverity::Severity2;
    empty.field9 = 99;
    EXPECT_TRUE(ToRecord(RecordView<VynEvent>(wire, nullptr)) == empty);
}

TEST(ToRecord, ReadsTheSameArenaAsTheViewToItsLastByte)
{
    TestArena arena(5, 0, 3);
    arena.Put(0, "'abcde'");
    const WireOf<FileInfoParams> toTheEnd{{0, 5}};
    EXPECT_EQ(ToRecord(RecordView<FileInfoParams>(toTheEnd, arena.Get())).fileName, "abcde");
    const WireOf<FileInfoParams> past{{0, 6}};
    ExpectOutside([&] { ToRecord(RecordView<FileInfoParams>(past, arena.Get())); }, stringCodec, 0);
}

} // namespace
