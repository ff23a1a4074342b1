// The exchange's budget for what reading a message takes refuses no message that a writer of the library makes.
#include "transport/codec.h"

#include "../any_record.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace vyn_connector;

template <typename Record>
void ExpectTaken(const Record& record)
{
    const auto message = exchange::Codec<Record>::Encode(record);
    EXPECT_NO_THROW(exchange::Codec<Record>::Check(message.wire, message.arena));
}

// A list without a limit is as long as its records are; all others reach theirs.
TEST(Budget, TakesEveryRecordFromTheSmallestToTheFullest)
{
    common::ForEach(common::AllRecords{}, [](auto tag) {
        using Record = typename decltype(tag)::Type;
        SCOPED_TRACE(exchange::Codec<Record>::name);
        for (const std::uint64_t size : {0UL, 1UL, 2UL, 3UL, 4UL, 15UL, 16UL, 128UL, 1024UL})
            ExpectTaken(any_record::OfSize<Record>(size));
        constexpr std::size_t reachable = std::size_t{64} << 20;
        if constexpr (exchange::Codec<Record>::maxSize < reachable) ExpectTaken(any_record::OfSize<Record>(1 << 20));
    });
}

TEST(Budget, TakesASetOfOneEmptyNameForEachSeverity)
{
    VynSubscriptions subscriptions;
    for (std::uint32_t i = 0; i < 4; ++i) {
        subscriptions.emplace(static_cast<VynEventSeverity>(i), std::unordered_set<std::string>{""});
        ExpectTaken(subscriptions);
        ExpectTaken(VynSubscriptionsWithHash{1, subscriptions});
    }
}

// Sixteen thousand parameters, all with one name of 64 bytes.
TEST(Budget, RefusesWhatTakesManyTimesItsBytes)
{
    std::vector<std::uint8_t> arena(16384 * 16 + 64);
    for (std::uint32_t at = 0; at < 16384 * 16; at += 16) {
        const zt_ptr_t name{16384 * 16, 64};
        const zt_ptr_t value{0, 65536};
        std::memcpy(arena.data() + at, &name, sizeof(name));
        std::memcpy(arena.data() + at + 8, &value, sizeof(value));
    }
    using Codec = exchange::Codec<std::vector<common::RawVynParam>>;
    Codec::Wire wire{};
    const zt_ptr_t params{0, 16384 * 16};
    std::memcpy(&wire, &params, sizeof(params));
    try {
        Codec::Check(wire, arena);
        ADD_FAILURE() << "taken";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("reading takes more than 4199552 bytes of memory"), std::string::npos)
            << error.what();
    }
}

} // namespace
