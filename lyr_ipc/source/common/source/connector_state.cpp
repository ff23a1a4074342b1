#include <common/connector_state.h>

namespace vyn_connector::common {
namespace {

struct StateCode {
    int wire;
    VynConnectorState state;
};

// Every pair stands here and is looked up. That a code is the state plus one today is no rule to compute by: 0, which
// a zeroed message holds, is no state.
constexpr StateCode stateCodes[] = {
    {1, VynConnectorState::State0},   {2, VynConnectorState::State1},   {3, VynConnectorState::State2},
    {4, VynConnectorState::State3},   {5, VynConnectorState::State4},   {6, VynConnectorState::State5},
    {7, VynConnectorState::State6},   {8, VynConnectorState::State7},   {9, VynConnectorState::State8},
    {10, VynConnectorState::State9},  {11, VynConnectorState::State10}, {12, VynConnectorState::State11},
    {13, VynConnectorState::State12},
};

} // namespace

std::optional<int> CastToZt(VynConnectorState state)
{
    for (const StateCode& row : stateCodes)
        if (row.state == state) return row.wire;
    return std::nullopt;
}

std::optional<VynConnectorState> CastFromZt(int wire)
{
    for (const StateCode& row : stateCodes)
        if (row.wire == wire) return row.state;
    return std::nullopt;
}

} // namespace vyn_connector::common
