// error: the rows leave out or repeat a member of the domain record
//
// The first member travels twice and the second, which is of the same type, not at all.
#include "sample.h"

namespace vyn_connector {

struct Pair {
    std::string first;
    std::string second;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Pair {
    zt_ptr_t first;
    zt_ptr_t second;
};

namespace vyn_connector::common {

VYN_RECORD(Pair, Pair, 16, 4,
    VYN_FIELD   (0, 8, first, Text<128>),
    VYN_FIELD_AS(8, 8, first, second, Text<128>));

} // namespace vyn_connector::common
