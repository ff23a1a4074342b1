#include <common/product_status.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(ProductUpdCfg)
VYN_DEFINE_CONVERSIONS(ProductUpdCfgArray)
VYN_DEFINE_CONVERSIONS(ProductHsdpStatus)
VYN_DEFINE_CONVERSIONS(ProductHsdpInfo)

template void VectorToZt<32, WireOf<ProductUpdCfg>>(const std::vector<ProductUpdCfg>&, zt_ptr_t*, zt_arena*,
                                                    WriterOf<ProductUpdCfg>);
template std::vector<ProductUpdCfg> ZtToVector<WireOf<ProductUpdCfg>, ProductUpdCfg>(const zt_ptr_t*, const zt_arena*,
                                                                                     ReaderOf<ProductUpdCfg>);
template void VectorToZt<5, WireOf<ProductHsdpStatus>>(const std::vector<ProductHsdpStatus>&, zt_ptr_t*, zt_arena*,
                                                       WriterOf<ProductHsdpStatus>);
template std::vector<ProductHsdpStatus>
ZtToVector<WireOf<ProductHsdpStatus>, ProductHsdpStatus>(const zt_ptr_t*, const zt_arena*, ReaderOf<ProductHsdpStatus>);

} // namespace vyn_connector::common
