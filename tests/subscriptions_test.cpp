// Subscriptions: a severity with the names of its event types, four of them inline without a count, and the same beside
// a hash. The names of a set travel in the set's own order, so what is expected is laid out in the order of the set.
#include <common/subscriptions.h>

#include "record_test.h"

namespace {

using vyn_connector::VynEventSeverity;
using vyn_connector::VynSubscription;
using vyn_connector::VynSubscriptions;
using vyn_connector::VynSubscriptionsWithHash;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;

using Names = std::unordered_set<std::string>;
using OneWire = tq_vyn_connector_VynTypes_VynSubscription;
using MapWire = tq_vyn_connector_VynTypes_VynSubscriptions;
using HashWire = tq_vyn_connector_VynTypes_VynSubscriptionsWithHash;

constexpr const char* tooManySeverities = "vyn subscriptions: Vyn event severity types more than 4";

constexpr VynEventSeverity severity0 = VynEventSeverity::Severity0;
constexpr VynEventSeverity severity1 = VynEventSeverity::Severity1;
constexpr VynEventSeverity severity2 = VynEventSeverity::Severity2;
constexpr VynEventSeverity severity3 = VynEventSeverity::Severity3;

// --- What never changes ---

static_assert(std::is_enum_v<VynEventSeverity>);
static_assert(std::is_same_v<std::underlying_type_t<VynEventSeverity>, std::int32_t>);
static_assert(static_cast<int>(severity0) == 0 && static_cast<int>(severity1) == 1);
static_assert(static_cast<int>(severity2) == 2 && static_cast<int>(severity3) == 3);
static_assert(std::is_same_v<VynSubscription, std::pair<VynEventSeverity, Names>>);
static_assert(std::is_same_v<VynSubscriptionsWithHash, std::pair<unsigned long, VynSubscriptions>>);

PIN_WIRE(OneWire, 12, 4);
PIN_WIRE_FIELD(OneWire, 0, std::int32_t, severity);
PIN_WIRE_FIELD(OneWire, 4, zt_ptr_t, eventTypes);

PIN_WIRE(MapWire, 48, 4);
PIN_WIRE_FIELD(MapWire, 0, OneWire[4], entries);
static_assert(offsetof(MapWire, entries[1]) == 12 && offsetof(MapWire, entries[2]) == 24);
static_assert(offsetof(MapWire, entries[3]) == 36);

PIN_WIRE(HashWire, 56, 8);
PIN_WIRE_FIELD(HashWire, 0, std::uint64_t, hash);
PIN_WIRE_FIELD(HashWire, 8, MapWire, subscriptions);

// --- Helpers ---

// Adds an entry to the message: its severity, 0 to 9, its set, and the names that follow. Their parts are called after
// the severity: "set2", "set2.0", "set2.1".
void Append(layout::Message& message, VynEventSeverity severity, const Names& names)
{
    const std::string number = std::to_string(static_cast<int>(severity));
    message.wire += "0" + number + " 00*3 [set" + number + "] ";
    const std::size_t set = message.parts.size();
    message.parts.push_back({"set" + number, layout::Set, ""});
    for (const std::string& name : names) {
        const std::string part = "set" + number + "." + std::to_string(message.parts.size() - set - 1);
        message.parts[set].content += "[" + part + "] ";
        message.parts.push_back({part, layout::Text, name.empty() ? "" : "'" + name + "'"});
    }
}

layout::Message MessageOf(const VynSubscription& subscription)
{
    layout::Message message("", {});
    Append(message, subscription.first, subscription.second);
    return message;
}

layout::Message MessageOf(const VynSubscriptions& subscriptions)
{
    layout::Message message("", {});
    for (const auto& [severity, names] : subscriptions)
        Append(message, severity, names);
    message.wire += "00*" + std::to_string((4 - subscriptions.size()) * 12);
    return message;
}

layout::Message MessageOf(const std::string& hash, const VynSubscriptions& subscriptions)
{
    layout::Message message = MessageOf(subscriptions);
    message.wire = hash + " | " + message.wire;
    return message;
}

VynSubscriptions MapOf(const std::vector<VynSubscription>& entries)
{
    VynSubscriptions subscriptions;
    for (const VynSubscription& entry : entries)
        subscriptions.emplace(entry);
    return subscriptions;
}

// `count` different names of `size` bytes each.
Names ManyNames(std::size_t count, std::size_t size)
{
    Names names;
    for (std::size_t i = 0; i < count; ++i) {
        std::string name = std::to_string(i);
        name.resize(size, '.');
        names.insert(name);
    }
    EXPECT_EQ(names.size(), count);
    return names;
}

VynSubscriptions AllSeverities()
{
    return MapOf({{severity0, {"boot"}}, {severity1, {"login", "logout"}}, {severity2, {}}, {severity3, {"a", "bc"}}});
}

// --- One subscription ---

TEST(Subscription, LiesOnTheWireByteByByte)
{
    TestArena arena(20, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(VynSubscription(severity2, {"login"}), arena.Get())),
              Bytes("02 00 00 00 | 04 00 00 00 08 00 00 00"));
    EXPECT_EQ(arena.Contents(), Bytes("A5 00*3 | 0C 00 00 00 05 00 00 00 | 'login' A5*3"));
    EXPECT_EQ(arena.Top(), 17u);
}

