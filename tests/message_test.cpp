// A message that owns its arena: what Encode writes, Decode reads back, with no byte too many.
#include <common/vyn_connector_common.h>

#include <gtest/gtest.h>

namespace {

using namespace vyn_connector;

TEST(Message, OfAListOwnsJustItsBytes)
{
    const common::Message<std::vector<common::RawVynParam>> message =
        common::Encode(std::vector{common::RawVynParam{{7}, "name"}});
    const std::vector<std::uint8_t> arena = {16, 0, 0, 0, 4, 0, 0, 0, 20, 0, 0, 0, 1, 0, 0, 0, 'n', 'a', 'm', 'e', 7};
    EXPECT_EQ(message.arena, arena);
    EXPECT_EQ(common::Decode(message).front().name, "name");
}

TEST(Message, OfAnEmptyListHasNoArena)
{
    const auto message = common::Encode(std::vector<ClientCertInfo>());
    EXPECT_EQ(message.arena.size(), 0U);
    EXPECT_TRUE(common::Decode(message).empty());
    EXPECT_TRUE(common::Decode(common::Encode(std::vector<common::RawVynParam>())).empty());
}

TEST(Message, OfAnEventSaysWhichFieldIsTooLong)
{
    VynEvent event;
    event.field5 = std::string(65, 'x');
    try {
        common::Encode(event);
        FAIL();
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "vyn event: field5: 65 bytes, at most 64");
    }
}

} // namespace
