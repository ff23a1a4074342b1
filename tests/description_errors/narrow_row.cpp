// error: the wire member is not as wide as its row says
//
// number is 2 bytes wide; its second byte is no padding.
#include "sample.h"

namespace vyn_connector::common {

VYN_RECORD(Sample, Sample, 28, 4,
    VYN_FIELD  ( 0,  8, text,   Text<128>),
    VYN_FIELD  ( 8,  1, number, Number),
    VYN_PADDING( 9,  1),
    VYN_FIELD  (10,  1, flag,   Flag),
    VYN_PADDING(11,  1),
    VYN_FIELD  (12, 16, login,  Nested));

} // namespace vyn_connector::common
