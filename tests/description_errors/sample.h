// A record and its wire structure, for tables that are right or have one mistake.
#pragma once

#include <common/connection_settings.h>

namespace vyn_connector {

struct Sample {
    std::string text;
    std::uint16_t number{};
    bool flag{};
    Credentials login;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Sample {
    zt_ptr_t text;
    std::uint16_t number;
    std::uint8_t flag;
    tq_vyn_connector_VynTypes_Credentials login;
};
