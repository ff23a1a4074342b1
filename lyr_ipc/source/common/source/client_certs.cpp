#include <common/client_certs.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(ClientCertParams)
VYN_DEFINE_CONVERSIONS(ClientCertInfo)
VYN_DEFINE_CONVERSIONS(std::vector<ClientCertInfo>)

template void VectorToZt<10, WireOf<ClientCertInfo>>(const std::vector<ClientCertInfo>&, zt_ptr_t*, zt_arena*,
                                                     WriterOf<ClientCertInfo>);
template std::vector<ClientCertInfo>
ZtToVector<WireOf<ClientCertInfo>, ClientCertInfo>(const zt_ptr_t*, const zt_arena*, ReaderOf<ClientCertInfo>);

} // namespace vyn_connector::common
