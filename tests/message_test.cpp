// Messages that own everything they hold: for every record, Encode gives the bytes of the record's own pair in one
// allocation of just the size, Decode gives the record back, and what the pair raises passes through.
#include "any_record.h"
#include "arena.h"
#include "at_the_end.h"
#include "conversion.h"
#include "counted_allocations.h"
#include "errors.h"

#include <common/message.h>

#include <random>
#include <utility>

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;
using any_record::ChooseSize;

static_assert(noexcept(ArenaOf(nullptr, 0)));

// --- Every record ---

// An empty range of identifiers cannot be written.
template <typename Record>
constexpr std::uint64_t least = std::is_same_v<Record, VynUpdateIdentifiers> ? 1 : 0;

template <typename Record>
Record Empty()
{
    return any_record::Make<Record>([](std::uint64_t) { return least<Record>; });
}

// Each text, blob and list at its limit, but for the one list of 2147483647 elements.
template <typename Record>
Record Greatest()
{
    return any_record::Make<Record>([](std::uint64_t limit) { return limit > 65536 ? 20 : limit; });
}

template <typename Record>
std::vector<Record> Mixed()
{
    std::mt19937 random(7);
    const ChooseSize choose = [&](std::uint64_t limit) {
        return std::uniform_int_distribution<std::uint64_t>(least<Record>, std::min<std::uint64_t>(limit, 9))(random);
    };
    std::vector<Record> records;
    while (records.size() < 20)
        records.push_back(any_record::Make<Record>(choose));
    return records;
}

template <typename Record>
std::vector<Record> Samples()
{
    std::vector<Record> samples = Mixed<Record>();
    samples.push_back(Empty<Record>());
    samples.push_back(Greatest<Record>());
    return samples;
}

// What a record is read back as: an entry of subscriptions that is not used reads as severity 0 without names.
template <typename Record>
Record AsRead(Record record)
{
    if constexpr (std::is_same_v<Record, VynSubscriptions>) {
        if (record.size() < 4) record.emplace(VynEventSeverity::Severity0, VynSubscription::second_type());
    } else if constexpr (std::is_same_v<Record, VynSubscriptionsWithHash>) {
        record.second = AsRead(record.second);
    }
    return record;
}

template <typename Record>
class EveryRecord : public testing::Test {
};
TYPED_TEST_SUITE(EveryRecord, conversion::Records, );

TYPED_TEST(EveryRecord, ComesBackFromItsMessage)
{
    for (const TypeParam& record : Samples<TypeParam>()) {
        const Message<TypeParam> message = Encode(record);
        EXPECT_TRUE(Decode(message) == AsRead(record));
        EXPECT_TRUE(Decode<TypeParam>(message.wire, message.arena.data(), message.arena.size()) == AsRead(record));
    }
}

TYPED_TEST(EveryRecord, HasTheBytesThatItsOwnPairWritesIntoAnArenaOfTheSize)
{
    for (const TypeParam& record : Samples<TypeParam>()) {
        const Message<TypeParam> message = Encode(record);

        TestArena arena(ArenaSize(record, 0), 8);
        const WireOf<TypeParam> wire = Conversion<TypeParam>::Write(record, arena.Get());
        EXPECT_EQ(arena.Top(), arena.Capacity());
        // The byte that an empty string of an event owns is not written; a new message holds 0 there.
        if constexpr (std::is_same_v<TypeParam, VynEvent>) {
            TestArena zeroed(arena.Capacity(), 8);
            std::memset(zeroed.Start(), 0, zeroed.Capacity());
            Conversion<VynEvent>::Write(record, zeroed.Get());
            EXPECT_EQ(Bytes(message.arena.data(), message.arena.size()), zeroed.Contents());
        } else {
            EXPECT_EQ(Bytes(message.arena.data(), message.arena.size()), arena.Contents());
        }
        EXPECT_EQ(BytesOf(message.wire), BytesOf(wire));
    }
}

