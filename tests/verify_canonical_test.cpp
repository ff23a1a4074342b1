// Whether a message is, byte for byte, one that a writer writes: what writers write is, and each departure from it is
// told with its place.
#include "counted_allocations.h"

#include "conversion.h"
#include "faults.h"
#include "received.h"

#include <common/verify.h>
#include <common/vyn_connector_common.h>

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;
using namespace faults;

static_assert(noexcept(VerifyCanonical<AppInfo>(std::declval<const WireOf<AppInfo>&>(), nullptr)));
static_assert(noexcept(VerifyCanonical<VynEvent>(std::declval<const WireOf<VynEvent>&>(), nullptr)));
static_assert(noexcept(VerifyCanonical<VynSubscriptions>(std::declval<const WireOf<VynSubscriptions>&>(), nullptr)));

// An arena that holds just these bytes, all of them in use.
class Holding {
public:
    explicit Holding(std::string_view notation, std::size_t startMod16 = 0) : Holding(Bytes(notation), startMod16) {}
    explicit Holding(const Bytes& bytes, std::size_t startMod16 = 0) : arena(bytes.size(), startMod16, bytes.size())
    {
        arena.Put(0, bytes);
    }
    const zt_arena* Get() const { return arena.Get(); }

private:
    TestArena arena;
};

Bytes Zeros(std::size_t count)
{
    return Bytes("00*" + std::to_string(count));
}

Bytes Of(zt_ptr_t pointer)
{
    return BytesOf(pointer);
}

// --- Every record ---

template <typename Record>
class EveryRecord : public testing::Test {
};
TYPED_TEST_SUITE(EveryRecord, conversion::Records, );

using any_record::OfSize;

TYPED_TEST(EveryRecord, IsCanonicalAsItsWriterWritesItWhereverTheArenaStarts)
{
    for (const std::uint64_t size : {0u, 1u, 2u, 3u, 5u, 17u, 200u})
        for (std::size_t start = 0; start < 16; ++start) {
            const Received<TypeParam> message(OfSize<TypeParam>(size), start);
            std::optional<Fault> fault;
            const Allocations made =
                CountAllocations([&] { fault = VerifyCanonical<TypeParam>(message.wire, message.arena.Get()); });
            EXPECT_FALSE(fault.has_value()) << size << " at " << start << ": " << fault->Text();
            EXPECT_EQ(made.count, 0u);
        }
}

TYPED_TEST(EveryRecord, IsCanonicalAtItsGreatest)
{
    const Received<TypeParam> message(
        any_record::Make<TypeParam>([](std::uint64_t limit) { return limit > 65536 ? 20 : limit; }));
    const std::optional<Fault> fault = VerifyCanonical<TypeParam>(message.wire, message.arena.Get());
    EXPECT_FALSE(fault.has_value()) << fault->Text();
}

TYPED_TEST(EveryRecord, IsNotCanonicalWithAByteBehindIt)
{
    const Received<TypeParam> message(OfSize<TypeParam>(3));
    const std::uint64_t size = message.arena.Capacity();
    TestArena longer(size + 3, 0, size + 3);
    longer.Put(0, message.arena.Contents());
    ExpectTolerated(VerifyCanonical<TypeParam>(message.wire, longer.Get()), {"", FaultKind::Unowned, {0, 0}, 3},
                    "3 bytes of the arena at offset " + std::to_string(size) + " belong to no field");
}

TYPED_TEST(EveryRecord, IsNotCanonicalWithATopThatIsTooLow)
{
    const Received<TypeParam> message(OfSize<TypeParam>(3));
    if (message.arena.Capacity() == 0) return;
    zt_arena arena = *message.arena.Get();
    --arena.top;
    const std::optional<Fault> fault = VerifyCanonical<TypeParam>(message.wire, &arena);
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(fault->MissesBy(), 1u);
    EXPECT_TRUE(fault->Kind() ==
                (std::is_same_v<TypeParam, VynEvent> ? FaultKind::OutsideUsedPart : FaultKind::BehindTop));
}

