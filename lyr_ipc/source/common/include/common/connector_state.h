// The connector's state, which travels as a plain integer. Neither direction throws; what has no counterpart gives an
// empty optional, and the caller decides what that means.
#pragma once

#include <common/export.h>

#include <cstdint>
#include <optional>

namespace vyn_connector {

enum class VynConnectorState : std::int32_t {
    State0,
    State1,
    State2,
    State3,
    State4,
    State5,
    State6,
    State7,
    State8,
    State9,
    State10,
    State11,
    State12,
};

} // namespace vyn_connector

namespace vyn_connector::common {

VYN_EXPORT std::optional<int> CastToZt(VynConnectorState state);
VYN_EXPORT std::optional<VynConnectorState> CastFromZt(int wire);

} // namespace vyn_connector::common
