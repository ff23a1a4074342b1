// error: an Enumeration joins an enumeration and an integer of its size
//
// An integer has no enumerators.
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
    VYN_FIELD(0, 8, number, Enumeration));

} // namespace vyn_connector::common