TYPED_TEST(EveryRecord, IsEncodedInOneAllocationOfJustTheSizeOrInNone)
{
    for (const TypeParam& record : Samples<TypeParam>()) {
        const std::size_t size = ArenaSize(record, 0);
        std::size_t encoded = 0;
        std::size_t capacity = 0;
        const Allocations made = CountAllocations([&] {
            const Message<TypeParam> message = Encode(record);
            encoded = message.arena.size();
            capacity = message.arena.capacity();
        });
        EXPECT_EQ(encoded, size);
        EXPECT_EQ(capacity, size);
        EXPECT_EQ(made.count, size == 0 ? 0u : 1u);
    }
}

TYPED_TEST(EveryRecord, IsDecodedFromCopiedAndMovedMessagesAlike)
{
    for (const TypeParam& record : Samples<TypeParam>()) {
        Message<TypeParam> message = Encode(record);
        const Message<TypeParam> copy = message;
        const Message<TypeParam> moved = std::move(message);
        Message<TypeParam> assigned;
        assigned = copy;

        EXPECT_TRUE(Decode(copy) == AsRead(record));
        EXPECT_TRUE(Decode(moved) == AsRead(record));
        EXPECT_TRUE(Decode(assigned) == AsRead(record));
    }
}

TYPED_TEST(EveryRecord, IsDecodedWithoutChangingTheBytes)
{
    const Message<TypeParam> message = Encode(conversion::Full<TypeParam>());
    const Message<TypeParam> before = message;
    Decode(message);
    EXPECT_EQ(message.arena, before.arena);
    EXPECT_EQ(BytesOf(message.wire), BytesOf(before.wire));
}

TYPED_TEST(EveryRecord, IsDecodedWithoutALookAtWhatIsBehindIt)
{
    using Wire = WireOf<TypeParam>;
    for (const std::uint64_t size : {0u, 1u, 3u}) {
        const auto record = any_record::OfSize<TypeParam>(size);
        const Message<TypeParam> message = Encode(record);
        const std::size_t used = message.arena.size();
        const AtTheEnd wire(&message.wire, sizeof(Wire));
        const AtTheEnd arena(message.arena.data(), used);
        EXPECT_TRUE(Decode<TypeParam>(*reinterpret_cast<const Wire*>(wire.Begin()), arena.Begin(), used) ==
                    AsRead(record));
    }
}

TYPED_TEST(EveryRecord, IsDecodedFromNullWhereItNeedsNoArena)
{
    const TypeParam record = Empty<TypeParam>();
    const Message<TypeParam> message = Encode(record);
    constexpr bool alwaysNeedsSome =
        std::is_same_v<TypeParam, VynUpdateIdentifiers> || std::is_same_v<TypeParam, VynEvent>;
    EXPECT_EQ(message.arena.empty(), !alwaysNeedsSome);
    if (message.arena.empty()) {
        EXPECT_TRUE(Decode<TypeParam>(message.wire, nullptr, 0) == AsRead(record));
    }
}

// --- What it looks like ---

TEST(Message, OfEmptyCredentialsHasNoArena)
{
    const Message<Credentials> message = Encode(Credentials{"", ""});

    EXPECT_TRUE(message.arena.empty());
    EXPECT_EQ(BytesOf(message.wire), Bytes("00*16"));
    EXPECT_TRUE(Decode(message) == (Credentials{"", ""}));
    EXPECT_TRUE(Decode<Credentials>(message.wire, nullptr, 0) == (Credentials{"", ""}));
}

TEST(Message, OfAProxyHoldsItsStringsOneBehindTheOther)
{
    const Message<ProxySettings> message = Encode(ProxySettings{"a", 0x1234, {"bc", "def"}});

    EXPECT_EQ(BytesOf(message.wire), Bytes("00*4 01 00*3 | 34 12 00 00 | 01 00*3 02 00*3 | 03 00*3 03 00*3"));
    EXPECT_EQ(Bytes(message.arena.data(), message.arena.size()), Bytes("'abcdef'"));
}

