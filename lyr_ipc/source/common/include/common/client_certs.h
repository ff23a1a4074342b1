// Client certificates: one parameter record, and the entries of a list.
#pragma once

#include <common/record.h>

namespace vyn_connector {

struct VYN_EXPORT ClientCertParams {
    std::string field1;
    std::string field2;
    bool field3{};
    std::uint32_t field4{};
};

struct VYN_EXPORT ClientCertInfo {
    std::uint32_t field1{};
    std::string field2;
    std::string field3;
    std::optional<std::string> field4;
    std::uint32_t field5{}; // does not travel: reads as 0
};

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_ClientCertParams {
    zt_ptr_t field1;
    zt_ptr_t field2;
    std::uint8_t field3;
    std::uint32_t field4;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_ClientCertInfo {
    std::uint32_t field1;
    zt_ptr_t field2;
    zt_ptr_t field3;
    zt_ptr_t field4;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_ClientCertsInfo {
    zt_ptr_t certs;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_ClientCertParams CastToZt(const ClientCertParams& value, zt_arena* arena);
VYN_EXPORT ClientCertParams CastFromZt(const tq_vyn_connector_VynTypes_ClientCertParams& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_ClientCertInfo CastToZt(const ClientCertInfo& value, zt_arena* arena);
VYN_EXPORT ClientCertInfo CastFromZt(const tq_vyn_connector_VynTypes_ClientCertInfo& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_ClientCertsInfo CastToZt(const std::vector<ClientCertInfo>& values,
                                                              zt_arena* arena);
VYN_EXPORT std::vector<ClientCertInfo> CastFromZt(const tq_vyn_connector_VynTypes_ClientCertsInfo& wire,
                                                  const zt_arena* arena);

VYN_RECORD(ClientCertParams, ClientCertParams, 24, 4,
    VYN_FIELD  ( 0, 8, field1, Text<16384>),
    VYN_FIELD  ( 8, 8, field2, Text<16384>),
    VYN_FIELD  (16, 1, field3, Flag),
    VYN_PADDING(17, 3),
    VYN_FIELD  (20, 4, field4, Number));

// The optional string is deliberately limited to 128 bytes beside neighbours of 16384.
VYN_RECORD(ClientCertInfo, ClientCertInfo, 28, 4,
    VYN_FIELD( 0, 4, field1, Number),
    VYN_FIELD( 4, 8, field2, Text<16384>),
    VYN_FIELD(12, 8, field3, Text<16384>),
    VYN_FIELD(20, 8, field4, Optional<Text<128>>),
    VYN_DOMAIN_ONLY(field5));

VYN_RECORD(std::vector<ClientCertInfo>, ClientCertsInfo, 8, 4,
    VYN_WHOLE(0, 8, certs, List<10>));

extern template VYN_EXPORT void VectorToZt<10, WireOf<ClientCertInfo>>(const std::vector<ClientCertInfo>&, zt_ptr_t*,
                                                                       zt_arena*, WriterOf<ClientCertInfo>);
extern template VYN_EXPORT std::vector<ClientCertInfo>
ZtToVector<WireOf<ClientCertInfo>, ClientCertInfo>(const zt_ptr_t*, const zt_arena*, ReaderOf<ClientCertInfo>);

} // namespace vyn_connector::common
