// Time stamps on the wire: the bare count, unchanged, and no arena needed.
#include <common/timestamp.h>

#include "arena.h"

#include <limits>
#include <type_traits>

namespace {

using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;
using wem::types::Timestamp;

static_assert(std::is_same_v<decltype(CastToZt(Timestamp{}, static_cast<zt_arena*>(nullptr))), std::int64_t>);
static_assert(std::is_same_v<decltype(static_cast<Timestamp (*)(const long&, const zt_arena*)>(&CastFromZt)),
                             Timestamp (*)(const long&, const zt_arena*)>);

constexpr std::int64_t counts[] = {0,
                                   1,
                                   -1,
                                   0x0102030405060708,
                                   -1700000000123456789,
                                   std::numeric_limits<std::int64_t>::max(),
                                   std::numeric_limits<std::int64_t>::min()};

TEST(TimestampConversion, PassesTheCountThroughUnchangedWithoutAnArena)
{
    for (const std::int64_t count : counts) {
        EXPECT_EQ(CastToZt(Timestamp{count}, nullptr), count);
        EXPECT_EQ(CastFromZt(count, nullptr).count, count);
        EXPECT_EQ(CastFromZt(CastToZt(Timestamp{count}, nullptr), nullptr), Timestamp{count});
    }
}

TEST(TimestampConversion, PutsTheCountOnTheWireLeastSignificantByteFirst)
{
    EXPECT_EQ(BytesOf(CastToZt(Timestamp{0x0102030405060708}, nullptr)), Bytes("08 07 06 05 04 03 02 01"));
    EXPECT_EQ(BytesOf(CastToZt(Timestamp{-2}, nullptr)), Bytes("FE FF*7"));
}

TEST(TimestampConversion, DoesNotTouchTheArena)
{
    TestArena arena(16, 0, 3);

    EXPECT_EQ(CastFromZt(CastToZt(Timestamp{-5}, arena.Get()), arena.Get()).count, -5);

    EXPECT_EQ(arena.Contents(), Bytes("A5*16"));
    EXPECT_EQ(arena.Top(), 3u);
}

} // namespace
