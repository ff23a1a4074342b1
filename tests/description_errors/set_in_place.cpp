// error: a Set joins a std::unordered_set<std::string> and a zt_ptr_t
//
// A set's strings lie in the arena, and so do the pointers to them.
#include "sample.h"

#include <common/kind/set.h>

namespace vyn_connector {

struct Plain {
    std::unordered_set<std::string> names;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Plain {
    zt_ptr_t names[4];
};

namespace vyn_connector::common {

VYN_RECORD(Plain, Plain, 32, 4,
    VYN_FIELD(0, 32, names, Set<4, Text<16>>));

} // namespace vyn_connector::common
