// compiles
//
// A list without a record around it.
#include "sample.h"

struct tq_vyn_connector_VynTypes_SampleList {
    zt_ptr_t items;
};

namespace vyn_connector::common {

using SampleList = std::vector<Credentials>;

VYN_RECORD(SampleList, SampleList, 8, 4,
    VYN_WHOLE(0, 8, items, List<5>));

} // namespace vyn_connector::common
