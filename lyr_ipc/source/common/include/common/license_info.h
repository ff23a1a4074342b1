// The licence information that a product reports: up to two keys, carried and not evaluated. A null arena is refused on
// writing also where no optional member is present.
#pragma once

#include <common/record.h>

namespace vyn_connector {

struct VYN_EXPORT LicenseKeyInfo {
    std::uint32_t field1{};
    std::uint32_t field2{};
    std::uint32_t field3{};
    std::optional<wem::types::Timestamp> field4;
    std::optional<wem::types::Timestamp> field5;
    std::uint32_t field6{};
    std::uint32_t field7{};
    std::optional<std::string> field8;
};

struct VYN_EXPORT LicenseInfo {
    std::optional<LicenseKeyInfo> keyInfo1;
    std::optional<LicenseKeyInfo> keyInfo2;
};

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_LicenseKeyInfo {
    std::uint32_t field1;
    std::uint32_t field2;
    std::uint32_t field3;
    zt_ptr_t field4;
    zt_ptr_t field5;
    std::uint32_t field6;
    std::uint32_t field7;
    zt_ptr_t field8;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_LicenseInfo {
    zt_ptr_t keyInfo1;
    zt_ptr_t keyInfo2;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_LicenseKeyInfo CastToZt(const LicenseKeyInfo& value, zt_arena* arena);
VYN_EXPORT LicenseKeyInfo CastFromZt(const tq_vyn_connector_VynTypes_LicenseKeyInfo& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_LicenseInfo CastToZt(const LicenseInfo& value, zt_arena* arena);
VYN_EXPORT LicenseInfo CastFromZt(const tq_vyn_connector_VynTypes_LicenseInfo& wire, const zt_arena* arena);

VYN_RECORD(LicenseKeyInfo, LicenseKeyInfo, 44, 4,
    VYN_FIELD( 0, 4, field1, Number),
    VYN_FIELD( 4, 4, field2, Number),
    VYN_FIELD( 8, 4, field3, Number),
    VYN_FIELD(12, 8, field4, Optional<Time>),
    VYN_FIELD(20, 8, field5, Optional<Time>),
    VYN_FIELD(28, 4, field6, Number),
    VYN_FIELD(32, 4, field7, Number),
    VYN_FIELD(36, 8, field8, Optional<Text<128>>));

VYN_RECORD(LicenseInfo, LicenseInfo, 16, 4,
    VYN_FIELD(0, 8, keyInfo1, Optional<Nested>),
    VYN_FIELD(8, 8, keyInfo2, Optional<Nested>));

extern template VYN_EXPORT std::optional<LicenseKeyInfo>
ZtToOptional<WireOf<LicenseKeyInfo>, LicenseKeyInfo>(const zt_ptr_t*, const zt_arena*, ReaderOf<LicenseKeyInfo>);

} // namespace vyn_connector::common
