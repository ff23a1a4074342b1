// error: a Blob joins a std::vector<std::uint8_t> and a zt_ptr_t
//
// Its bytes lie in the arena.
#include "sample.h"

namespace vyn_connector {

struct Plain {
    std::vector<std::uint8_t> content;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Plain {
    std::uint8_t content[16];
};

namespace vyn_connector::common {

VYN_RECORD(Plain, Plain, 16, 1,
    VYN_FIELD(0, 16, content, Blob));

} // namespace vyn_connector::common
