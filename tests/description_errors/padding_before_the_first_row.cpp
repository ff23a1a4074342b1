// error: the rows leave out, repeat or misplace bytes of the wire structure
//
// What follows the misplaced padding is a whole table.
#include "sample.h"

namespace vyn_connector::common {

VYN_RECORD(Sample, Sample, 28, 4,
    VYN_PADDING(11,  1),
    VYN_FIELD  ( 0,  8, text,   Text<128>),
    VYN_FIELD  ( 8,  2, number, Number),
    VYN_FIELD  (10,  1, flag,   Flag),
    VYN_PADDING(11,  1),
    VYN_FIELD  (12, 16, login,  Nested));

} // namespace vyn_connector::common
