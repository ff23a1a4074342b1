// error: the rows leave out or repeat a member of the domain record
//
// A list without a record around it travels once.
#include "sample.h"

struct tq_vyn_connector_VynTypes_SampleList {
    zt_ptr_t first;
    zt_ptr_t second;
};

namespace vyn_connector::common {

using SampleList = std::vector<Credentials>;

VYN_RECORD(SampleList, SampleList, 16, 4,
    VYN_WHOLE(0, 8, first,  List<5>),
    VYN_WHOLE(8, 8, second, List<5>));

} // namespace vyn_connector::common
