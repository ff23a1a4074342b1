// error: the rows leave out or repeat a member of the domain record
//
// first, a single byte, is written twice and second not at all.
#include "sample.h"

namespace vyn_connector {

struct Flags {
    bool first{};
    bool second{};
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Flags {
    std::uint8_t first;
    std::uint8_t second;
};

namespace vyn_connector::common {

VYN_RECORD(Flags, Flags, 2, 1,
    VYN_FIELD   (0, 1, first, Flag),
    VYN_FIELD_AS(1, 1, first, second, Flag));

} // namespace vyn_connector::common
