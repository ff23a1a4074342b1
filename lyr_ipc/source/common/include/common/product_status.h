// What a product reports about itself: its update configuration and its HSDP status.
#pragma once

#include <common/record.h>

namespace vyn_connector {

struct VYN_EXPORT ProductUpdCfg {
    std::string field1;
    std::string field2;
};

struct VYN_EXPORT ProductUpdCfgArray {
    std::vector<ProductUpdCfg> items;
};

struct VYN_EXPORT ProductHsdpStatus {
    std::string field1;
    std::string field2;
};

struct VYN_EXPORT ProductHsdpInfo {
    std::uint32_t field1{};
    std::vector<ProductHsdpStatus> statuses;
};

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_ProductUpdCfg {
    zt_ptr_t field1;
    zt_ptr_t field2;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_ProductUpdCfgArray {
    zt_ptr_t items;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_ProductHsdpStatus {
    zt_ptr_t field1;
    zt_ptr_t field2;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_ProductHsdpInfo {
    std::uint32_t field1;
    zt_ptr_t statuses;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_ProductUpdCfg CastToZt(const ProductUpdCfg& value, zt_arena* arena);
VYN_EXPORT ProductUpdCfg CastFromZt(const tq_vyn_connector_VynTypes_ProductUpdCfg& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_ProductUpdCfgArray CastToZt(const ProductUpdCfgArray& value, zt_arena* arena);
VYN_EXPORT ProductUpdCfgArray CastFromZt(const tq_vyn_connector_VynTypes_ProductUpdCfgArray& wire,
                                         const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_ProductHsdpStatus CastToZt(const ProductHsdpStatus& value, zt_arena* arena);
VYN_EXPORT ProductHsdpStatus CastFromZt(const tq_vyn_connector_VynTypes_ProductHsdpStatus& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_ProductHsdpInfo CastToZt(const ProductHsdpInfo& value, zt_arena* arena);
VYN_EXPORT ProductHsdpInfo CastFromZt(const tq_vyn_connector_VynTypes_ProductHsdpInfo& wire, const zt_arena* arena);

VYN_RECORD(ProductUpdCfg, ProductUpdCfg, 16, 4,
    VYN_FIELD(0, 8, field1, Text<256>),
    VYN_FIELD(8, 8, field2, Text<256>));

VYN_RECORD(ProductUpdCfgArray, ProductUpdCfgArray, 8, 4,
    VYN_FIELD(0, 8, items, List<32>));

// Deliberately unlike ProductUpdCfg: the first string is limited to 128 bytes.
VYN_RECORD(ProductHsdpStatus, ProductHsdpStatus, 16, 4,
    VYN_FIELD(0, 8, field1, Text<128>),
    VYN_FIELD(8, 8, field2, Text<256>));

VYN_RECORD(ProductHsdpInfo, ProductHsdpInfo, 12, 4,
    VYN_FIELD(0, 4, field1,   Number),
    VYN_FIELD(4, 8, statuses, List<5>));

extern template VYN_EXPORT void VectorToZt<32, WireOf<ProductUpdCfg>>(const std::vector<ProductUpdCfg>&, zt_ptr_t*,
                                                                      zt_arena*, WriterOf<ProductUpdCfg>);
extern template VYN_EXPORT std::vector<ProductUpdCfg>
ZtToVector<WireOf<ProductUpdCfg>, ProductUpdCfg>(const zt_ptr_t*, const zt_arena*, ReaderOf<ProductUpdCfg>);
extern template VYN_EXPORT void VectorToZt<5, WireOf<ProductHsdpStatus>>(const std::vector<ProductHsdpStatus>&,
                                                                         zt_ptr_t*, zt_arena*,
                                                                         WriterOf<ProductHsdpStatus>);
extern template VYN_EXPORT std::vector<ProductHsdpStatus>
ZtToVector<WireOf<ProductHsdpStatus>, ProductHsdpStatus>(const zt_ptr_t*, const zt_arena*, ReaderOf<ProductHsdpStatus>);

} // namespace vyn_connector::common
