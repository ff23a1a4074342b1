// error: a wire structure of up to 16 bytes cannot keep padding
//
// The byte after flag would travel as whatever a register holds.
#include "sample.h"

namespace vyn_connector {

struct Small {
    std::string text;
    std::uint16_t number{};
    bool flag{};
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Small {
    zt_ptr_t text;
    std::uint16_t number;
    std::uint8_t flag;
};

namespace vyn_connector::common {

VYN_RECORD(Small, Small, 12, 4,
    VYN_FIELD  ( 0, 8, text,   Text<128>),
    VYN_FIELD  ( 8, 2, number, Number),
    VYN_FIELD  (10, 1, flag,   Flag),
    VYN_PADDING(11, 1));

} // namespace vyn_connector::common
