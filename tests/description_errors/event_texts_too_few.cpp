// error: an EventTexts joins a std::array of strings and an array of zt_ptr_t
//
// Of three strings, one would have no pointer.
#include "sample.h"

#include <common/event.h>

namespace vyn_connector {

struct Plain {
    std::array<std::string, 3> texts;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Plain {
    zt_ptr_t texts[2];
};

namespace vyn_connector::common {

VYN_RECORD(Plain, Plain, 16, 4,
    VYN_FIELD(0, 16, texts, EventTexts<3, 16>));

} // namespace vyn_connector::common
