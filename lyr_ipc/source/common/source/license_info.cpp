#include <common/license_info.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(LicenseKeyInfo)
VYN_DEFINE_CONVERSIONS(LicenseInfo)

template std::optional<LicenseKeyInfo>
ZtToOptional<WireOf<LicenseKeyInfo>, LicenseKeyInfo>(const zt_ptr_t*, const zt_arena*, ReaderOf<LicenseKeyInfo>);

} // namespace vyn_connector::common
