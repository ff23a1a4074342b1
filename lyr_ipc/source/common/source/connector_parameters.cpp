#include <common/connector_parameters.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(RawVynParam)
VYN_DEFINE_CONVERSIONS(std::vector<RawVynParam>)

template void VectorToZt<2147483647, WireOf<RawVynParam>>(const std::vector<RawVynParam>&, zt_ptr_t*, zt_arena*,
                                                          WriterOf<RawVynParam>);
template std::vector<RawVynParam> ZtToVector<WireOf<RawVynParam>, RawVynParam>(const zt_ptr_t*, const zt_arena*,
                                                                               ReaderOf<RawVynParam>);

} // namespace vyn_connector::common