TYPED_TEST(EveryRecord, AsksForAnArenaWhereItsReaderDoes)
{
    const WireOf<TypeParam> wire{};
    EXPECT_EQ(VerifyCanonical<TypeParam>(wire, nullptr).has_value(), Verify<TypeParam>(wire, nullptr).has_value());
}

TEST(VerifyCanonical, FindsWhatReadersRefuse)
{
    const Holding arena("'user'");
    ExpectOutOfRangeFault(VerifyCanonical<Credentials>({{0, 4}, {4, 1}}, arena.Get()),
                          {"password", FaultKind::OutsideArena, {4, 1}, 1}, stringCodec);
    ExpectOutOfRangeFault(VerifyCanonical<ProductUpdCfgArray>({{0, 3}}, arena.Get()),
                          {"items", FaultKind::PartOfElement, {0, 3}, 3}, vectorCodec);
    ExpectOutOfRangeFault(VerifyCanonical<LicenseInfo>({{5, 0}, {0, 0}}, arena.Get()),
                          {"keyInfo1", FaultKind::OutsideArena, {5, 0}, 1}, optionalCodec);
    ExpectNullArenaFault(VerifyCanonical<Credentials>({}, nullptr), "userName", {0, 0}, stringCodec, 39);
    ExpectNullArenaFault(VerifyCanonical<VynUpdateIdentifiers>({}, nullptr), "identifiers", {0, 0}, rangeCodec, 49);
}

TEST(VerifyCanonical, FindsWhatReadersRefuseBeforeALimit)
{
    const Holding arena(Zeros(16));
    ExpectOutOfRangeFault(VerifyCanonical<ProductUpdCfgArray>({{0, 33 * 16}}, arena.Get()),
                          {"items", FaultKind::OutsideArena, {0, 33 * 16}, 32 * 16}, vectorCodec);
    WireOf<VynEvent> event{};
    event.field1 = {0, 129};
    ExpectFault(VerifyCanonical<VynEvent>(event, arena.Get()), {"field1", FaultKind::OutsideUsedPart, {0, 129}, 113},
                "std::out_of_range", "vyn event: field1: zt_arena does not contain an element with the address 0");
}

TEST(VerifyCanonical, GoesInTheOrderOfTheWireAndNotOfTheReader)
{
    const Holding arena("");
    EXPECT_EQ(VerifyCanonical<RawVynParam>({{0, 1}, {0, 1}}, arena.Get())->Path(), "name");
    EXPECT_EQ(Verify<RawVynParam>({{0, 1}, {0, 1}}, arena.Get())->Path(), "value");
}

// --- Over a limit ---

TEST(VerifyCanonical, FindsATextOverItsLimit)
{
    const Holding arena("'u'*129");
    EXPECT_FALSE(VerifyCanonical<Credentials>({{0, 128}, {128, 1}}, arena.Get()).has_value());
    ExpectTolerated(VerifyCanonical<Credentials>({{0, 129}, {129, 0}}, arena.Get()),
                    {"userName", FaultKind::OverLimit, {0, 129}, 1}, "userName: 1 more than the 128 that are written");
}

TEST(VerifyCanonical, FindsABlobOverItsLimit)
{
    const Holding arena(Zeros(65537));
    ExpectTolerated(VerifyCanonical<FileChunk>({{0, 0}, 0, 0, {0, 65537}}, arena.Get()),
                    {"data", FaultKind::OverLimit, {0, 65537}, 1}, "data: 1 more than the 65536 that are written");
}

TEST(VerifyCanonical, FindsAListOverItsLimit)
{
    const Holding arena(Zeros(33 * 16));
    ExpectTolerated(VerifyCanonical<ProductUpdCfgArray>({{0, 33 * 16}}, arena.Get()),
                    {"items", FaultKind::OverLimit, {0, 33 * 16}, 1}, "items: 1 more than the 32 that are written");
}