TEST(Subscription, TravelsBothWays)
{
    for (const VynSubscription& subscription :
         {VynSubscription(severity0, {"boot"}), VynSubscription(severity1, {"login", "logout", "lock"}),
          VynSubscription(severity3, {"", "x"})}) {
        ExpectWrites(subscription, MessageOf(subscription));
        ExpectReads(subscription, MessageOf(subscription));
        ExpectNeedsAllItsSpace(subscription, MessageOf(subscription));
        ExpectRefusesBadPointers<VynSubscription>(MessageOf(subscription));
    }
}

TEST(Subscription, TravelsWithoutNames)
{
    const VynSubscription subscription(severity3, {});
    ExpectWrites(subscription, MessageOf(subscription));
    ExpectReads(subscription, MessageOf(subscription));
}

TEST(Subscription, CarriesAnySeverity)
{
    TestArena arena(8);
    const auto carries = [&](std::int32_t severity, const char* bytes) {
        const auto value = static_cast<VynEventSeverity>(severity);
        const OneWire wire = CastToZt(VynSubscription(value, {}), arena.Get());
        EXPECT_EQ(BytesOf(wire.severity), Bytes(bytes));
        EXPECT_EQ(CastFromZt(wire, arena.Get()).first, value);
    };
    carries(4, "04 00 00 00");
    carries(0x12345678, "78 56 34 12");
    carries(-1, "FF FF FF FF");
    carries(-2147483647 - 1, "00 00 00 80");
}

TEST(Subscription, Takes128NamesOf128Bytes)
{
    const VynSubscription subscription(severity1, ManyNames(128, 128));
    const layout::Image image(MessageOf(subscription), {0, 1});
    TestArena arena(image.Top(), 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(subscription, arena.Get())), Bytes("01 00 00 00 04 00 00 00 00 04 00 00"));
    EXPECT_EQ(arena.Contents(), image.Contents(image.Top()));
    EXPECT_EQ(arena.Top(), 17412u);
    EXPECT_EQ(CastFromZt(image.WireAs<OneWire>(), arena.Get()), subscription);
}

TEST(Subscription, Refuses129NamesBeforeAnythingIsReserved)
{
    const VynSubscription subscription(severity1, ManyNames(129, 129));
    TestArena arena(20000, 0, 1);

    ExpectOverLimit([&] { CastToZt(subscription, arena.Get()); }, setCodec);

    EXPECT_EQ(arena.Contents(), Bytes("A5*20000"));
    EXPECT_EQ(arena.Top(), 1u);
}

