// error: a Blob joins a std::vector<std::uint8_t> and a zt_ptr_t
//
// text is no vector of bytes.
#include "sample.h"

namespace vyn_connector::common {

VYN_RECORD(Sample, Sample, 28, 4,
    VYN_FIELD  ( 0,  8, text,   Blob),
    VYN_FIELD  ( 8,  2, number, Number),
    VYN_FIELD  (10,  1, flag,   Flag),
    VYN_PADDING(11,  1),
    VYN_FIELD  (12, 16, login,  Nested));

} // namespace vyn_connector::common