TEST(Message, OfARecordWhosePairTakesNoArenaIsItsWireStructure)
{
    const Message<VynServerData> message = Encode(VynServerData{0x0102030405060708});

    EXPECT_TRUE(message.arena.empty());
    EXPECT_EQ(BytesOf(message.wire), Bytes("08 07 06 05 04 03 02 01"));
    EXPECT_EQ(Decode(message).field1, 0x0102030405060708u);
}

TEST(Message, OfAnEmptyEventHoldsAByteForEachString)
{
    const Message<VynEvent> message = Encode(VynEvent{});

    EXPECT_EQ(Bytes(message.arena.data(), message.arena.size()), Bytes("00*15"));
    EXPECT_TRUE(Decode(message) == VynEvent{});
}

// --- What the writer throws ---

TEST(Encode, ThrowsWhatTheWriterThrowsForATextOverItsLimit)
{
    ExpectOverLimit([] { Encode(Credentials{std::string(129, 'u'), ""}); }, stringCodec);
    ExpectOverLimit([] { Encode(FileChunk{0, "", 0, 0, std::vector<std::uint8_t>(65537)}); }, blobCodec);
    ExpectOverLimit([] { Encode(ProductUpdCfgArray{std::vector<ProductUpdCfg>(33)}); }, vectorCodec);
}

TEST(Encode, ThrowsWhatTheWriterThrowsForElevenIdentifiers)
{
    ExpectResultCode([] { Encode(VynUpdateIdentifiers(11)); }, 0x80000046, "0x80000046 (Invalid argument)");
}

TEST(Encode, ThrowsWhatTheWriterThrowsForNoIdentifiers)
{
    ExpectInvalidArgument([] { Encode(VynUpdateIdentifiers()); }, rangeCodec, 21);
}

TEST(Encode, NamesTheStringOfAnEventThatIsTooLong)
{
    VynEvent event;
    event.field5 = std::string(65, 'x');
    ExpectLengthError([&] { Encode(event); }, "vyn event: field5: 65 bytes, at most 64");
}

TEST(Encode, NamesTheIndexOfAnEventsString)
{
    VynEvent event;
    event.stringArray[3] = std::string(513, 'x');
    ExpectLengthError([&] { Encode(event); }, "vyn event: stringArray[3]: 513 bytes, at most 512");
}

TEST(Encode, NamesTheFirstFieldOnTheWireThatIsTooLong)
{
    VynEvent event;
    event.stringArray[8] = std::string(600, 'x');
    event.stringArray[2] = std::string(700, 'x');
    ExpectLengthError([&] { Encode(event); }, "vyn event: stringArray[2]: 700 bytes, at most 512");
    event.field7 = std::string(1025, 'x');
    ExpectLengthError([&] { Encode(event); }, "vyn event: field7: 1025 bytes, at most 1024");
    event.field1 = std::string(129, 'x');
    ExpectLengthError([&] { Encode(event); }, "vyn event: field1: 129 bytes, at most 128");
}

TEST(Encode, NamesNoStringOfAnEventThatIsOfItsLimit)
{
    VynEvent event = any_record::Make<VynEvent>([](std::uint64_t limit) { return limit; });
    event.stringArray[8] += 'x';
    ExpectLengthError([&] { Encode(event); }, "vyn event: stringArray[8]: 513 bytes, at most 512");
    event.stringArray[0] += 'x';
    ExpectLengthError([&] { Encode(event); }, "vyn event: stringArray[0]: 513 bytes, at most 512");
}

TEST(Conversion, OfAnEventThrowsOutOfSpaceWhereItDoesNotFit)
{
    TestArena arena(13); // each of its fourteen strings takes a byte
    ExpectOutOfSpace([&] { Conversion<VynEvent>::Write(VynEvent{}, arena.Get()); });
}