TEST(Subscription, RefusesANameOf129BytesWhenTheNamesBeforeItArePlaced)
{
    const VynSubscription subscription(severity2, {"short", std::string(129, 'x'), "other"});
    const auto position = std::distance(subscription.second.begin(), subscription.second.find(std::string(129, 'x')));
    ExpectTooLarge(subscription, MessageOf(subscription), "set2." + std::to_string(position));

    const VynSubscription longest(severity2, {"short", std::string(128, 'x'), "other"});
    ExpectWrites(longest, MessageOf(longest));
}

TEST(Subscription, ReadsMoreAndLongerNamesThanItWrites)
{
    const VynSubscription many(severity0, ManyNames(129, 3));
    ExpectReads(many, MessageOf(many));
    const VynSubscription large(severity0, {std::string(129, 'x'), std::string(5000, 'y')});
    const layout::Image image(MessageOf(large), {0, 0});
    TestArena arena(image.Top());
    arena.Put(0, image.Contents(arena.Capacity()));
    EXPECT_EQ(layout::Read<VynSubscription>(image, arena), large);
}

TEST(Subscription, CollapsesNamesThatRepeat)
{
    const layout::Message message("01 00*3 [set]", {{"set", layout::Set, "[0] [1] [2] [0]"},
                                                    {"0", layout::Text, "'a'"},
                                                    {"1", layout::Text, "'b'"},
                                                    {"2", layout::Text, "'a'"}});
    ExpectReads(VynSubscription(severity1, {"a", "b"}), message);
}

TEST(Subscription, NeedsAnArena)
{
    ExpectInvalidArgument([] { CastToZt(VynSubscription(severity0, {}), nullptr); }, setCodec, 19);
    ExpectInvalidArgument([] { CastToZt(VynSubscription(severity0, ManyNames(129, 3)), nullptr); }, setCodec, 19);
    ExpectInvalidArgument([] { CastFromZt(OneWire{}, nullptr); }, setCodec, 43);
}

// --- All subscriptions ---

