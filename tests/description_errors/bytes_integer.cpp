// error: a Bytes joins a std::array<std::byte, 16> and a std::uint8_t\[16\]
//
// Eight bytes are not sixteen.
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
    VYN_FIELD(0, 8, number, Bytes));

} // namespace vyn_connector::common