// --- What the reader throws ---

TEST(Decode, ThrowsWhatTheReaderThrowsForAPointerOutside)
{
    Message<Credentials> message = Encode(Credentials{"user", "word"});
    message.wire.password.offset = 5;
    ExpectOutside([&] { Decode(message); }, stringCodec, 5);
    ExpectOutside([&] { Decode<Credentials>(message.wire, message.arena.data(), 3); }, stringCodec, 0);
}

TEST(Decode, ThrowsWhatTheReaderThrowsForAPointerIntoNoArena)
{
    Message<Credentials> message = Encode(Credentials{"", ""});
    message.wire.userName.size = 1;
    ExpectOutside([&] { Decode(message); }, stringCodec, 0);
    message.wire.userName = {1, 0};
    ExpectOutside([&] { Decode<Credentials>(message.wire, nullptr, 0); }, stringCodec, 1);
}

TEST(Decode, ThrowsWhatTheReaderThrowsForIdentifiersOutside)
{
    Message<VynUpdateIdentifiers> message = Encode(VynUpdateIdentifiers(2));
    message.wire.identifiers.offset = 1;
    ExpectOutOfSpace([&] { Decode(message); });
}

TEST(Decode, NamesTheStringOfAnEventThatLiesOutside)
{
    Message<VynEvent> message = Encode(VynEvent{});
    message.wire.severity = 3; // the highest
    message.wire.field3.offset = 15;
    ExpectOutOfRange([&] { Decode(message); },
                     "vyn event: field3: zt_arena does not contain an element with the address 15");
}

TEST(Decode, NamesTheIndexOfAnEventsString)
{
    Message<VynEvent> message = Encode(VynEvent{});
    message.wire.stringArray[4].size = 100;
    message.wire.stringArray[7].offset = 99;
    ExpectOutOfRange([&] { Decode(message); },
                     "vyn event: stringArray[4]: zt_arena does not contain an element with the address 10");
}

TEST(Decode, NamesTheSeverityOfAnEventThatIsTooHigh)
{
    Message<VynEvent> message = Encode(VynEvent{});
    message.wire.severity = 4;
    ExpectOutOfRange([&] { Decode(message); }, "vyn event: severity: 4 is greater than 3");
    message.wire.severity = 0xFFFFFFFF;
    ExpectOutOfRange([&] { Decode(message); }, "vyn event: severity: 4294967295 is greater than 3");
}

TEST(Decode, NamesTheFirstFieldOnTheWireThatFails)
{
    Message<VynEvent> message = Encode(VynEvent{});
    message.wire.stringArray[0].offset = 500;
    message.wire.field4.offset = 400;
    message.wire.severity = 7;
    ExpectOutOfRange([&] { Decode(message); }, "vyn event: severity: 7 is greater than 3");
    message.wire.field1.offset = 300;
    ExpectOutOfRange([&] { Decode(message); },
                     "vyn event: field1: zt_arena does not contain an element with the address 300");
}

TEST(Decode, NamesTheSeverityOfAnEventWithoutALookAtWhatIsBehindTheEvent)
{
    Message<VynEvent> message = Encode(VynEvent{});
    message.wire.severity = 4;
    const AtTheEnd wire(&message.wire, sizeof(message.wire));
    const AtTheEnd arena(message.arena.data(), message.arena.size());
    ExpectOutOfRange(
        [&] {
            Decode<VynEvent>(*reinterpret_cast<const WireOf<VynEvent>*>(wire.Begin()), arena.Begin(),
                             message.arena.size());
        },
        "vyn event: severity: 4 is greater than 3");
}

TEST(Decode, OfAnEventWithoutAnArenaNamesItsFirstString)
{
    const Message<VynEvent> message = Encode(VynEvent{});
    ExpectOutOfRange([&] { Decode<VynEvent>(message.wire, nullptr, 0); },
                     "vyn event: field1: zt_arena does not contain an element with the address 0");
}

} // namespace
