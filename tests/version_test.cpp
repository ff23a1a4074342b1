// The version as text is that of the numbers.
#include <common/version.h>

#include <gtest/gtest.h>

#include <string>

namespace {

using vyn_connector::common::Version;

static_assert(noexcept(Version()));

TEST(Version, IsItsThreeNumbers)
{
    EXPECT_EQ(Version(), std::to_string(VYN_CONNECTOR_COMMON_VERSION_MAJOR) + '.' +
                             std::to_string(VYN_CONNECTOR_COMMON_VERSION_MINOR) + '.' +
                             std::to_string(VYN_CONNECTOR_COMMON_VERSION_PATCH));
}

} // namespace