TEST(VerifyCanonical, FindsASetOverItsLimit)
{
    const Holding arena(Zeros(129 * 8));
    ExpectTolerated(VerifyCanonical<VynSubscription>({0, {0, 129 * 8}}, arena.Get()),
                    {"eventTypes", FaultKind::OverLimit, {0, 129 * 8}, 1},
                    "eventTypes: 1 more than the 128 that are written");
}

TEST(VerifyCanonical, FindsIdentifiersOverTheirLimitOrNone)
{
    const Holding arena(Zeros(11 * 16));
    ExpectTolerated(VerifyCanonical<VynUpdateIdentifiers>({{0, 11 * 16}}, arena.Get()),
                    {"identifiers", FaultKind::OverLimit, {0, 11 * 16}, 1},
                    "identifiers: 1 more than the 10 that are written");
    ExpectTolerated(VerifyCanonical<VynUpdateIdentifiers>({{0, 0}}, arena.Get()),
                    {"identifiers", FaultKind::Empty, {0, 0}, 1}, "identifiers: empty");
    // Wherever they would stand.
    ExpectTolerated(VerifyCanonical<VynUpdateIdentifiers>({{16, 0}}, arena.Get()),
                    {"identifiers", FaultKind::Empty, {16, 0}, 1}, "identifiers: empty");
}

TEST(VerifyCanonical, FindsAnOptionalOfTwoElements)
{
    const Holding arena(Zeros(32));
    ExpectTolerated(VerifyCanonical<ServerConnectionParameters>({{}, {}, {}, {0, 32}}, arena.Get()),
                    {"timeouts", FaultKind::OverLimit, {0, 32}, 1}, "timeouts: 1 more than the 1 that are written");
}

TEST(VerifyCanonical, FindsAnEventsStringOverItsLimit)
{
    WireOf<VynEvent> wire{};
    const Holding arena("'e'*70");
    wire.field1 = {0, 1};
    wire.field3 = {1, 1};
    wire.field4 = {2, 1};
    wire.field5 = {3, 65};
    ExpectTolerated(VerifyCanonical<VynEvent>(wire, arena.Get()), {"field5", FaultKind::OverLimit, {3, 65}, 1},
                    "field5: 1 more than the 64 that are written");
}

// --- Not where a writer puts it ---

TEST(VerifyCanonical, FindsStringsThatChangedPlaces)
{
    const Holding arena("'passuser'");
    ExpectTolerated(VerifyCanonical<Credentials>({{4, 4}, {0, 4}}, arena.Get()),
                    {"userName", FaultKind::Misplaced, {4, 4}, 4}, "userName: at offset 4 of the arena and not at 0");
}

TEST(VerifyCanonical, FindsAStringAByteBehindItsPlace)
{
    const Holding arena("'user' 00 'pass'");
    ExpectTolerated(VerifyCanonical<Credentials>({{0, 4}, {5, 4}}, arena.Get()),
                    {"password", FaultKind::Misplaced, {5, 4}, 1}, "password: at offset 5 of the arena and not at 4");
}

TEST(VerifyCanonical, FindsAnEmptyStringThatIsElsewhere)
{
    const Holding arena("'user'");
    EXPECT_FALSE(VerifyCanonical<Credentials>({{0, 4}, {4, 0}}, arena.Get()).has_value());
    ExpectTolerated(VerifyCanonical<Credentials>({{0, 4}, {0, 0}}, arena.Get()),
                    {"password", FaultKind::Misplaced, {0, 0}, 4}, "password: at offset 0 of the arena and not at 4");
}

TEST(VerifyCanonical, FindsTwoFieldsThatShareTheirBytes)
{
    const Holding arena("'user'");
    ExpectTolerated(VerifyCanonical<Credentials>({{0, 4}, {0, 4}}, arena.Get()),
                    {"password", FaultKind::Misplaced, {0, 4}, 4}, "password: at offset 0 of the arena and not at 4");
}

