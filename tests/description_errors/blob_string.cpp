// error: a Blob joins a std::vector<std::uint8_t> and a zt_ptr_t
//
// A string is a Text.
#include "sample.h"

namespace vyn_connector {

struct Plain {
    std::string content;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Plain {
    zt_ptr_t content;
};

namespace vyn_connector::common {

VYN_RECORD(Plain, Plain, 8, 4,
    VYN_FIELD(0, 8, content, Blob));

} // namespace vyn_connector::common
