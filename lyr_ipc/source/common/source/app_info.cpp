#include <common/app_info.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(ProductInfo)
VYN_DEFINE_CONVERSIONS(DeviceInfo)
VYN_DEFINE_CONVERSIONS(AppInfo)
VYN_DEFINE_CONVERSIONS_WITHOUT_ARENA(DynamicAppInfo)

} // namespace vyn_connector::common
