// The connector's state: thirteen pairs of state and code, both ways, and nothing else.
#include <common/connector_state.h>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <vector>

namespace {

using vyn_connector::VynConnectorState;
using vyn_connector::common::CastFromZt;
using vyn_connector::common::CastToZt;

static_assert(std::is_enum_v<VynConnectorState>);
static_assert(std::is_same_v<std::underlying_type_t<VynConnectorState>, std::int32_t>);
static_assert(std::is_same_v<decltype(CastToZt(VynConnectorState{})), std::optional<int>>);
static_assert(std::is_same_v<decltype(CastFromZt(1)), std::optional<VynConnectorState>>);

struct Row {
    int wire;
    std::int32_t value;
    VynConnectorState state;
};

constexpr Row rows[] = {
    {1, 0, VynConnectorState::State0},    {2, 1, VynConnectorState::State1},    {3, 2, VynConnectorState::State2},
    {4, 3, VynConnectorState::State3},    {5, 4, VynConnectorState::State4},    {6, 5, VynConnectorState::State5},
    {7, 6, VynConnectorState::State6},    {8, 7, VynConnectorState::State7},    {9, 8, VynConnectorState::State8},
    {10, 9, VynConnectorState::State9},   {11, 10, VynConnectorState::State10}, {12, 11, VynConnectorState::State11},
    {13, 12, VynConnectorState::State12},
};

// Every integer near the table and far from it, where a comparison of fewer than 32 bits would find a row.
std::vector<int> WideSweep()
{
    std::vector<int> values;
    for (int value = -70000; value <= 70000; ++value)
        values.push_back(value);
    for (int bit = 17; bit < 31; ++bit)
        for (int low = -1; low <= 14; ++low) {
            values.push_back((1 << bit) + low);
            values.push_back(-(1 << bit) + low);
        }
    for (int low = 0; low <= 14; ++low) {
        values.push_back(std::numeric_limits<int>::min() + low);
        values.push_back(std::numeric_limits<int>::max() - low);
    }
    return values;
}

TEST(ConnectorState, HasTheValuesZeroToTwelve)
{
    for (const Row& row : rows)
        EXPECT_EQ(static_cast<std::int32_t>(row.state), row.value);
}

TEST(ConnectorState, IsWrittenAsTheCodeOfItsRow)
{
    for (const Row& row : rows)
        EXPECT_EQ(CastToZt(row.state), std::optional(row.wire)) << "state " << row.value;
}

TEST(ConnectorState, IsReadFromTheCodeOfItsRow)
{
    for (const Row& row : rows)
        EXPECT_EQ(CastFromZt(row.wire), std::optional(row.state)) << "code " << row.wire;
}

TEST(ConnectorState, HasNoCodeForAnyOtherValue)
{
    for (const int value : {13, 14, -1, -13})
        EXPECT_EQ(CastToZt(static_cast<VynConnectorState>(value)), std::nullopt) << value;
    for (const int value : WideSweep())
        if (value < 0 || value > 12) {
            ASSERT_EQ(CastToZt(static_cast<VynConnectorState>(value)), std::nullopt) << value;
        }
}

TEST(ConnectorState, HasNoStateForAnyOtherCode)
{
    for (const int code : {0, 14, -1, -13})
        EXPECT_EQ(CastFromZt(code), std::nullopt) << code;
    for (const int code : WideSweep())
        if (code < 1 || code > 13) {
            ASSERT_EQ(CastFromZt(code), std::nullopt) << code;
        }
}

} // namespace
