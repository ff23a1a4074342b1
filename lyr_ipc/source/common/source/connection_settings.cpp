#include <common/connection_settings.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(Credentials)
VYN_DEFINE_CONVERSIONS(ProxySettings)
VYN_DEFINE_CONVERSIONS(SslSettings)

} // namespace vyn_connector::common
