// error: the rows leave out or repeat a member of the domain record
//
// The record has a member flag, for which there is room before login is aligned.
#include "sample.h"

namespace vyn_connector::common {

VYN_RECORD(Sample, Sample, 28, 4,
    VYN_FIELD  ( 0,  8, text,   Text<128>),
    VYN_FIELD  ( 8,  2, number, Number),
    VYN_PADDING(10,  2),
    VYN_FIELD  (12, 16, login,  Nested));

} // namespace vyn_connector::common
