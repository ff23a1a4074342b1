#include <common/server_connection.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(VynRequestsTimeouts)
VYN_DEFINE_CONVERSIONS(ServerConnectionParameters)
VYN_DEFINE_CONVERSIONS(VynConnectionParameters)
VYN_DEFINE_CONVERSIONS_WITHOUT_ARENA(VynConnectorSettings)
VYN_DEFINE_CONVERSIONS_WITHOUT_ARENA(VynServerData)

template std::optional<ProxySettings>
ZtToOptional<WireOf<ProxySettings>, ProxySettings>(const zt_ptr_t*, const zt_arena*, ReaderOf<ProxySettings>);
template std::optional<SslSettings> ZtToOptional<WireOf<SslSettings>, SslSettings>(const zt_ptr_t*, const zt_arena*,
                                                                                   ReaderOf<SslSettings>);

} // namespace vyn_connector::common