TEST(Subscriptions, LieOnTheWireByteByByte)
{
    TestArena arena(16, 0, 2);

    EXPECT_EQ(BytesOf(CastToZt(MapOf({{severity3, {"go"}}}), arena.Get())),
              Bytes("03 00 00 00 04 00 00 00 08 00 00 00 | 00*12 | 00*12 | 00*12"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*2 00*2 | 0C 00 00 00 02 00 00 00 | 'go' A5*2"));
    EXPECT_EQ(arena.Top(), 14u);
}

TEST(Subscriptions, TravelBothWays)
{
    const VynSubscriptions subscriptions = AllSeverities();
    ExpectWrites(subscriptions, MessageOf(subscriptions));
    ExpectReads(subscriptions, MessageOf(subscriptions));
    ExpectNeedsAllItsSpace(subscriptions, MessageOf(subscriptions));
    ExpectRefusesBadPointers<VynSubscriptions>(MessageOf(subscriptions));
}

TEST(Subscriptions, LeaveTheUnusedEntriesZero)
{
    for (const VynSubscriptions& subscriptions :
         {MapOf({{severity1, {"a"}}}), MapOf({{severity1, {"a"}}, {severity0, {"b", "c"}}}),
          MapOf({{severity3, {}}, {severity1, {"a"}}, {severity2, {"d"}}})}) {
        SCOPED_TRACE(subscriptions.size());
        ExpectWrites(subscriptions, MessageOf(subscriptions));
        ExpectNeedsAllItsSpace(subscriptions, MessageOf(subscriptions));
    }
}

TEST(Subscriptions, ComeBackWithAnEmptySeverity0WhereAnEntryIsUnused)
{
    const VynSubscriptions written = MapOf({{severity1, {"a"}}, {severity3, {"b"}}, {severity2, {"c"}}});
    ExpectReads(MapOf({{severity0, {}}, {severity1, {"a"}}, {severity3, {"b"}}, {severity2, {"c"}}}),
                MessageOf(written));
}

TEST(Subscriptions, KeepTheirOwnSeverity0)
{
    const VynSubscriptions subscriptions = MapOf({{severity0, {"a"}}, {severity3, {"b"}}});
    ExpectReads(subscriptions, MessageOf(subscriptions));
}

TEST(Subscriptions, AreAllZeroWhereThereAreNone)
{
    TestArena arena(8, 0, 1);

    EXPECT_EQ(BytesOf(CastToZt(VynSubscriptions{}, arena.Get())), Bytes("00*48"));
    EXPECT_EQ(BytesOf(CastToZt(VynSubscriptions{}, nullptr)), Bytes("00*48"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*8"));
    EXPECT_EQ(arena.Top(), 1u);
    EXPECT_EQ(CastFromZt(MapWire{}, arena.Get()), MapOf({{severity0, {}}}));
}

TEST(Subscriptions, TakeFourSeveritiesAndNotFive)
{
    VynSubscriptions subscriptions = AllSeverities();
    TestArena roomy(256, 0, 1);
    EXPECT_NO_THROW(CastToZt(subscriptions, roomy.Get()));

    subscriptions.emplace(static_cast<VynEventSeverity>(4), Names{"e"});
    TestArena arena(256, 0, 1);
    ExpectLengthError([&] { CastToZt(subscriptions, arena.Get()); }, tooManySeverities);
    EXPECT_EQ(arena.Contents(), Bytes("A5*256"));
    EXPECT_EQ(arena.Top(), 1u);

    subscriptions.emplace(static_cast<VynEventSeverity>(5), Names{"f"});
    ExpectLengthError([&] { CastToZt(subscriptions, arena.Get()); }, tooManySeverities);
    ExpectLengthError([&] { CastToZt(subscriptions, nullptr); }, tooManySeverities);
}

TEST(Subscriptions, KeepTheFirstEntryOfARepeatedSeverity)
{
    const layout::Message message("02 00*3 [first] | 02 00*3 [second] | 02 00*3 [second] | 01 00*3 [third]",
                                  {{"first", layout::Set, "[a] [b]"},
                                   {"second", layout::Set, "[c]"},
                                   {"third", layout::Set, "[c] [d]"},
                                   {"a", layout::Text, "'a'"},
                                   {"b", layout::Text, "'b'"},
                                   {"c", layout::Text, "'c'"},
                                   {"d", layout::Text, "'d'"}});
    ExpectReads(MapOf({{severity2, {"a", "b"}}, {severity1, {"c", "d"}}}), message);
}

TEST(Subscriptions, RaiseWhatAnEntryRaisesThoughItIsDroppedOrUnused)
{
    TestArena arena(32);
    arena.Put(0, "21 00 00 00 01 00 00 00");
    for (int entry = 0; entry < 4; ++entry) {
        SCOPED_TRACE(entry);
        MapWire wire{};
        wire.entries[entry].eventTypes = {33, 0};
        ExpectOutside([&] { CastFromZt(wire, arena.Get()); }, setCodec, 33);
        wire.entries[entry].eventTypes = {0, 7};
        ExpectOutside([&] { CastFromZt(wire, arena.Get()); }, setCodec, 0);
        wire.entries[entry].eventTypes = {0, 8};
        ExpectOutside([&] { CastFromZt(wire, arena.Get()); }, stringCodec, 33);
    }
}

TEST(Subscriptions, PassOnWhatAnEntryRaisesWhenTheEntriesBeforeItArePlaced)
{
    const std::string tooLong(129, 'x');
    const VynSubscriptions subscriptions = MapOf({{severity0, {"a"}}, {severity1, {tooLong}}, {severity2, {"b"}}});
    ExpectTooLarge(subscriptions, MessageOf(subscriptions), "set1.0");
}

TEST(Subscriptions, WriteAnySeverity)
{
    TestArena arena(8);
    EXPECT_EQ(BytesOf(CastToZt(MapOf({{static_cast<VynEventSeverity>(-1), {}}}), arena.Get())),
              Bytes("FF FF FF FF 00*8 | 00*36"));
    EXPECT_EQ(BytesOf(CastToZt(MapOf({{static_cast<VynEventSeverity>(4), {}}}), arena.Get())),
              Bytes("04 00 00 00 00*8 | 00*36"));
}

TEST(Subscriptions, ReadAnySeverity)
{
    TestArena arena(8);
    MapWire wire{};
    wire.entries[0].severity = -1;
    wire.entries[1].severity = 4;
    wire.entries[2].severity = 0x12345678;
    wire.entries[3].severity = -2147483647 - 1;

    EXPECT_EQ(CastFromZt(wire, arena.Get()), MapOf({{static_cast<VynEventSeverity>(-1), {}},
                                                    {static_cast<VynEventSeverity>(4), {}},
                                                    {static_cast<VynEventSeverity>(0x12345678), {}},
                                                    {static_cast<VynEventSeverity>(-2147483647 - 1), {}}}));
}

TEST(Subscriptions, NeedAnArenaWhereThereIsAnEntryAndToBeRead)
{
    ExpectInvalidArgument([] { CastToZt(MapOf({{severity0, {}}}), nullptr); }, setCodec, 19);
    ExpectInvalidArgument([] { CastFromZt(MapWire{}, nullptr); }, setCodec, 43);
}

TEST(Subscriptions, CannotBeReadFromAnArenaWithoutABuffer)
{
    const zt_arena arena{nullptr, nullptr, nullptr};
    ExpectOutside([&] { CastFromZt(MapWire{}, &arena); }, setCodec, 0);
}

// --- With hash ---

TEST(SubscriptionsWithHash, LieOnTheWireByteByByte)
{
    TestArena arena(16, 0, 4);

    EXPECT_EQ(
        BytesOf(CastToZt(VynSubscriptionsWithHash(0x0102030405060708, MapOf({{severity1, {"go"}}})), arena.Get())),
        Bytes("08 07 06 05 04 03 02 01 | 01 00 00 00 04 00 00 00 08 00 00 00 | 00*36"));
    EXPECT_EQ(arena.Contents(), Bytes("A5*4 0C 00 00 00 02 00 00 00 'go' A5*2"));
    EXPECT_EQ(arena.Top(), 14u);
}

TEST(SubscriptionsWithHash, TravelBothWays)
{
    for (const auto& [hash, bytes] : {std::pair(0xFEDCBA9876543210, "10 32 54 76 98 BA DC FE"),
                                      std::pair(0xFFFFFFFFFFFFFFFF, "FF*8"), std::pair(0ul, "00*8")}) {
        const VynSubscriptionsWithHash subscriptions(hash, AllSeverities());
        const layout::Message message = MessageOf(bytes, subscriptions.second);
        ExpectWrites(subscriptions, message);
        ExpectReads(subscriptions, message);
        ExpectNeedsAllItsSpace(subscriptions, message);
        ExpectRefusesBadPointers<VynSubscriptionsWithHash>(message);
    }
}

TEST(SubscriptionsWithHash, ComeBackWithAnEmptySeverity0WhereAnEntryIsUnused)
{
    ExpectReads(VynSubscriptionsWithHash(7, MapOf({{severity0, {}}, {severity2, {"a"}}})),
                MessageOf("07 00*7", MapOf({{severity2, {"a"}}})));
}

TEST(SubscriptionsWithHash, RefuseFiveSeverities)
{
    VynSubscriptionsWithHash subscriptions(1, AllSeverities());
    subscriptions.second.emplace(static_cast<VynEventSeverity>(4), Names{});
    TestArena arena(256, 0, 1);
    ExpectLengthError([&] { CastToZt(subscriptions, arena.Get()); }, tooManySeverities);
    EXPECT_EQ(arena.Contents(), Bytes("A5*256"));
    EXPECT_EQ(arena.Top(), 1u);
}

TEST(SubscriptionsWithHash, NeedAnArenaWhereThereIsAnEntryAndToBeRead)
{
    ExpectInvalidArgument(
        [] {
            CastToZt(VynSubscriptionsWithHash(1, MapOf({{severity0, {}}})), nullptr);
        },
        setCodec, 19);
    ExpectInvalidArgument([] { CastFromZt(HashWire{}, nullptr); }, setCodec, 43);
    EXPECT_EQ(BytesOf(CastToZt(VynSubscriptionsWithHash(1, {}), nullptr)), Bytes("01 00*55"));
}

TEST(SubscriptionsWithHash, AreEqualWhereHashAndSubscriptionsAre)
{
    ExpectEveryMemberIsCompared(
        VynSubscriptionsWithHash(1, AllSeverities()), [](VynSubscriptionsWithHash& value) { value.first = 2; },
        [](VynSubscriptionsWithHash& value) {
            value.second = MapOf({{severity0, {"boot"}}});
        });
}

// --- The map ---

TEST(SubscriptionsMap, HoldsWhatIsPutIntoIt)
{
    VynSubscriptions subscriptions;
    EXPECT_EQ(subscriptions.size(), 0u);
    EXPECT_TRUE(subscriptions.begin() == subscriptions.end());
    EXPECT_TRUE(subscriptions.find(severity1) == subscriptions.end());

    const auto [position, inserted] = subscriptions.emplace(severity1, Names{"a", "b"});
    EXPECT_TRUE(inserted);
    EXPECT_EQ(position->first, severity1);
    EXPECT_EQ(position->second, (Names{"a", "b"}));
    EXPECT_TRUE(position == subscriptions.find(severity1));

    subscriptions.emplace(VynSubscription(severity3, {"c"}));
    EXPECT_EQ(subscriptions.size(), 2u);
    EXPECT_EQ(subscriptions.find(severity3)->second, Names{"c"});
    EXPECT_TRUE(subscriptions.find(severity2) == subscriptions.end());

    std::vector<VynEventSeverity> severities;
    for (const auto& [severity, names] : subscriptions)
        severities.push_back(severity);
    std::sort(severities.begin(), severities.end());
    EXPECT_EQ(severities, (std::vector{severity1, severity3}));
}

TEST(SubscriptionsMap, KeepsTheEntryThatIsThereAlready)
{
    VynSubscriptions subscriptions;
    subscriptions.emplace(severity1, Names{"first"});

    const auto [position, inserted] = subscriptions.emplace(severity1, Names{"second"});

    EXPECT_FALSE(inserted);
    EXPECT_EQ(position->second, Names{"first"});
    EXPECT_EQ(subscriptions.size(), 1u);
}

TEST(SubscriptionsMap, EqualsAnotherWithTheSameEntriesInAnyOrder)
{
    EXPECT_TRUE(MapOf({{severity0, {"a", "b"}}, {severity2, {}}}) == MapOf({{severity2, {}}, {severity0, {"b", "a"}}}));
    EXPECT_FALSE(MapOf({{severity0, {"a", "b"}}, {severity2, {}}}) !=
                 MapOf({{severity2, {}}, {severity0, {"b", "a"}}}));

    const VynSubscriptions one = MapOf({{severity0, {"a"}}});
    for (const VynSubscriptions& other : {MapOf({}), MapOf({{severity1, {"a"}}}), MapOf({{severity0, {"b"}}}),
                                          MapOf({{severity0, {}}}), MapOf({{severity0, {"a"}}, {severity1, {}}})}) {
        EXPECT_FALSE(one == other);
        EXPECT_TRUE(one != other);
    }
}

} // namespace
