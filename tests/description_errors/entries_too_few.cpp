// error: an Entries joins a map and an array of its entries' wire structures
//
// The fourth entry would stand behind the structure.
#include "sample.h"

#include <common/subscriptions.h>

namespace vyn_connector {

struct Plain {
    std::unordered_map<VynEventSeverity, std::unordered_set<std::string>> names;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Plain {
    tq_vyn_connector_VynTypes_VynSubscription names[3];
};

namespace vyn_connector::common {

VYN_RECORD(Plain, Plain, 36, 4,
    VYN_FIELD(0, 36, names, Entries<4>));

} // namespace vyn_connector::common
