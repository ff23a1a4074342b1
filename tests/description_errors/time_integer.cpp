// error: a Time joins a wem::types::Timestamp and a std::int64_t
//
// A count is no time stamp.
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
    VYN_FIELD(0, 8, number, Time));

} // namespace vyn_connector::common
