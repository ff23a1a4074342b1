// compiles
//
// Seventeen bytes travel in memory, where the last one keeps its zero.
#include "sample.h"

namespace vyn_connector {

struct Seventeen {
    std::array<std::byte, 16> digest{};
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Seventeen {
    std::uint8_t digest[16];
    std::uint8_t unused;
};

namespace vyn_connector::common {

VYN_RECORD(Seventeen, Seventeen, 17, 1,
    VYN_FIELD  ( 0, 16, digest, Bytes),
    VYN_PADDING(16,  1));

} // namespace vyn_connector::common
