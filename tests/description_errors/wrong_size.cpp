// error: the wire structure does not have the size and alignment that its table gives
//
// The wire structure has 28 bytes.
#include "sample.h"

namespace vyn_connector::common {

VYN_RECORD(Sample, Sample, 32, 4,
    VYN_FIELD  ( 0,  8, text,   Text<128>),
    VYN_FIELD  ( 8,  2, number, Number),
    VYN_FIELD  (10,  1, flag,   Flag),
    VYN_PADDING(11,  1),
    VYN_FIELD  (12, 16, login,  Nested));

} // namespace vyn_connector::common
