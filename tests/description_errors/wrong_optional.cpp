// error: a Time joins a wem::types::Timestamp and a std::int64_t
//
// The slot of an optional string holds a pointer, not a count.
#include "sample.h"

namespace vyn_connector {

struct Maybe {
    std::optional<std::string> text;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Maybe {
    zt_ptr_t text;
};

namespace vyn_connector::common {

VYN_RECORD(Maybe, Maybe, 8, 4,
    VYN_FIELD(0, 8, text, Optional<Time>));

} // namespace vyn_connector::common
