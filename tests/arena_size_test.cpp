// Sizing an arena before it is filled: for every record, the exact size is taken and a byte less is refused.
#include "any_record.h"
#include "errors.h"

#include <common/all_records.h>
#include <common/arena_size.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace vyn_connector {

// Records whose lists do not come back to the same remainder after each element.
struct Odd {
    std::string text;
};
struct Odds {
    std::vector<Odd> items;
};
struct Alternating {
    std::string text;
    std::optional<std::string> slot;
};
struct Alternatings {
    std::vector<Alternating> items;
};

// Records whose gap is the largest from one top alone.
struct Early {
    std::string text;
    std::optional<wem::types::Timestamp> time;
};
struct Late {
    std::string text;
    std::optional<wem::types::Timestamp> time;
};
struct OneEarly {
    std::vector<Early> items;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Odd {
    zt_ptr_t text;
};
struct tq_vyn_connector_VynTypes_Odds {
    zt_ptr_t items;
};
struct tq_vyn_connector_VynTypes_Alternating {
    zt_ptr_t text;
    zt_ptr_t slot;
};
struct tq_vyn_connector_VynTypes_Alternatings {
    zt_ptr_t items;
};
struct tq_vyn_connector_VynTypes_Early {
    zt_ptr_t text;
    zt_ptr_t time;
};
struct tq_vyn_connector_VynTypes_Late {
    zt_ptr_t text;
    zt_ptr_t time;
};
struct tq_vyn_connector_VynTypes_OneEarly {
    zt_ptr_t items;
};

namespace vyn_connector::common {

VYN_RECORD(Odd, Odd, 8, 4,
    VYN_FIELD(0, 8, text, Text<3>));
VYN_RECORD(Odds, Odds, 8, 4,
    VYN_FIELD(0, 8, items, List<13>));
VYN_RECORD(Alternating, Alternating, 16, 4,
    VYN_FIELD(0, 8, text, Text<3>),
    VYN_FIELD(8, 8, slot, Optional<Text<128>>));
VYN_RECORD(Alternatings, Alternatings, 8, 4,
    VYN_FIELD(0, 8, items, List<1001>));
VYN_RECORD(Early, Early, 16, 4,
    VYN_FIELD(0, 8, text, Text<1>),
    VYN_FIELD(8, 8, time, Optional<Time>));
VYN_RECORD(Late, Late, 16, 4,
    VYN_FIELD(0, 8, text, Text<2>),
    VYN_FIELD(8, 8, time, Optional<Time>));
VYN_RECORD(OneEarly, OneEarly, 8, 4,
    VYN_FIELD(0, 8, items, List<1>));

} // namespace vyn_connector::common

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;
using any_record::ChooseSize;
using lyr::ipc::arena::conv::Status;

// An arena whose top stands `gap` bytes past a multiple of 8 and which has `room` bytes left.
class Room {
public:
    Room(std::size_t gap, std::size_t room)
        : buffer((gap + room + 15) / 8), arena{Start(), Start() + gap, Start() + gap + room}
    {
    }
    std::uintptr_t Top() const { return reinterpret_cast<std::uintptr_t>(arena.top); }
    std::size_t Left() const { return static_cast<std::size_t>(arena.end - arena.top); }

private:
    std::uint8_t* Start() { return reinterpret_cast<std::uint8_t*>(buffer.data()); }
    std::vector<std::uint64_t> buffer;

public:
    zt_arena arena;
};

// What most records can do and some cannot: be made of any sizes, and raise where there is no room.
template <typename Record>
void ExpectExactSize(const Record& record, std::size_t gap)
{
    const std::size_t size = ArenaSize(record, gap);
    EXPECT_LE(size, MaxArenaSize<Record>());

    Room enough(gap, size);
    ASSERT_EQ(ArenaSize(record, enough.Top()), size);
    Conversion<Record>::Write(record, &enough.arena);
    EXPECT_EQ(enough.Left(), 0u);

    Room more(gap, size + 40);
    Conversion<Record>::Write(record, &more.arena);
    EXPECT_EQ(more.Left(), 40u) << "the record takes the same bytes where there are more";

    if (size == 0) return;
    Room tooSmall(gap, size - 1);
    ExpectOutOfSpace([&] { Conversion<Record>::Write(record, &tooSmall.arena); });
}

template <>
void ExpectExactSize(const VynEvent& event, std::size_t gap)
{
    const std::size_t size = ArenaSize(event, gap);
    EXPECT_LE(size, MaxArenaSize<VynEvent>());

    Room enough(gap, size);
    Status status = Status::Ok;
    lyr::ipc::arena::conv::ToZt(enough.arena, event, status);
    EXPECT_EQ(status, Status::Ok);
    EXPECT_EQ(enough.Left(), 0u);

    Room tooSmall(gap, size - 1);
    lyr::ipc::arena::conv::ToZt(tooSmall.arena, event, status);
    EXPECT_EQ(status, Status::Failed);
}

// An empty range of identifiers cannot be written.
template <typename Record>
constexpr std::uint64_t least = std::is_same_v<Record, VynUpdateIdentifiers> ? 1 : 0;

template <typename Record>
void ExpectExactSizeOfRandomRecords()
{
    std::mt19937 random(20);
    for (int i = 0; i < 200; ++i) {
        const ChooseSize choose = [&](std::uint64_t limit) {
            const std::uint64_t most = std::min<std::uint64_t>(limit, i % 2 == 0 ? 9 : 40);
            return std::uniform_int_distribution<std::uint64_t>(least<Record>, most)(random);
        };
        const Record record = any_record::Make<Record>(choose);
        for (std::size_t gap = 0; gap < 8; ++gap)
            ExpectExactSize(record, gap);
    }
}

template <typename Record>
void ExpectExactSizeOfTheSmallestRecord()
{
    const auto record = any_record::Make<Record>([](std::uint64_t) { return least<Record>; });
    for (std::size_t gap = 0; gap < 8; ++gap)
        ExpectExactSize(record, gap);
}

template <typename Record>
void ExpectTheMaximumForTheLargestRecord()
{
    // 2147483647 parameters do not fit into memory; their maximum has a test of its own below.
    if constexpr (std::is_same_v<Record, std::vector<RawVynParam>>) return;

    // A set chooses 3 + 125, so the limit that it shows is its strings' own.
    const auto record = any_record::Make<Record>([](std::uint64_t limit) { return limit; });
    std::size_t most = 0;
    for (std::size_t gap = 0; gap < 8; ++gap) {
        ExpectExactSize(record, gap);
        most = std::max(most, ArenaSize(record, gap));
    }
    EXPECT_EQ(most, MaxArenaSize<Record>());
}

struct RecordChecks {
    const char* name;
    void (*random)();
    void (*smallest)();
    void (*largest)();
};

// Each record, by its name on the wire.
template <typename... Records>
std::vector<RecordChecks> ChecksOf(RecordList<Records...>)
{
    return {{Description<Records>::name, &ExpectExactSizeOfRandomRecords<Records>,
             &ExpectExactSizeOfTheSmallestRecord<Records>, &ExpectTheMaximumForTheLargestRecord<Records>}...};
}

class ArenaSizeOf : public testing::TestWithParam<RecordChecks> {};

TEST_P(ArenaSizeOf, RandomRecordsIsExactAtEveryTop)
{
    GetParam().random();
}

TEST_P(ArenaSizeOf, TheSmallestRecordIsExactAtEveryTop)
{
    GetParam().smallest();
}

TEST_P(ArenaSizeOf, TheLargestRecordIsTheMaximumAndNoMore)
{
    GetParam().largest();
}

INSTANTIATE_TEST_SUITE_P(All, ArenaSizeOf, testing::ValuesIn(ChecksOf(AllRecords{})),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(MaxArenaSize, IsTheSumOfTheLimitsWhereNothingIsAligned)
{
    EXPECT_EQ(MaxArenaSize<Credentials>(), 2u * 128);
    EXPECT_EQ(MaxArenaSize<ProxySettings>(), 3u * 128);
    EXPECT_EQ(MaxArenaSize<SslSettings>(), 4u * 128);
    EXPECT_EQ(MaxArenaSize<RawVynParam>(), 128u + 65536);
    EXPECT_EQ(MaxArenaSize<ProductUpdCfg>(), 2u * 256);
    EXPECT_EQ(MaxArenaSize<ProductHsdpStatus>(), 128u + 256);
    EXPECT_EQ(MaxArenaSize<DeviceInfo>(), 2u * 256 + 8u * 128);
    EXPECT_EQ(MaxArenaSize<FileInfoParams>(), 1024u);
    EXPECT_EQ(MaxArenaSize<FileInfo>(), 1024u);
    EXPECT_EQ(MaxArenaSize<FileChunkParams>(), 1024u);
    EXPECT_EQ(MaxArenaSize<FileChunk>(), 1024u + 65536);
    EXPECT_EQ(MaxArenaSize<ClientCertParams>(), 2u * 16384);
    EXPECT_EQ(MaxArenaSize<VynUpdateIdentifiers>(), 10u * 16);
    EXPECT_EQ(MaxArenaSize<VynEvent>(), 4u * 128 + 64 + 1024 + 9u * 512);
}

TEST(MaxArenaSize, IsNothingForWhatStaysInTheWireStructure)
{
    EXPECT_EQ(MaxArenaSize<VynRequestsTimeouts>(), 0u);
    EXPECT_EQ(MaxArenaSize<VynConnectorSettings>(), 0u);
    EXPECT_EQ(MaxArenaSize<VynServerData>(), 0u);
    EXPECT_EQ(MaxArenaSize<DynamicAppInfo>(), 0u);
    EXPECT_EQ(MaxArenaSize<VynUpdateIdentifier>(), 0u);
}

TEST(MaxArenaSize, CountsTheLargestGapBeforeAnAlignedElement)
{
    EXPECT_EQ(MaxArenaSize<ProductUpdCfgArray>(), 3u + 32 * (16 + 512));
    EXPECT_EQ(MaxArenaSize<ProductHsdpInfo>(), 3u + 5 * (16 + 384));
    EXPECT_EQ(MaxArenaSize<VynSubscription>(), 3u + 128 * (8 + 128));
    EXPECT_EQ(MaxArenaSize<VynSubscriptions>(), 3u + 4 * 128 * (8 + 128));
    EXPECT_EQ(MaxArenaSize<ClientCertInfo>(), 2u * 16384 + 3 + 8 + 128);
    // Gaps: 7 before the first time stamp, none before the second, none before the string's slot.
    EXPECT_EQ(MaxArenaSize<LicenseKeyInfo>(), 7u + 8 + 8 + 8 + 128);
}

TEST(MaxArenaSize, CountsTheLargestGapThoughOnlyTheFirstTopOrTheLastLeavesIt)
{
    EXPECT_EQ(MaxArenaSize<Early>(), 1u + 7 + 8); // from a top that is aligned
    EXPECT_EQ(MaxArenaSize<Late>(), 2u + 7 + 8);  // from a top before an aligned one
}

TEST(MaxArenaSize, OfTheParametersIsThatOfTheLargestCountThatTheyMayHave)
{
    EXPECT_EQ(MaxArenaSize<std::vector<RawVynParam>>(), 3u + 2147483647u * (16u + 128u + 65536ull));
}

TEST(MaxArenaSize, CountsElementsWhoseGapsDiffer)
{
    EXPECT_EQ(MaxArenaSize<Odds>(), 3u + 13 * (8 + 3));
    EXPECT_EQ(MaxArenaSize<OneEarly>(), 3u + 16 + 1 + 7 + 8);

    std::size_t most = 0;
    for (std::size_t top = 0; top < 8; ++top) {
        std::size_t at = (top + 3) / 4 * 4 + 1001 * 16;
        for (int i = 0; i < 1001; ++i)
            at = (at + 3 + 3) / 4 * 4 + 8 + 128;
        most = std::max(most, at - top);
    }
    EXPECT_EQ(MaxArenaSize<Alternatings>(), most);
}

TEST(MaxArenaSize, IsKnownWhileCompiling)
{
    constexpr std::size_t size = MaxArenaSize<AppInfo>();
    static_assert(size > 0);
}

TEST(ArenaSize, OfAnEventLeavesOutTheStringThatIsOverItsLimit)
{
    VynEvent event;
    event.field5 = std::string(64, 'x');
    EXPECT_EQ(ArenaSize(event, 0), 14u + 64);
    event.field5 = std::string(65, 'x');
    EXPECT_EQ(ArenaSize(event, 0), 14u);
    event.stringArray[8] = std::string(513, 'x');
    EXPECT_EQ(ArenaSize(event, 0), 13u);
}

TEST(ArenaSize, OfIdentifiersIsThatOfThePartThatIsSent)
{
    const VynUpdateIdentifiers identifiers(7);
    EXPECT_EQ(ArenaSize(VynUpdateIdentifierRange(identifiers.begin() + 2, identifiers.begin() + 5), 3), 48u);
}

TEST(ArenaSize, OfARecordOverItsLimitIsWhatItWouldTake)
{
    Credentials credentials;
    credentials.userName = std::string(500, 'u');
    EXPECT_EQ(ArenaSize(credentials, 0), 500u);
}

} // namespace