TEST(VerifyCanonical, FindsTwoElementsThatShareTheirBytes)
{
    const Holding arena(Of({32, 2}) + Of({34, 1}) + Of({32, 2}) + Of({35, 0}) + Bytes("'abc'"));
    ExpectTolerated(VerifyCanonical<ProductUpdCfgArray>({{0, 32}}, arena.Get()),
                    {"items[1].field1", FaultKind::Misplaced, {32, 2}, 3},
                    "items[1].field1: at offset 32 of the arena and not at 35");
}

TEST(VerifyCanonical, FindsAListThatIsNotAlignedAsItsAddressAsks)
{
    const Received<ProductUpdCfgArray> message(ProductUpdCfgArray{{{"", ""}}}, 3);
    EXPECT_EQ(message.wire.items, (zt_ptr_t{1, 16}));
    const Holding elsewhere(message.arena.Contents(), 0);
    ExpectTolerated(VerifyCanonical<ProductUpdCfgArray>(message.wire, elsewhere.Get()),
                    {"items", FaultKind::Misplaced, {1, 16}, 1}, "items: at offset 1 of the arena and not at 0");
}

TEST(VerifyCanonical, FindsAnEventsStringThatIsElsewhere)
{
    Received<VynEvent> event(conversion::Full<VynEvent>());
    event.wire.field3.offset = 19;
    ExpectTolerated(VerifyCanonical<VynEvent>(event.wire, event.arena.Get()),
                    {"field3", FaultKind::Misplaced, {19, 20}, 1}, "field3: at offset 19 of the arena and not at 20");
    event.wire.field3.offset = 21;
    ExpectTolerated(VerifyCanonical<VynEvent>(event.wire, event.arena.Get()),
                    {"field3", FaultKind::Misplaced, {21, 20}, 1}, "field3: at offset 21 of the arena and not at 20");
    event.wire.field3.offset = 20;
    event.wire.stringArray[8].offset -= 20;
    ExpectTolerated(VerifyCanonical<VynEvent>(event.wire, event.arena.Get()),
                    {"stringArray[8]", FaultKind::Misplaced, {260, 20}, 20},
                    "stringArray[8]: at offset 260 of the arena and not at 280");
}

TEST(VerifyCanonical, FindsBytesBehindTheTop)
{
    TestArena arena(7, 0, 4);
    arena.Put(0, "'userpwd'");
    ExpectTolerated(VerifyCanonical<Credentials>({{0, 4}, {4, 3}}, arena.Get()),
                    {"password", FaultKind::BehindTop, {4, 3}, 3},
                    "password: 3 bytes behind the used part of the arena");
    ExpectTolerated(VerifyCanonical<Credentials>({{0, 4}, {4, 1}}, arena.Get()),
                    {"password", FaultKind::BehindTop, {4, 1}, 1},
                    "password: 1 byte behind the used part of the arena");
}

TEST(VerifyCanonical, FindsBytesBehindTheTopBeforeTheGapBeforeThem)
{
    TestArena arena(24, 0, 23);
    arena.Put(0, "'srv' 01 00*4 01 00*7 02 00*7");
    ExpectTolerated(VerifyCanonical<ServerConnectionParameters>({{0, 3}, {0, 0}, {0, 0}, {8, 16}}, arena.Get()),
                    {"timeouts", FaultKind::BehindTop, {8, 16}, 1},
                    "timeouts: 1 byte behind the used part of the arena");
}

TEST(VerifyCanonical, FindsBytesBeforeTheFirstField)
{
    const Holding arena("00*8 'user'");
    ExpectTolerated(VerifyCanonical<Credentials>({{8, 4}, {12, 0}}, arena.Get()),
                    {"userName", FaultKind::Misplaced, {8, 4}, 8}, "userName: at offset 8 of the arena and not at 0");
}

