// error: an EventTexts joins a std::array of strings and an array of zt_ptr_t
//
// A vector may have any number of strings.
#include "sample.h"

#include <common/event.h>

namespace vyn_connector {

struct Plain {
    std::vector<std::string> texts;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Plain {
    zt_ptr_t texts[3];
};

namespace vyn_connector::common {

VYN_RECORD(Plain, Plain, 24, 4,
    VYN_FIELD(0, 24, texts, EventTexts<3, 16>));

} // namespace vyn_connector::common
