// error: a Text joins a std::string and a zt_ptr_t
//
// An integer has no bytes to point to.
#include "sample.h"

namespace vyn_connector {

struct Plain {
    std::uint64_t number{};
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Plain {
    std::uint64_t number;
};

namespace vyn_connector::common {

VYN_RECORD(Plain, Plain, 8, 8,
    VYN_FIELD(0, 8, number, Text<32>));

} // namespace vyn_connector::common
