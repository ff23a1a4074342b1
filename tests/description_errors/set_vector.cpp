// error: a Set joins a std::unordered_set<std::string> and a zt_ptr_t
//
// What is in a vector may be there twice.
#include "sample.h"

#include <common/kind/set.h>

namespace vyn_connector {

struct Plain {
    std::vector<std::string> names;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Plain {
    zt_ptr_t names;
};

namespace vyn_connector::common {

VYN_RECORD(Plain, Plain, 8, 4,
    VYN_FIELD(0, 8, names, Set<4, Text<16>>));

} // namespace vyn_connector::common
