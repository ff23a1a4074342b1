// error: a wire structure of up to 16 bytes cannot keep padding
//
// Sixteen bytes still travel in registers, and the two after number as whatever one of them holds.
#include "sample.h"

namespace vyn_connector {

struct Sixteen {
    std::string text;
    std::uint32_t count{};
    std::uint16_t number{};
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Sixteen {
    zt_ptr_t text;
    std::uint32_t count;
    std::uint16_t number;
};

namespace vyn_connector::common {

VYN_RECORD(Sixteen, Sixteen, 16, 4,
    VYN_FIELD  ( 0,  8, text,   Text<128>),
    VYN_FIELD  ( 8,  4, count,  Number),
    VYN_FIELD  (12,  2, number, Number),
    VYN_PADDING(14,  2));

} // namespace vyn_connector::common
