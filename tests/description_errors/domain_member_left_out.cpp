// error: the rows leave out or repeat a member of the domain record
//
// The record has a member text.
#include "sample.h"

namespace vyn_connector::common {

VYN_RECORD(Sample, Sample, 28, 4,
    VYN_PADDING( 0,  8),
    VYN_FIELD  ( 8,  2, number, Number),
    VYN_FIELD  (10,  1, flag,   Flag),
    VYN_PADDING(11,  1),
    VYN_FIELD  (12, 16, login,  Nested));

} // namespace vyn_connector::common
