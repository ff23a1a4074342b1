#include <common/connector_state.h>

#include <array>

namespace vyn_connector::common {
namespace {

struct StateCode {
    int wire;
    VynConnectorState state;
};

// Every pair stands here and is looked up. That a code is the state plus one today is no rule to compute by: 0, which
// a zeroed message holds, is no state.
constexpr std::array stateCodes = {
    StateCode{1, VynConnectorState::State0},   StateCode{2, VynConnectorState::State1},
    StateCode{3, VynConnectorState::State2},   StateCode{4, VynConnectorState::State3},
    StateCode{5, VynConnectorState::State4},   StateCode{6, VynConnectorState::State5},
    StateCode{7, VynConnectorState::State6},   StateCode{8, VynConnectorState::State7},
    StateCode{9, VynConnectorState::State8},   StateCode{10, VynConnectorState::State9},
    StateCode{11, VynConnectorState::State10}, StateCode{12, VynConnectorState::State11},
    StateCode{13, VynConnectorState::State12},
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