TEST(VerifyCanonical, FindsBytesThatNoFieldOwns)
{
    const Holding arena("'user!!'");
    ExpectTolerated(VerifyCanonical<Credentials>({{0, 4}, {4, 0}}, arena.Get()), {"", FaultKind::Unowned, {0, 0}, 2},
                    "2 bytes of the arena at offset 4 belong to no field");
    ExpectTolerated(VerifyCanonical<VynServerData>({7}, arena.Get()), {"", FaultKind::Unowned, {0, 0}, 6},
                    "6 bytes of the arena at offset 0 belong to no field");
    ExpectTolerated(VerifyCanonical<Credentials>({{0, 4}, {4, 1}}, arena.Get()), {"", FaultKind::Unowned, {0, 0}, 1},
                    "1 byte of the arena at offset 5 belongs to no field");
}

// --- What is to be zero ---

TEST(VerifyCanonical, FindsAGapThatIsNotZero)
{
    const auto verify = [](std::string_view gap) {
        const Holding arena(Bytes("'srv'") + Bytes(gap) + Bytes("01 00*7 02 00*7"));
        return VerifyCanonical<ServerConnectionParameters>({{0, 3}, {0, 0}, {0, 0}, {8, 16}}, arena.Get());
    };
    EXPECT_FALSE(verify("00*5").has_value());
    for (const char* gap : {"01 00*4", "00 00 80 00 00", "00*4 FF"})
        ExpectTolerated(verify(gap), {"timeouts", FaultKind::Gap, {8, 16}, 5},
                        "timeouts: the gap before it, 5 bytes at offset 3, is not zero");
}

TEST(VerifyCanonical, FindsPaddingThatIsNotZero)
{
    const Holding none("");
    WireOf<ClientCertParams> wire;
    for (const std::size_t at : {17u, 18u, 19u}) {
        std::memset(&wire, 0, sizeof(wire));
        EXPECT_FALSE(VerifyCanonical<ClientCertParams>(wire, none.Get()).has_value());
        reinterpret_cast<std::uint8_t*>(&wire)[at] = 0x40;
        ExpectTolerated(VerifyCanonical<ClientCertParams>(wire, none.Get()), {"padding", FaultKind::Padding, {0, 0}, 0},
                        "padding: not zero");
    }
}

TEST(VerifyCanonical, FindsPaddingOfAnElementThatIsNotZero)
{
    for (const std::size_t at : {10u, 11u}) {
        Received<ServerConnectionParameters> message(conversion::Full<ServerConnectionParameters>());
        message.arena.Put(message.wire.proxy.offset + at, "01");
        ExpectTolerated(VerifyCanonical<ServerConnectionParameters>(message.wire, message.arena.Get()),
                        {"proxy.padding", FaultKind::Padding, {0, 0}, 0}, "proxy.padding: not zero");
    }
}

TEST(VerifyCanonical, FindsAFlagThatIsNeither0Nor1)
{
    const Holding none("");
    WireOf<ClientCertParams> wire;
    std::memset(&wire, 0, sizeof(wire));
    const auto verify = [&](std::uint8_t flag) {
        wire.field3 = flag;
        return VerifyCanonical<ClientCertParams>(wire, none.Get());
    };
    EXPECT_FALSE(verify(0).has_value());
    EXPECT_FALSE(verify(1).has_value());
    for (const int flag : {2, 3, 0x81, 0xFF})
        ExpectTolerated(verify(static_cast<std::uint8_t>(flag)), {"field3", FaultKind::Flag, {0, 0}, 0},
                        "field3: neither 0 nor 1");
}

TEST(VerifyCanonical, FindsAnAbsentValueWithAnOffset)
{
    const Holding arena("'addr'");
    ExpectTolerated(VerifyCanonical<ServerConnectionParameters>({{0, 4}, {0, 0}, {4, 0}, {0, 0}}, arena.Get()),
                    {"ssl", FaultKind::Absent, {4, 0}, 4}, "ssl: absent, with the offset 4");
}

