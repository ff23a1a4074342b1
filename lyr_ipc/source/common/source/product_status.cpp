#include <common/product_status.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(ProductUpdCfg)
VYN_DEFINE_CONVERSIONS(ProductUpdCfgArray)
VYN_DEFINE_CONVERSIONS(ProductHsdpStatus)
VYN_DEFINE_CONVERSIONS(ProductHsdpInfo)

template void VectorToZt<32, tq_vyn_connector_VynTypes_ProductUpdCfg>(const std::vector<ProductUpdCfg>&, zt_ptr_t*,
                                                                      zt_arena*, WriterOf<ProductUpdCfg>);
template std::vector<ProductUpdCfg>
ZtToVector<tq_vyn_connector_VynTypes_ProductUpdCfg, ProductUpdCfg>(const zt_ptr_t*, const zt_arena*,
                                                                   ReaderOf<ProductUpdCfg>);
template void VectorToZt<5, tq_vyn_connector_VynTypes_ProductHsdpStatus>(const std::vector<ProductHsdpStatus>&,
                                                                         zt_ptr_t*, zt_arena*,
                                                                         WriterOf<ProductHsdpStatus>);
template std::vector<ProductHsdpStatus>
ZtToVector<tq_vyn_connector_VynTypes_ProductHsdpStatus, ProductHsdpStatus>(const zt_ptr_t*, const zt_arena*,
                                                                           ReaderOf<ProductHsdpStatus>);

} // namespace vyn_connector::common
