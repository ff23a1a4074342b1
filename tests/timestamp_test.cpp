#include <wem/types/timestamp.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

using namespace std::chrono_literals;
using std::chrono::system_clock;
using wem::types::Timestamp;

namespace {

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();

static_assert(std::is_same_v<decltype(Timestamp::count), std::int64_t>);
static_assert(std::is_trivially_copyable_v<Timestamp>);
static_assert(std::is_standard_layout_v<Timestamp>);
static_assert(sizeof(Timestamp) == 8 && alignof(Timestamp) == alignof(std::int64_t));
// A bare number or duration is not a point in time unless somebody says so.
static_assert(!std::is_convertible_v<std::int64_t, Timestamp>);
static_assert(!std::is_convertible_v<Timestamp, std::int64_t>);
static_assert(!std::is_convertible_v<std::chrono::nanoseconds, Timestamp>);
static_assert(!std::is_convertible_v<Timestamp, std::chrono::nanoseconds>);

// None of it can fail: code that must not throw relies on that.
static_assert(std::is_nothrow_constructible_v<Timestamp, std::int64_t>);
static_assert(std::is_nothrow_constructible_v<Timestamp, std::chrono::nanoseconds>);
static_assert(std::is_nothrow_constructible_v<Timestamp, Timestamp::time_point>);
static_assert(std::is_nothrow_constructible_v<Timestamp::time_point, Timestamp>);
static_assert(std::is_nothrow_constructible_v<std::chrono::nanoseconds, Timestamp>);
static_assert(noexcept(Timestamp{} == Timestamp{}) && noexcept(Timestamp{} != Timestamp{}));
static_assert(noexcept(Timestamp{} < Timestamp{}) && noexcept(Timestamp{} <= Timestamp{}));
static_assert(noexcept(Timestamp{} > Timestamp{}) && noexcept(Timestamp{} >= Timestamp{}));

// All of it can be done at compile time.
static_assert(Timestamp().count == 0);
static_assert(Timestamp{5}.count == 5);
static_assert(Timestamp{5} == Timestamp{5} && Timestamp{5} != Timestamp{6} && Timestamp{5} < Timestamp{6});
static_assert(Timestamp(1s).count == 1'000'000'000);
static_assert(Timestamp::time_point(Timestamp{7}).time_since_epoch() == 7ns);

} // namespace

TEST(Timestamp, HoldsZeroByDefault)
{
    EXPECT_EQ(Timestamp().count, 0);
    EXPECT_EQ(Timestamp{}.count, 0);
}

TEST(Timestamp, HoldsAnyCount)
{
    for (const std::int64_t count : {lowest, lowest + 1, std::int64_t{-1}, std::int64_t{0}, std::int64_t{1}, highest})
        EXPECT_EQ(Timestamp{count}.count, count);
    Timestamp timestamp{1};
    timestamp.count = -2;
    EXPECT_EQ(timestamp, Timestamp{-2});
}

TEST(Timestamp, IsOrderedByItsSignedCount)
{
    const std::int64_t counts[] = {lowest, -2, -1, 0, 1, 2, highest};
    for (const std::int64_t a : counts) {
        for (const std::int64_t b : counts) {
            EXPECT_EQ(Timestamp{a} == Timestamp{b}, a == b);
            EXPECT_EQ(Timestamp{a} != Timestamp{b}, a != b);
            EXPECT_EQ(Timestamp{a} < Timestamp{b}, a < b);
            EXPECT_EQ(Timestamp{a} <= Timestamp{b}, a <= b);
            EXPECT_EQ(Timestamp{a} > Timestamp{b}, a > b);
            EXPECT_EQ(Timestamp{a} >= Timestamp{b}, a >= b);
        }
    }
}

TEST(Timestamp, CountsNanosecondsSinceTheUnixEpochWhenItMeetsStdChrono)
{
    const system_clock::time_point moment = system_clock::from_time_t(1700000000) + 5us;
    EXPECT_EQ(Timestamp(moment).count, 1'700'000'000'000'005'000);
    EXPECT_EQ(Timestamp(std::chrono::time_point<system_clock, std::chrono::seconds>(-3s)).count, -3'000'000'000);
    EXPECT_EQ(Timestamp(2ms).count, 2'000'000);
    EXPECT_EQ(Timestamp(-1h).count, -3'600'000'000'000);
    EXPECT_EQ(Timestamp(system_clock::time_point()), Timestamp{0});
}

TEST(Timestamp, ConvertsToStdChronoAndBackUnchanged)
{
    for (const std::int64_t count : {lowest, std::int64_t{-1}, std::int64_t{0}, std::int64_t{1}, highest}) {
        const Timestamp timestamp{count};
        const Timestamp::time_point moment = timestamp;
        EXPECT_EQ(moment.time_since_epoch().count(), count);
        EXPECT_EQ(Timestamp(moment), timestamp);

        const auto duration = static_cast<std::chrono::nanoseconds>(timestamp);
        EXPECT_EQ(duration.count(), count);
        EXPECT_EQ(Timestamp(duration), timestamp);
    }
    EXPECT_EQ(static_cast<system_clock::time_point>(Timestamp{1'000'000'000}), system_clock::from_time_t(1));
}

TEST(Timestamp, ComparesWithATimePoint)
{
    const system_clock::time_point moment = system_clock::from_time_t(1);
    EXPECT_TRUE(Timestamp{1'000'000'000} == moment);
    EXPECT_TRUE(Timestamp{999'999'999} < moment);
}