// --- Sets and entries ---

TEST(VerifyCanonical, FindsARepeatedElementOfASet)
{
    const auto verify = [](std::string_view names) {
        const Holding arena(Of({24, 2}) + Of({26, 2}) + Of({28, 2}) + Bytes(names));
        return VerifyCanonical<VynSubscription>({3, {0, 24}}, arena.Get());
    };
    EXPECT_FALSE(verify("'aabbcc'").has_value());
    EXPECT_FALSE(verify("'ccbbaa'").has_value());
    ExpectTolerated(verify("'aabbbb'"), {"eventTypes[2]", FaultKind::Repeated, {0, 0}, 0},
                    "eventTypes[2]: occurs before");
    ExpectTolerated(verify("'aabbaa'"), {"eventTypes[2]", FaultKind::Repeated, {0, 0}, 0},
                    "eventTypes[2]: occurs before");
    ExpectTolerated(verify("'bbbbaa'"), {"eventTypes[1]", FaultKind::Repeated, {0, 0}, 0},
                    "eventTypes[1]: occurs before");
}

TEST(VerifyCanonical, FindsARepeatedSeverity)
{
    const Holding none("");
    const auto verify = [&](std::int32_t first, std::int32_t second, std::int32_t third) {
        return VerifyCanonical<VynSubscriptions>({{{first, {}}, {second, {}}, {third, {}}, {0, {}}}}, none.Get());
    };
    EXPECT_FALSE(verify(3, 1, 2).has_value());
    EXPECT_FALSE(verify(3, 0x103, 77).has_value());
    ExpectTolerated(verify(3, 3, 2), {"entries[1]", FaultKind::Repeated, {0, 0}, 0}, "entries[1]: occurs before");
    ExpectTolerated(verify(3, 1, 3), {"entries[2]", FaultKind::Repeated, {0, 0}, 0}, "entries[2]: occurs before");
    ExpectTolerated(verify(3, 1, 1), {"entries[2]", FaultKind::Repeated, {0, 0}, 0}, "entries[2]: occurs before");
    ExpectTolerated(verify(3, 3, 3), {"entries[1]", FaultKind::Repeated, {0, 0}, 0}, "entries[1]: occurs before");
}

TEST(VerifyCanonical, FindsAUsedEntryBehindAnUnusedOne)
{
    const Holding arena(Of({8, 1}) + Bytes("'a'"));
    EXPECT_FALSE(VerifyCanonical<VynSubscriptions>({{{1, {0, 8}}, {0, {0, 0}}, {0, {0, 0}}, {0, {0, 0}}}}, arena.Get())
                     .has_value());
    ExpectTolerated(
        VerifyCanonical<VynSubscriptions>({{{1, {0, 8}}, {0, {0, 0}}, {0, {0, 0}}, {2, {0, 0}}}}, arena.Get()),
        {"entries[1]", FaultKind::UnusedEntry, {0, 0}, 0}, "entries[1]: unused, with used ones behind it");
}

