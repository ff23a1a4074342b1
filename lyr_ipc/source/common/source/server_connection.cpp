#include <common/server_connection.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(VynRequestsTimeouts)
VYN_DEFINE_CONVERSIONS(ServerConnectionParameters)
VYN_DEFINE_CONVERSIONS(VynConnectionParameters)
VYN_DEFINE_CONVERSIONS_WITHOUT_ARENA(VynConnectorSettings)
VYN_DEFINE_CONVERSIONS_WITHOUT_ARENA(VynServerData)

template std::optional<ProxySettings>
ZtToOptional<tq_vyn_connector_VynTypes_ProxySettings, ProxySettings>(const zt_ptr_t*, const zt_arena*,
                                                                     ReaderOf<ProxySettings>);
template std::optional<SslSettings>
ZtToOptional<tq_vyn_connector_VynTypes_SslSettings, SslSettings>(const zt_ptr_t*, const zt_arena*,
                                                                 ReaderOf<SslSettings>);

} // namespace vyn_connector::common
