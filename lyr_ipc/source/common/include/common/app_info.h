// What is installed, and where: a product, the device, and the report of both with the licence.
#pragma once

#include <common/license_info.h>
#include <common/product_status.h>
#include <common/record.h>

namespace vyn_connector {

struct VYN_EXPORT ProductInfo {
    std::string field1;
    std::string field2;
    std::uint64_t field3{};
    std::string field4;
    std::string field5;
    ProductUpdCfgArray updCfgArray;
    ProductHsdpInfo hsdpInfo;
    std::uint32_t field6{};
};

struct VYN_EXPORT DeviceInfo {
    std::string field1;
    std::string field2;
    std::uint32_t field3{};
    std::uint32_t field4{};
    std::uint32_t field5{};
    std::string field6;
    std::string field7;
    std::uint64_t field8{};
    std::string field9;
    std::string field10;
    std::string field11;
    std::string field12;
    std::string field13;
    std::array<std::byte, 16> field14{};
    std::string field15;
};

struct VYN_EXPORT AppInfo {
    ProductInfo productInfo;
    LicenseInfo licenseInfo;
    DeviceInfo deviceInfo;
};

struct VYN_EXPORT DynamicAppInfo {
    std::uint64_t field1{};
};

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_ProductInfo {
    zt_ptr_t field1;
    zt_ptr_t field2;
    std::uint64_t field3;
    zt_ptr_t field4;
    zt_ptr_t field5;
    tq_vyn_connector_VynTypes_ProductUpdCfgArray updCfgArray;
    tq_vyn_connector_VynTypes_ProductHsdpInfo hsdpInfo;
    std::uint32_t field6;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_DeviceInfo {
    zt_ptr_t field1;
    zt_ptr_t field2;
    std::uint32_t field3;
    std::uint32_t field4;
    std::uint32_t field5;
    zt_ptr_t field6;
    zt_ptr_t field7;
    std::uint64_t field8;
    zt_ptr_t field9;
    zt_ptr_t field10;
    zt_ptr_t field11;
    zt_ptr_t field12;
    zt_ptr_t field13;
    std::uint8_t field14[16];
    zt_ptr_t field15;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_AppInfo {
    tq_vyn_connector_VynTypes_ProductInfo productInfo;
    tq_vyn_connector_VynTypes_LicenseInfo licenseInfo;
    tq_vyn_connector_VynTypes_DeviceInfo deviceInfo;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_DynamicAppInfo {
    std::uint64_t field1;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_ProductInfo CastToZt(const ProductInfo& value, zt_arena* arena);
VYN_EXPORT ProductInfo CastFromZt(const tq_vyn_connector_VynTypes_ProductInfo& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_DeviceInfo CastToZt(const DeviceInfo& value, zt_arena* arena);
VYN_EXPORT DeviceInfo CastFromZt(const tq_vyn_connector_VynTypes_DeviceInfo& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_AppInfo CastToZt(const AppInfo& value, zt_arena* arena);
VYN_EXPORT AppInfo CastFromZt(const tq_vyn_connector_VynTypes_AppInfo& wire, const zt_arena* arena);

// This pair takes no arena, unlike most others; it cannot fail.
VYN_EXPORT tq_vyn_connector_VynTypes_DynamicAppInfo CastToZt(const DynamicAppInfo& value);
VYN_EXPORT DynamicAppInfo CastFromZt(const tq_vyn_connector_VynTypes_DynamicAppInfo& wire);

VYN_RECORD(ProductInfo, ProductInfo, 64, 8,
    VYN_FIELD( 0,  8, field1,      Text<32>),
    VYN_FIELD( 8,  8, field2,      Text<32>),
    VYN_FIELD(16,  8, field3,      Number),
    VYN_FIELD(24,  8, field4,      Text<256>),
    VYN_FIELD(32,  8, field5,      Text<256>),
    VYN_FIELD(40,  8, updCfgArray, Nested),
    VYN_FIELD(48, 12, hsdpInfo,    Nested),
    VYN_FIELD(60,  4, field6,      Number));

VYN_RECORD(DeviceInfo, DeviceInfo, 120, 8,
    VYN_FIELD  (  0,  8, field1,  Text<256>),
    VYN_FIELD  (  8,  8, field2,  Text<128>),
    VYN_FIELD  ( 16,  4, field3,  Number),
    VYN_FIELD  ( 20,  4, field4,  Number),
    VYN_FIELD  ( 24,  4, field5,  Number),
    VYN_FIELD  ( 28,  8, field6,  Text<128>),
    VYN_FIELD  ( 36,  8, field7,  Text<128>),
    VYN_PADDING( 44,  4),
    VYN_FIELD  ( 48,  8, field8,  Number),
    VYN_FIELD  ( 56,  8, field9,  Text<128>),
    VYN_FIELD  ( 64,  8, field10, Text<256>),
    VYN_FIELD  ( 72,  8, field11, Text<128>),
    VYN_FIELD  ( 80,  8, field12, Text<128>),
    VYN_FIELD  ( 88,  8, field13, Text<128>),
    VYN_FIELD  ( 96, 16, field14, Bytes),
    VYN_FIELD  (112,  8, field15, Text<128>));

VYN_RECORD(AppInfo, AppInfo, 200, 8,
    VYN_FIELD( 0,  64, productInfo, Nested),
    VYN_FIELD(64,  16, licenseInfo, Nested),
    VYN_FIELD(80, 120, deviceInfo,  Nested));

VYN_RECORD(DynamicAppInfo, DynamicAppInfo, 8, 8,
    VYN_FIELD(0, 8, field1, Number));

// The same bytes in both forms; other processes may copy them without a conversion.
static_assert(sizeof(DynamicAppInfo) == 8 && std::is_trivially_copyable_v<DynamicAppInfo>);

} // namespace vyn_connector::common