TEST(VerifyCanonical, TakesSeverity0WithoutNamesForAnUnusedEntryOnlyWhereTheArenaIsInUse)
{
    // Written first, severity 0 without names is all zero.
    for (const std::size_t start : {0u, 4u, 8u, 12u}) {
        const Holding aligned(Of({8, 1}) + Bytes("'a'"), start);
        EXPECT_FALSE(
            VerifyCanonical<VynSubscriptions>({{{0, {0, 0}}, {1, {0, 8}}, {0, {0, 0}}, {0, {0, 0}}}}, aligned.Get())
                .has_value());
    }
    // Also behind another one without names, which leaves the arena as it was.
    const Holding none("");
    EXPECT_FALSE(VerifyCanonical<VynSubscriptions>({{{3, {0, 0}}, {0, {0, 0}}, {2, {0, 0}}, {0, {0, 0}}}}, none.Get())
                     .has_value());
    // Once; what is behind it is unused.
    const Holding arena(Of({8, 1}) + Bytes("'a'"));
    ExpectTolerated(
        VerifyCanonical<VynSubscriptions>({{{0, {0, 0}}, {0, {0, 0}}, {1, {0, 8}}, {0, {0, 0}}}}, arena.Get()),
        {"entries[1]", FaultKind::UnusedEntry, {0, 0}, 0}, "entries[1]: unused, with used ones behind it");
    // Where the start is not aligned, the array without elements would stand at another offset.
    const Holding odd(Bytes("00*3") + Of({11, 1}) + Bytes("'a'"), 1);
    EXPECT_FALSE(VerifyCanonical<VynSubscriptions>({{{0, {3, 0}}, {1, {3, 8}}, {0, {0, 0}}, {0, {0, 0}}}}, odd.Get())
                     .has_value());
    ExpectTolerated(
        VerifyCanonical<VynSubscriptions>({{{0, {0, 0}}, {1, {3, 8}}, {0, {0, 0}}, {0, {0, 0}}}}, odd.Get()),
        {"entries[0]", FaultKind::UnusedEntry, {0, 0}, 0}, "entries[0]: unused, with used ones behind it");
}

TEST(VerifyCanonical, IsWhatTheWriterMakesOfSeverity0WithoutNamesAnywhereAmongOthers)
{
    for (std::size_t start = 0; start < 4; ++start)
        for (int others = 0; others < 4; ++others) {
            VynSubscriptions subscriptions;
            subscriptions.emplace(VynEventSeverity::Severity0, VynSubscription::second_type());
            for (int i = 1; i <= others; ++i)
                subscriptions.emplace(static_cast<VynEventSeverity>(i), VynSubscription::second_type{"ab", "c"});
            const Received<VynSubscriptions> message(subscriptions, start);
            EXPECT_FALSE(VerifyCanonical<VynSubscriptions>(message.wire, message.arena.Get()).has_value());
        }
}

// --- Events ---

TEST(VerifyCanonical, LeavesTheByteOfAnEventsEmptyStringFree)
{
    const Received<VynEvent> event(VynEvent{});
    EXPECT_EQ(event.arena.Contents(), Bytes("A5*15"));
    EXPECT_FALSE(VerifyCanonical<VynEvent>(event.wire, event.arena.Get()).has_value());
}

TEST(VerifyCanonical, FindsASeverityOfAnEventThatIsTooHigh)
{
    Received<VynEvent> event(VynEvent{});
    event.wire.severity = 3;
    EXPECT_FALSE(VerifyCanonical<VynEvent>(event.wire, event.arena.Get()).has_value());
    event.wire.severity = 4;
    ExpectFault(VerifyCanonical<VynEvent>(event.wire, event.arena.Get()), {"severity", FaultKind::Severity, {0, 0}, 1},
                "std::out_of_range", "vyn event: severity: 4 is greater than 3");
}

TEST(VerifyCanonical, FindsAnEventsStringPastTheTop)
{
    Received<VynEvent> event(VynEvent{});
    event.wire.stringArray[2] = {8, 8};
    ExpectFault(VerifyCanonical<VynEvent>(event.wire, event.arena.Get()),
                {"stringArray[2]", FaultKind::OutsideUsedPart, {8, 8}, 1}, "std::out_of_range",
                "vyn event: stringArray[2]: zt_arena does not contain an element with the address 8");
}

TEST(VerifyCanonical, FindsThatNothingLiesInAnArenaOfNullAddresses)
{
    const zt_arena arena{};
    EXPECT_TRUE(VerifyCanonical<Credentials>({}, &arena).has_value());
    EXPECT_FALSE(VerifyCanonical<VynServerData>({7}, &arena).has_value());
}

} // namespace
