// error: the rows leave out or repeat a member of the domain record
//
// login travels already.
#include "sample.h"

namespace vyn_connector::common {

VYN_RECORD(Sample, Sample, 28, 4,
    VYN_FIELD  ( 0,  8, text,   Text<128>),
    VYN_FIELD  ( 8,  2, number, Number),
    VYN_FIELD  (10,  1, flag,   Flag),
    VYN_PADDING(11,  1),
    VYN_FIELD  (12, 16, login,  Nested),
    VYN_DOMAIN_ONLY(login));

} // namespace vyn_connector::common
