// What is wrong with a received message, told without reading it: each fault that readers refuse with its path, its
// kind, by how much the pointer misses and what the reader throws there, in the reader's order; and what reading takes,
// known before it is paid.
#include "counted_allocations.h"

#include "at_the_end.h"
#include "conversion.h"
#include "errors.h"
#include "faults.h"
#include "received.h"

#include <common/verify.h>
#include <common/vyn_connector_common.h>

#include <ctime>
#include <memory>

namespace vyn_connector {

// A record with more behind its flags than any of the library's.
struct Flagged {
    bool first{};
    bool second{};
    bool third{};
    bool fourth{};
    std::string text;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Flagged {
    std::uint8_t first;
    std::uint8_t second;
    std::uint8_t third;
    std::uint8_t fourth;
    zt_ptr_t text;
};

namespace vyn_connector::common {

VYN_RECORD(Flagged, Flagged, 12, 4,
    VYN_FIELD(0, 1, first,  Flag),
    VYN_FIELD(1, 1, second, Flag),
    VYN_FIELD(2, 1, third,  Flag),
    VYN_FIELD(3, 1, fourth, Flag),
    VYN_FIELD(4, 8, text,   Text<128>));

} // namespace vyn_connector::common

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;
using namespace faults;

using Paths = std::vector<std::string>;

template <typename Record>
std::vector<Fault> AllFaults(const WireOf<Record>& wire, const zt_arena* arena)
{
    std::vector<Fault> all;
    Verify<Record>(wire, arena, [&](const Fault& fault) { all.push_back(fault); });
    return all;
}

// Of all faults; the first of them is the one that the other form of Verify gives.
template <typename Record>
Paths PathsOf(const WireOf<Record>& wire, const zt_arena* arena)
{
    Paths paths;
    for (const Fault& fault : AllFaults<Record>(wire, arena))
        paths.push_back(fault.Path());
    const std::optional<Fault> first = Verify<Record>(wire, arena);
    EXPECT_EQ(first.has_value() ? Paths{first->Path()} : Paths(),
              Paths(paths.begin(), paths.empty() ? paths.end() : paths.begin() + 1));
    return paths;
}

// Leads out of every arena.
constexpr zt_ptr_t bad{0xFFFFFFF0, 16};

// --- What never changes ---

static_assert(noexcept(std::declval<const Fault&>().Kind()) && noexcept(std::declval<const Fault&>().Pointer()));
static_assert(noexcept(std::declval<const Fault&>().MissesBy()) && noexcept(std::declval<const Fault&>().IsRefused()));
static_assert(noexcept(std::declval<const Fault&>().Exception()));
static_assert(noexcept(std::declval<FieldPath&>().Push("")) && noexcept(std::declval<FieldPath&>().Pop()));
static_assert(noexcept(std::declval<FieldPath&>().SetIndex(0)));
static_assert(std::is_trivially_copyable_v<Fault>);

// --- Every record ---

template <typename Record>
class EveryRecord : public testing::Test {
};
TYPED_TEST_SUITE(EveryRecord, conversion::Records, );

using any_record::OfSize;

constexpr std::uint64_t sizes[] = {0, 1, 15, 16, 17, 200};

TYPED_TEST(EveryRecord, IsVerifiedWithoutAnException)
{
    [[maybe_unused]] const WireOf<TypeParam> wire{};
    static_assert(noexcept(Verify<TypeParam>(wire, nullptr)));
    static_assert(noexcept(Verify<TypeParam>(wire, nullptr, 0)));
    static_assert(noexcept(VerifyCanonical<TypeParam>(wire, nullptr)));
    static_assert(noexcept(DecodedSize<TypeParam>(wire, nullptr)));
    static_assert(noexcept(Verified<TypeParam>(wire, nullptr)));
}

TYPED_TEST(EveryRecord, HasNoFaultWhereAWriterWroteIt)
{
    for (const std::uint64_t size : sizes) {
        const Received<TypeParam> message(OfSize<TypeParam>(size));
        EXPECT_FALSE(Verify<TypeParam>(message.wire, message.arena.Get()).has_value());
        EXPECT_EQ(PathsOf<TypeParam>(message.wire, message.arena.Get()), Paths());
        EXPECT_TRUE(Verified<TypeParam>(message.wire, message.arena.Get()).has_value());
    }
}

TYPED_TEST(EveryRecord, IsVerifiedWithoutAnAllocationWhetherItIsGoodOrBad)
{
    const Received<TypeParam> message(OfSize<TypeParam>(200));
    const zt_arena* const whole = message.arena.Get();
    const zt_arena shorter{whole->start, whole->start, whole->start};
    for (const zt_arena* arena : {whole, &shorter, static_cast<const zt_arena*>(nullptr)}) {
        std::size_t faults = 0;
        const Allocations made = CountAllocations([&] {
            faults += Verify<TypeParam>(message.wire, arena).has_value() ? 1 : 0;
            faults += Verify<TypeParam>(message.wire, arena, 100).has_value() ? 1 : 0;
            Verify<TypeParam>(message.wire, arena, [&](const Fault&) { ++faults; });
            faults += DecodedSize<TypeParam>(message.wire, arena) > 0 ? 1 : 0;
            faults += Verified<TypeParam>(message.wire, arena).has_value() ? 1 : 0;
        });
        EXPECT_EQ(made.count, 0u);
        EXPECT_GT(faults, 0u);
    }
}

template <typename Record>
constexpr bool hasSets = std::is_same_v<Record, VynSubscription> || std::is_same_v<Record, VynSubscriptions> ||
                         std::is_same_v<Record, VynSubscriptionsWithHash>;

TYPED_TEST(EveryRecord, TakesTheBytesThatItsDecodedSizeSays)
{
    for (const std::uint64_t size : sizes) {
        SCOPED_TRACE(size);
        const Received<TypeParam> message(OfSize<TypeParam>(size));
        const std::uint64_t said = DecodedSize<TypeParam>(message.wire, message.arena.Get());
        const std::uint64_t taken =
            CountAllocations([&] { Conversion<TypeParam>::Read(message.wire, message.arena.Get()); }).bytes;
        if constexpr (hasSets<TypeParam>) {
            EXPECT_GE(said, taken);
            EXPECT_LE(static_cast<double>(said), 2.5 * static_cast<double>(taken));
        } else {
            EXPECT_EQ(said, taken);
        }
    }
}

TYPED_TEST(EveryRecord, IsWithinABudgetOfItsDecodedSizeAndOverOneOfAByteLess)
{
    for (const std::uint64_t size : sizes) {
        const Received<TypeParam> message(OfSize<TypeParam>(size));
        const zt_arena* const arena = message.arena.Get();
        const std::uint64_t bytes = DecodedSize<TypeParam>(message.wire, arena);
        EXPECT_FALSE(Verify<TypeParam>(message.wire, arena, bytes).has_value());
        EXPECT_TRUE(Verified<TypeParam>(message.wire, arena, bytes).has_value());
        if (bytes == 0) continue;
        const std::optional<Fault> fault = Verify<TypeParam>(message.wire, arena, bytes - 1);
        ASSERT_TRUE(fault.has_value());
        EXPECT_TRUE(fault->Kind() == FaultKind::OverBudget);
        EXPECT_EQ(fault->MissesBy(), 1u);
        EXPECT_FALSE(Verified<TypeParam>(message.wire, arena, bytes - 1).has_value());
    }
}

TYPED_TEST(EveryRecord, IsVerifiedWithoutALookAtWhatIsBehindIt)
{
    using Wire = WireOf<TypeParam>;
    for (const std::uint64_t size : {0u, 1u, 3u}) {
        const Received<TypeParam> message(OfSize<TypeParam>(size));
        const AtTheEnd wire(&message.wire, sizeof(Wire));
        const AtTheEnd bytes(message.arena.Start(), message.arena.Capacity());
        const zt_arena arena{bytes.Begin(), bytes.End(), bytes.End()};
        EXPECT_FALSE(Verify<TypeParam>(*reinterpret_cast<const Wire*>(wire.Begin()), &arena).has_value());
    }
}

// --- A pointer that leads outside ---

TEST(Verify, FindsAStringPastTheEnd)
{
    const TestArena arena(5, 0, 5);
    const auto verify = [&](zt_ptr_t password) { return Verify<Credentials>({{0, 4}, password}, arena.Get()); };
    EXPECT_FALSE(verify({3, 2}).has_value());
    EXPECT_FALSE(verify({5, 0}).has_value());
    ExpectOutOfRangeFault(verify({3, 3}), {"password", FaultKind::OutsideArena, {3, 3}, 1}, stringCodec);
    ExpectOutOfRangeFault(verify({6, 0}), {"password", FaultKind::OutsideArena, {6, 0}, 1}, stringCodec);
    ExpectOutOfRangeFault(verify({0xFFFFFFFF, 0xFFFFFFFF}),
                          {"password", FaultKind::OutsideArena, {0xFFFFFFFF, 0xFFFFFFFF}, 0x1FFFFFFF9}, stringCodec);
    ExpectFault(verify({3, 3}), {"password", FaultKind::OutsideArena, {3, 3}, 1}, "std::out_of_range",
                "zt string: zt_arena does not contain an element with the address 3");
}

TEST(Verify, TakesBytesBehindTheTopAsReadersDo)
{
    const TestArena arena(5, 0, 2);
    EXPECT_FALSE(Verify<Credentials>({{0, 2}, {2, 3}}, arena.Get()).has_value());
}

TEST(Verify, FindsABlobPastTheEnd)
{
    const TestArena arena(4, 0, 4);
    const auto verify = [&](zt_ptr_t data) { return Verify<FileChunk>({{0, 0}, 1, 2, data}, arena.Get()); };
    EXPECT_FALSE(verify({1, 3}).has_value());
    ExpectOutOfRangeFault(verify({2, 5}), {"data", FaultKind::OutsideArena, {2, 5}, 3}, blobCodec);
}

TEST(Verify, FindsAListPastTheEndOrWithPartOfAnElement)
{
    TestArena arena(33, 0, 33);
    arena.Put(0, "00*33");
    const auto verify = [&](zt_ptr_t items) { return Verify<ProductUpdCfgArray>({items}, arena.Get()); };
    EXPECT_FALSE(verify({1, 32}).has_value());
    ExpectOutOfRangeFault(verify({20, 16}), {"items", FaultKind::OutsideArena, {20, 16}, 3}, vectorCodec);
    ExpectOutOfRangeFault(verify({3, 17}), {"items", FaultKind::PartOfElement, {3, 17}, 1}, vectorCodec);
    ExpectOutOfRangeFault(verify({3, 15}), {"items", FaultKind::PartOfElement, {3, 15}, 15}, vectorCodec);
    ExpectOutOfRangeFault(verify({3, 31}), {"items", FaultKind::OutsideArena, {3, 31}, 1}, vectorCodec);
}

TEST(Verify, FindsAnOptionalPastTheEndOrWithPartOfAnElement)
{
    const TestArena arena(32, 0, 32);
    const auto verify = [&](zt_ptr_t timeouts) {
        return Verify<ServerConnectionParameters>({{}, {}, {}, timeouts}, arena.Get());
    };
    EXPECT_FALSE(verify({0, 32}).has_value());
    EXPECT_FALSE(verify({32, 0}).has_value());
    // Of an absent record nothing is looked at, not even the bytes behind the arena.
    EXPECT_FALSE(Verify<ServerConnectionParameters>({{}, {32, 0}, {}, {}}, arena.Get()).has_value());
    ExpectOutOfRangeFault(verify({17, 16}), {"timeouts", FaultKind::OutsideArena, {17, 16}, 1}, optionalCodec);
    ExpectOutOfRangeFault(verify({7, 24}), {"timeouts", FaultKind::PartOfElement, {7, 24}, 8}, optionalCodec);
    ExpectOutOfRangeFault(verify({33, 0}), {"timeouts", FaultKind::OutsideArena, {33, 0}, 1}, optionalCodec);
}

TEST(Verify, FindsASetPastTheEndOrWithPartOfAnElement)
{
    TestArena arena(17, 0, 17);
    arena.Put(0, "00*17");
    const auto verify = [&](zt_ptr_t names) { return Verify<VynSubscription>({1, names}, arena.Get()); };
    EXPECT_FALSE(verify({1, 16}).has_value());
    ExpectOutOfRangeFault(verify({2, 16}), {"eventTypes", FaultKind::OutsideArena, {2, 16}, 1}, setCodec);
    ExpectOutOfRangeFault(verify({2, 15}), {"eventTypes", FaultKind::PartOfElement, {2, 15}, 7}, setCodec);
}

TEST(Verify, FindsIdentifiersPastTheEndOrWithPartOfOne)
{
    const TestArena arena(32, 0, 32);
    const auto verify = [&](zt_ptr_t list) { return Verify<VynUpdateIdentifiers>({list}, arena.Get()); };
    EXPECT_FALSE(verify({16, 16}).has_value());
    ExpectFault(verify({17, 16}), {"identifiers", FaultKind::OutsideArena, {17, 16}, 1}, "mur::ResultCodeException",
                "0x80000062 (Out of space)");
    ExpectFault(verify({0, 31}), {"identifiers", FaultKind::PartOfElement, {0, 31}, 15}, "mur::ResultCodeException",
                "0x80000062 (Out of space)");
    ExpectOutOfSpace([&] { verify({17, 16})->Raise(); });
}

TEST(Verify, FindsAnEventsStringPastTheTop)
{
    const TestArena arena(20, 0, 5);
    const auto verify = [&](zt_ptr_t field7) {
        WireOf<VynEvent> wire{};
        wire.field7 = field7;
        return Verify<VynEvent>(wire, arena.Get());
    };
    EXPECT_FALSE(verify({0, 5}).has_value());
    EXPECT_FALSE(verify({4, 1}).has_value());
    EXPECT_FALSE(verify({4, 0}).has_value());
    const auto expect = [&](zt_ptr_t field7, std::uint64_t missesBy, std::string_view text) {
        ExpectFault(verify(field7), {"field7", FaultKind::OutsideUsedPart, field7, missesBy}, "std::out_of_range",
                    text);
    };
    expect({4, 2}, 1, "vyn event: field7: zt_arena does not contain an element with the address 4");
    expect({5, 0}, 1, "vyn event: field7: zt_arena does not contain an element with the address 5");
    expect({5, 1}, 1, "vyn event: field7: zt_arena does not contain an element with the address 5");
    expect({9, 0xFFFFFFFF}, 0x100000003, "vyn event: field7: zt_arena does not contain an element with the address 9");
}

TEST(Verify, FindsASeverityThatIsTooHigh)
{
    const TestArena arena(1, 0, 1);
    const auto verify = [&](std::uint32_t severity) {
        WireOf<VynEvent> wire{};
        wire.severity = severity;
        return Verify<VynEvent>(wire, arena.Get());
    };
    EXPECT_FALSE(verify(3).has_value());
    WireOf<VynEvent> highest{};
    highest.severity = 3;
    EXPECT_EQ(PathsOf<VynEvent>(highest, arena.Get()), Paths());
    ExpectFault(verify(4), {"severity", FaultKind::Severity, {0, 0}, 1}, "std::out_of_range",
                "vyn event: severity: 4 is greater than 3");
    ExpectFault(verify(0xFFFFFFFF), {"severity", FaultKind::Severity, {0, 0}, 0xFFFFFFFC}, "std::out_of_range",
                "vyn event: severity: 4294967295 is greater than 3");
}

// --- No arena ---

TEST(Verify, FindsThatThereIsNoArenaForAPointerOfAnyKind)
{
    ExpectNullArenaFault(Verify<Credentials>({{0, 0}, {2, 3}}, nullptr), "userName", {0, 0}, stringCodec, 39);
    ExpectNullArenaFault(Verify<Credentials>({{2, 3}, {0, 0}}, nullptr), "userName", {2, 3}, stringCodec, 39);
    ExpectNullArenaFault(Verify<RawVynParam>({{0, 0}, {1, 2}}, nullptr), "value", {1, 2}, blobCodec, 32);
    ExpectNullArenaFault(Verify<ProductUpdCfgArray>({{0, 0}}, nullptr), "items", {0, 0}, vectorCodec, 39);
    ExpectNullArenaFault(Verify<LicenseInfo>({{0, 0}, {0, 0}}, nullptr), "keyInfo1", {0, 0}, optionalCodec, 39);
    ExpectNullArenaFault(Verify<VynSubscription>({1, {0, 8}}, nullptr), "eventTypes", {0, 8}, setCodec, 43);
    ExpectNullArenaFault(Verify<VynUpdateIdentifiers>({{0, 0}}, nullptr), "identifiers", {0, 0}, rangeCodec, 49);
    ExpectFault(Verify<VynEvent>({}, nullptr), {"field1", FaultKind::OutsideUsedPart, {0, 0}, 1}, "std::out_of_range",
                "vyn event: field1: zt_arena does not contain an element with the address 0");
}

TEST(Verify, AsksForNoArenaWhereNoFieldPointsIntoOne)
{
    EXPECT_FALSE(Verify<VynServerData>({7}, nullptr).has_value());
    EXPECT_FALSE(Verify<VynUpdateIdentifier>({{1, 2, 3}}, nullptr).has_value());
    EXPECT_FALSE(Verify<VynRequestsTimeouts>({1, 2}, nullptr).has_value());
    EXPECT_EQ(DecodedSize<VynServerData>({7}, nullptr), 0u);
}

TEST(Verify, FindsThatNothingLiesInAnArenaOfNullAddresses)
{
    const zt_arena arena{};
    ExpectOutOfRangeFault(Verify<Credentials>({{0, 0}, {0, 0}}, &arena),
                          {"userName", FaultKind::OutsideArena, {0, 0}, 0}, stringCodec);
    ExpectOutOfRangeFault(Verify<Credentials>({{0, 2}, {0, 0}}, &arena),
                          {"userName", FaultKind::OutsideArena, {0, 2}, 2}, stringCodec);
    ExpectOutOfRangeFault(Verify<ProductUpdCfgArray>({{0, 0}}, &arena), {"items", FaultKind::OutsideArena, {0, 0}, 0},
                          vectorCodec);
}

TEST(Verify, FindsThatNoStringOfAnEventLiesAtTheNullAddress)
{
    std::uint8_t* const top = reinterpret_cast<std::uint8_t*>(4);
    const zt_arena arena{nullptr, top, top};
    WireOf<VynEvent> wire{};
    wire.field1 = {0, 3};
    ExpectFault(Verify<VynEvent>(wire, &arena), {"field1", FaultKind::OutsideUsedPart, {0, 3}, 0}, "std::out_of_range",
                "vyn event: field1: zt_arena does not contain an element with the address 0");
}

// --- The path ---

AppInfo App()
{
    return conversion::Full<AppInfo>();
}

TEST(Fault, NamesAFieldOfAnElementOfAListInsideARecord)
{
    Received<AppInfo> app(App());
    const zt_ptr_t items = app.wire.productInfo.updCfgArray.items;
    Put(app.arena, OffsetOf(items, 3, &WireOf<ProductUpdCfg>::field2), bad);

    ExpectOutOfRangeFault(
        Verify<AppInfo>(app.wire, app.arena.Get()),
        {"productInfo.updCfgArray.items[3].field2", FaultKind::OutsideArena, bad, 0x100000000 - app.arena.Capacity()},
        stringCodec);
    EXPECT_EQ(PathsOf<AppInfo>(app.wire, app.arena.Get()), Paths{"productInfo.updCfgArray.items[3].field2"});
}

TEST(Fault, NamesAListAfterTheElementsOfAnother)
{
    Received<AppInfo> app(App());
    app.wire.productInfo.hsdpInfo.statuses = bad;
    app.wire.deviceInfo.field6 = bad;
    EXPECT_EQ(PathsOf<AppInfo>(app.wire, app.arena.Get()),
              (Paths{"productInfo.hsdpInfo.statuses", "deviceInfo.field6"}));
}

TEST(Fault, NamesAFieldOfAnOptionalRecord)
{
    Received<AppInfo> app(App());
    const zt_ptr_t keyInfo2 = app.wire.licenseInfo.keyInfo2;
    const std::size_t field8 = OffsetOf(keyInfo2, 0, &WireOf<LicenseKeyInfo>::field8);

    const auto slot = StructureAt<zt_ptr_t>(app.arena, field8);
    Put(app.arena, slot.offset, bad);
    ExpectOutOfRangeFault(
        Verify<AppInfo>(app.wire, app.arena.Get()),
        {"licenseInfo.keyInfo2.field8", FaultKind::OutsideArena, bad, 0x100000000 - app.arena.Capacity()}, stringCodec);

    Put(app.arena, field8, {0, 12});
    ExpectOutOfRangeFault(Verify<AppInfo>(app.wire, app.arena.Get()),
                          {"licenseInfo.keyInfo2.field8", FaultKind::PartOfElement, {0, 12}, 4}, optionalCodec);
}

TEST(Fault, NamesAFieldOfARecordInAnOptionalRecord)
{
    Received<ServerConnectionParameters> parameters(conversion::Full<ServerConnectionParameters>());
    const auto proxy = StructureAt<WireOf<ProxySettings>>(parameters.arena, parameters.wire.proxy.offset);
    EXPECT_EQ(proxy.credentials.password.size, 20u);
    Put(parameters.arena, parameters.wire.proxy.offset + 20, bad); // its password
    EXPECT_EQ(PathsOf<ServerConnectionParameters>(parameters.wire, parameters.arena.Get()),
              Paths{"proxy.credentials.password"});
}

TEST(Fault, NamesAnElementOfASetInAnEntry)
{
    Received<VynSubscriptionsWithHash> all(conversion::Full<VynSubscriptionsWithHash>());
    Put(all.arena, all.wire.subscriptions.entries[2].eventTypes.offset + 8, {7, 0xFFFFFFFF});
    ExpectOutOfRangeFault(Verify<VynSubscriptionsWithHash>(all.wire, all.arena.Get()),
                          {"subscriptions.entries[2].eventTypes[1]",
                           FaultKind::OutsideArena,
                           {7, 0xFFFFFFFF},
                           0x100000006 - all.arena.Capacity()},
                          stringCodec);

    Received<VynSubscriptions> entries(conversion::Full<VynSubscriptions>());
    Put(entries.arena, entries.wire.entries[2].eventTypes.offset + 8, bad);
    entries.wire.entries[3].eventTypes = bad;
    EXPECT_EQ(PathsOf<VynSubscriptions>(entries.wire, entries.arena.Get()),
              (Paths{"entries[2].eventTypes[1]", "entries[3].eventTypes"}));

    Received<VynSubscriptions> last(conversion::Full<VynSubscriptions>());
    Put(last.arena, last.wire.entries[3].eventTypes.offset + 19 * 8, bad);
    EXPECT_EQ(PathsOf<VynSubscriptions>(last.wire, last.arena.Get()), Paths{"entries[3].eventTypes[19]"});
}

TEST(Fault, NamesAFieldOfAnElementOfAListWithoutARecordAroundIt)
{
    Received<std::vector<RawVynParam>> params(conversion::Full<std::vector<RawVynParam>>());
    Put(params.arena, OffsetOf(params.wire.params, 3, &WireOf<RawVynParam>::name), bad);
    EXPECT_EQ(PathsOf<std::vector<RawVynParam>>(params.wire, params.arena.Get()), Paths{"params[3].name"});

    Received<std::vector<ClientCertInfo>> certs(conversion::Full<std::vector<ClientCertInfo>>());
    Put(certs.arena, OffsetOf(certs.wire.certs, 9, &WireOf<ClientCertInfo>::field4), bad);
    EXPECT_EQ(PathsOf<std::vector<ClientCertInfo>>(certs.wire, certs.arena.Get()), Paths{"certs[9].field4"});
}

TEST(Fault, NamesTheIndexOfAnEventsString)
{
    Received<VynEvent> event(conversion::Full<VynEvent>());
    event.wire.stringArray[0].offset = 1000;
    event.wire.stringArray[8].offset = 300;
    const std::vector<Fault> all = AllFaults<VynEvent>(event.wire, event.arena.Get());
    ASSERT_EQ(all.size(), 2u);
    ExpectFault(all[0], {"stringArray[0]", FaultKind::OutsideUsedPart, {1000, 20}, 720}, "std::out_of_range",
                "vyn event: stringArray[0]: zt_arena does not contain an element with the address 1000");
    ExpectFault(all[1], {"stringArray[8]", FaultKind::OutsideUsedPart, {300, 20}, 20}, "std::out_of_range",
                "vyn event: stringArray[8]: zt_arena does not contain an element with the address 300");
}

TEST(Fault, LeavesOutOfItsPathWhatIsDeeperThanEightSteps)
{
    FieldPath paths[2]; // the second shows what is written behind the first
    FieldPath& path = paths[0];
    for (const char* name : {"a", "b", "c", "d", "e", "f", "g", "h"})
        path.Push(name);
    path.SetIndex(7);
    EXPECT_EQ(path.Text(), "a.b.c.d.e.f.g.h[7]");
    path.Push("i");
    path.SetIndex(9);
    EXPECT_EQ(path.Text(), "a.b.c.d.e.f.g.h[7]");
    EXPECT_EQ(paths[1].Text(), "");
    path.Pop();
    path.Pop();
    EXPECT_EQ(path.Text(), "a.b.c.d.e.f.g");
}

TEST(Fault, IsTheSameWhenItsMessageIsGone)
{
    std::optional<Fault> fault;
    {
        const TestArena arena(3);
        auto wire = std::make_unique<WireOf<Credentials>>(WireOf<Credentials>{{0, 4}, {0, 0}});
        fault = Verify<Credentials>(*wire, arena.Get());
    }
    ExpectOutOfRangeFault(fault, {"userName", FaultKind::OutsideArena, {0, 4}, 1}, stringCodec);
}

// --- Which is first, and which follow ---

TEST(Verify, MeetsTheValueOfAParameterBeforeItsName)
{
    const TestArena arena(4, 0, 4);
    const WireOf<RawVynParam> wire{{5, 1}, {6, 1}};
    ExpectOutOfRangeFault(Verify<RawVynParam>(wire, arena.Get()), {"value", FaultKind::OutsideArena, {6, 1}, 3},
                          blobCodec);
    EXPECT_EQ(PathsOf<RawVynParam>(wire, arena.Get()), (Paths{"value", "name"}));
    ExpectOutside([&] { CastFromZt(wire, arena.Get()); }, blobCodec, 6);
}

TEST(Verify, MeetsTheElementsOfAListBeforeWhatIsBehindIt)
{
    Received<ProductInfo> product(conversion::Full<ProductInfo>());
    const zt_ptr_t items = product.wire.updCfgArray.items;
    Put(product.arena, OffsetOf(items, 19, &WireOf<ProductUpdCfg>::field1), {9, 0xFFFFFFFF});
    product.wire.hsdpInfo.statuses = {0, 17};
    product.wire.field5 = bad;
    product.wire.field1 = {1, 0xFFFFFFF0};

    EXPECT_EQ(PathsOf<ProductInfo>(product.wire, product.arena.Get()),
              (Paths{"field1", "field5", "updCfgArray.items[19].field1", "hsdpInfo.statuses"}));
    EXPECT_EQ(Verify<ProductInfo>(product.wire, product.arena.Get())->Path(), "field1");
    ExpectOutside([&] { CastFromZt(product.wire, product.arena.Get()); }, stringCodec, 1);
}

TEST(Verify, GoesOnBehindEachFault)
{
    Received<ServerConnectionParameters> message(conversion::Full<ServerConnectionParameters>());
    const zt_ptr_t proxy = message.wire.proxy;
    Put(message.arena, OffsetOf(proxy, 0, &WireOf<ProxySettings>::address), bad);
    Put(message.arena, proxy.offset + 12, bad); // its user name
    message.wire.address = bad;
    message.wire.ssl.size = 35;
    message.wire.timeouts = bad;

    EXPECT_EQ(PathsOf<ServerConnectionParameters>(message.wire, message.arena.Get()),
              (Paths{"address", "proxy.address", "proxy.credentials.userName", "ssl", "timeouts"}));
}

TEST(Verify, GoesOnBehindAFlagOfAnyValue)
{
    const TestArena arena(16);
    EXPECT_EQ(PathsOf<Flagged>({0, 1, 2, 0xFF, bad}, arena.Get()), (Paths{"text"}));
    EXPECT_EQ(DecodedSize<Flagged>({0, 1, 2, 0xFF, {0, 16}}, arena.Get()), 17u);
}

TEST(Verify, GoesOnBehindEachFaultOfAnElement)
{
    Received<std::vector<ClientCertInfo>> certs(conversion::Full<std::vector<ClientCertInfo>>());
    const zt_ptr_t array = certs.wire.certs;
    Put(certs.arena, OffsetOf(array, 1, &WireOf<ClientCertInfo>::field2), bad);
    Put(certs.arena, OffsetOf(array, 1, &WireOf<ClientCertInfo>::field3), bad);
    Put(certs.arena, OffsetOf(array, 1, &WireOf<ClientCertInfo>::field4), bad);
    Put(certs.arena, OffsetOf(array, 4, &WireOf<ClientCertInfo>::field3), bad);
    EXPECT_EQ(PathsOf<std::vector<ClientCertInfo>>(certs.wire, certs.arena.Get()),
              (Paths{"certs[1].field2", "certs[1].field3", "certs[1].field4", "certs[4].field3"}));
}

// What would be read around the message is all zero, and so without a fault.
TEST(Verify, FindsAFaultOfAnyElementAlone)
{
    std::uint8_t memory[256]{};
    zt_arena arena{memory + 128, memory + 256, memory + 256};
    std::memcpy(memory + 192, &bad, sizeof(bad));
    EXPECT_EQ(PathsOf<ProductUpdCfgArray>({{64, 16}}, &arena), (Paths{"items[0].field1"}));
    std::memcpy(memory + 200, &bad, sizeof(bad));
    EXPECT_EQ(PathsOf<ProductUpdCfgArray>({{64, 16}}, &arena), (Paths{"items[0].field1", "items[0].field2"}));
    std::memcpy(memory + 208, &bad, sizeof(bad));
    EXPECT_EQ(PathsOf<ProductUpdCfgArray>({{64, 32}}, &arena),
              (Paths{"items[0].field1", "items[0].field2", "items[1].field1"}));

    WireOf<VynSubscriptions> wires[2]{};
    Paths all;
    for (std::size_t i = 0; i < 4; ++i) {
        all.push_back("entries[" + std::to_string(i) + "].eventTypes");
        wires[1].entries[i].eventTypes = bad;
        EXPECT_EQ(PathsOf<VynSubscriptions>(wires[1], &arena), (Paths{all.back()}));
        wires[1].entries[i].eventTypes = {};
    }
    for (auto& entry : wires[1].entries)
        entry.eventTypes = bad;
    EXPECT_EQ(PathsOf<VynSubscriptions>(wires[1], &arena), all);

    EXPECT_EQ(PathsOf<LicenseInfo>({{129, 0}, {129, 0}}, &arena), (Paths{"keyInfo1", "keyInfo2"}));
}

TEST(Verify, GoesOnBehindEachFaultOfAnEvent)
{
    WireOf<VynEvent> wire{};
    wire.severity = 9;
    const TestArena arena(8);
    EXPECT_EQ(PathsOf<VynEvent>(wire, arena.Get()),
              (Paths{"field1", "severity", "field3", "field4", "field5", "field6", "field7", "stringArray[0]",
                     "stringArray[1]", "stringArray[2]", "stringArray[3]", "stringArray[4]", "stringArray[5]",
                     "stringArray[6]", "stringArray[7]", "stringArray[8]"}));
}

TEST(Verify, GoesOnBehindEachFaultOfASet)
{
    TestArena arena(24, 0, 24);
    arena.Put(0, BytesOf(bad) + Bytes("00*8") + BytesOf(bad));
    EXPECT_EQ(PathsOf<VynSubscription>({1, {0, 24}}, arena.Get()), (Paths{"eventTypes[0]", "eventTypes[2]"}));
}

TEST(Verify, FindsEachPointerOfARecordWithoutAnArena)
{
    EXPECT_EQ(PathsOf<AppInfo>({}, nullptr),
              (Paths{"productInfo.field1", "productInfo.field2", "productInfo.field4", "productInfo.field5",
                     "productInfo.updCfgArray.items", "productInfo.hsdpInfo.statuses", "licenseInfo.keyInfo1",
                     "licenseInfo.keyInfo2", "deviceInfo.field1", "deviceInfo.field2", "deviceInfo.field6",
                     "deviceInfo.field7", "deviceInfo.field9", "deviceInfo.field10", "deviceInfo.field11",
                     "deviceInfo.field12", "deviceInfo.field13", "deviceInfo.field15"}));
}

TEST(Verify, LetsThroughWhatItsCallerThrows)
{
    int calls = 0;
    const auto report = [&](const Fault& fault) {
        ++calls;
        throw fault.Path();
    };
    EXPECT_THROW(Verify<Credentials>({}, nullptr, report), std::string);
    EXPECT_EQ(calls, 1);
}

// --- A budget ---

TEST(Verify, NamesTheFieldThatGoesOverTheBudget)
{
    const Received<Credentials> message(Credentials{std::string(16, 'u'), std::string(17, 'p')});
    const auto verify = [&](std::uint64_t budget) {
        return Verify<Credentials>(message.wire, message.arena.Get(), budget);
    };
    EXPECT_FALSE(verify(35).has_value());
    ExpectTolerated(verify(34), {"password", FaultKind::OverBudget, {16, 17}, 1},
                    "password: reading takes more than 34 bytes of memory");
    ExpectTolerated(verify(17), {"password", FaultKind::OverBudget, {16, 17}, 18},
                    "password: reading takes more than 17 bytes of memory");
    ExpectTolerated(verify(16), {"userName", FaultKind::OverBudget, {0, 16}, 1},
                    "userName: reading takes more than 16 bytes of memory");
    ExpectTolerated(verify(0), {"userName", FaultKind::OverBudget, {0, 16}, 17},
                    "userName: reading takes more than 0 bytes of memory");
}

TEST(Verify, NamesTheElementThatGoesOverTheBudget)
{
    const Received<ProductUpdCfgArray> message(
        ProductUpdCfgArray{{{"", ""}, {std::string(99, 'a'), ""}, {"", std::string(49, 'b')}}});
    const auto verify = [&](std::uint64_t budget) {
        return Verify<ProductUpdCfgArray>(message.wire, message.arena.Get(), budget);
    };
    constexpr std::uint64_t list = 3 * sizeof(ProductUpdCfg);
    EXPECT_FALSE(verify(list + 150).has_value());
    EXPECT_EQ(verify(list + 149)->Path(), "items[2].field2");
    EXPECT_EQ(verify(list + 99)->Path(), "items[1].field1");
    EXPECT_EQ(verify(list - 1)->Path(), "items");
    EXPECT_EQ(verify(list - 1)->MissesBy(), 1u);
}

TEST(Verify, NamesTheEntriesThatGoOverTheBudget)
{
    const TestArena arena(1);
    const std::uint64_t bytes = DecodedSize<VynSubscriptions>({}, arena.Get());
    ExpectTolerated(Verify<VynSubscriptions>({}, arena.Get(), 0), {"entries", FaultKind::OverBudget, {0, 0}, bytes},
                    "entries: reading takes more than 0 bytes of memory");
    EXPECT_FALSE(Verify<VynSubscriptions>({}, arena.Get(), bytes).has_value());
}

TEST(Verify, NamesTheStringOfAnEventThatGoesOverTheBudget)
{
    VynEvent event;
    event.stringArray[5] = std::string(100, 'e');
    const Received<VynEvent> message(event);
    ExpectTolerated(Verify<VynEvent>(message.wire, message.arena.Get(), 100),
                    {"stringArray[5]", FaultKind::OverBudget, message.wire.stringArray[5], 1},
                    "stringArray[5]: reading takes more than 100 bytes of memory");
}

TEST(Verify, SaysWhichOfABadPointerAndTheBudgetComesFirst)
{
    TestArena arena(16, 0, 16);
    const auto verify = [&](const WireOf<Credentials>& wire) { return Verify<Credentials>(wire, arena.Get(), 16); };
    EXPECT_TRUE(verify({{0, 16}, {1, 16}})->Kind() == FaultKind::OverBudget);
    EXPECT_TRUE(verify({{1, 16}, {0, 16}})->Kind() == FaultKind::OutsideArena);
    // A bad pointer takes nothing.
    EXPECT_TRUE(Verify<Credentials>({{1, 16}, {0, 16}}, arena.Get(), 0)->Kind() == FaultKind::OutsideArena);
}

TEST(Verify, CountsWhatIsReservedForIdentifiersBeforeTheirPointerIsTested)
{
    const TestArena arena(32, 0, 32);
    EXPECT_EQ(DecodedSize<VynUpdateIdentifiers>({{0, 32}}, arena.Get()), 512u);
    EXPECT_EQ(DecodedSize<VynUpdateIdentifiers>({{1, 32}}, arena.Get()), 512u);
    EXPECT_EQ(DecodedSize<VynUpdateIdentifiers>({{0, 0xFFFFFFF0}}, nullptr), 0xFFFFFFF00u);
    EXPECT_FALSE(Verify<VynUpdateIdentifiers>({{0, 32}}, arena.Get(), 512).has_value());
    ExpectTolerated(Verify<VynUpdateIdentifiers>({{0, 32}}, arena.Get(), 511),
                    {"identifiers", FaultKind::OverBudget, {0, 32}, 1},
                    "identifiers: reading takes more than 511 bytes of memory");
    ExpectTolerated(Verify<VynUpdateIdentifiers>({{1, 32}}, arena.Get(), 511),
                    {"identifiers", FaultKind::OverBudget, {1, 32}, 1},
                    "identifiers: reading takes more than 511 bytes of memory");
    EXPECT_TRUE(Verify<VynUpdateIdentifiers>({{1, 32}}, arena.Get(), 512)->Kind() == FaultKind::OutsideArena);
}

// --- What reading takes ---

TEST(DecodedSize, CountsAStringFromTheSizeThatDoesNotFitIntoItsObject)
{
    const TestArena arena(32, 0, 32);
    EXPECT_EQ(DecodedSize<FileInfoParams>({{0, 0}}, arena.Get()), 0u);
    EXPECT_EQ(DecodedSize<FileInfoParams>({{0, 15}}, arena.Get()), 0u);
    EXPECT_EQ(DecodedSize<FileInfoParams>({{0, 16}}, arena.Get()), 17u);
    EXPECT_EQ(DecodedSize<FileInfoParams>({{0, 32}}, arena.Get()), 33u);
}

TEST(DecodedSize, CountsNothingForABadPointerAndGoesOnBehindIt)
{
    const TestArena arena(32, 0, 32);
    EXPECT_EQ(DecodedSize<Credentials>({{1, 32}, {0, 32}}, arena.Get()), 33u);
    EXPECT_EQ(DecodedSize<RawVynParam>({{0, 32}, {1, 32}}, arena.Get()), 33u);
    EXPECT_EQ(DecodedSize<ProductUpdCfgArray>({{1, 32}}, arena.Get()), 0u);
    EXPECT_EQ(DecodedSize<ProductUpdCfgArray>({{0, 17}}, arena.Get()), 0u);
    EXPECT_EQ(DecodedSize<LicenseInfo>({{0, 44}, {0, 44}}, arena.Get()), 0u);
    EXPECT_EQ(DecodedSize<VynSubscription>({0, {1, 32}}, arena.Get()), 0u);
    EXPECT_EQ(DecodedSize<Credentials>({{0, 32}, {0, 32}}, nullptr), 0u);
    WireOf<VynEvent> event{};
    event.field7 = {0, 33};
    event.field6 = {1, 31};
    event.severity = 9;
    EXPECT_EQ(DecodedSize<VynEvent>(event, arena.Get()), 32u);
    WireOf<AppInfo> info{};
    info.productInfo.updCfgArray.items = {1, 32};
    info.deviceInfo.field15 = {0, 32};
    EXPECT_EQ(DecodedSize<AppInfo>(info, arena.Get()), 33u);
}

TEST(DecodedSize, CountsNothingForAnAbsentValue)
{
    TestArena arena(100, 0, 100);
    arena.Put(0, BytesOf(zt_ptr_t{20, 80}));
    EXPECT_EQ(DecodedSize<LicenseKeyInfo>({}, arena.Get()), 0u);
}

TEST(DecodedSize, CountsAnOptionalsValueOnceHoweverManyElementsItHas)
{
    TestArena arena(100, 0, 100);
    arena.Put(0, BytesOf(zt_ptr_t{20, 80}) + BytesOf(zt_ptr_t{20, 70}));
    WireOf<LicenseKeyInfo> wire{};
    wire.field8 = {0, 16};
    EXPECT_EQ(DecodedSize<LicenseKeyInfo>(wire, arena.Get()), 81u);
    EXPECT_EQ(CountAllocations([&] { CastFromZt(wire, arena.Get()); }).bytes, 81u);
}

TEST(DecodedSize, CountsEachOfTheElementsThatPointToTheSameBytes)
{
    TestArena arena(17024, 0, 17024);
    for (std::size_t i = 0; i < 1000; ++i)
        Put(arena, i * 16, {0, 0}), Put(arena, i * 16 + 8, {16000, 1024});
    const WireOf<std::vector<RawVynParam>> wire{{0, 16000}};

    static_assert(sizeof(RawVynParam) == 56);
    EXPECT_EQ(DecodedSize<std::vector<RawVynParam>>(wire, arena.Get()), 1'080'000u);
    EXPECT_EQ(CountAllocations([&] { CastFromZt(wire, arena.Get()); }).bytes, 1'080'000u);
}

TEST(DecodedSize, IsAtLeastWhatASetTakesWhateverItsSize)
{
    for (std::uint32_t count = 1; count <= 3000; count += 1 + count / 8) {
        SCOPED_TRACE(count);
        TestArena arena(count * 8 + 3000, 0, count * 8 + 3000);
        for (std::uint32_t i = 0; i < count; ++i)
            Put(arena, i * 8, {count * 8, i}); // all of them different in length
        const WireOf<VynSubscription> wire{0, {0, count * 8}};
        const std::uint64_t said = DecodedSize<VynSubscription>(wire, arena.Get());
        const std::uint64_t taken = CountAllocations([&] { CastFromZt(wire, arena.Get()); }).bytes;
        EXPECT_GE(said, taken);
        EXPECT_LE(static_cast<double>(said), 2.5 * static_cast<double>(taken));
    }
}

TEST(DecodedSize, CountsARepeatedElementOfASetAsIfItWereKept)
{
    TestArena arena(116, 0, 116);
    Put(arena, 0, {16, 100});
    Put(arena, 8, {16, 100});
    // A string and seven words, sixteen words for the first of them, and its bytes.
    const std::uint64_t once = DecodedSize<VynSubscription>({0, {0, 8}}, arena.Get());
    EXPECT_EQ(once, sizeof(std::string) + 7 * 8 + 16 * 8 + 101);
    const std::uint64_t twice = DecodedSize<VynSubscription>({0, {0, 16}}, arena.Get());
    EXPECT_GE(twice, once + 101 + sizeof(std::string));
}

TEST(Verify, RefusesMessagesThatAskForGigabytesBeforeAnyOfThemIsSpent)
{
    constexpr std::uint32_t size = 128 * 1024;
    TestArena arena(size, 0, size);
    for (std::uint32_t i = 0; i < size / 8; ++i)
        Put(arena, i * 8, {0, size});
    const WireOf<std::vector<RawVynParam>> wire{{0, size}};

    const std::clock_t before = std::clock();
    EXPECT_EQ(DecodedSize<std::vector<RawVynParam>>(wire, arena.Get()), 8192 * (56 + 131072 + 131073ull));
    ExpectTolerated(Verify<std::vector<RawVynParam>>(wire, arena.Get(), 1 << 30),
                    {"params[4094].value", FaultKind::OverBudget, {0, size}, 69'630},
                    "params[4094].value: reading takes more than 1073741824 bytes of memory");
    EXPECT_FALSE(Verify<std::vector<RawVynParam>>(wire, arena.Get()).has_value());
    // Copying that much takes seconds; this, less than a thousandth.
    EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 5);
}

} // namespace
