// Where and how the connector reaches the server, and the fixed-size settings beside it.
#pragma once

#include <common/connection_settings.h>
#include <common/record.h>

namespace vyn_connector {

struct VYN_EXPORT VynRequestsTimeouts {
    std::uint64_t field1{};
    std::uint64_t field2{};
};

struct VYN_EXPORT ServerConnectionParameters {
    std::string address;
    std::optional<ProxySettings> proxy;
    std::optional<SslSettings> ssl;
    std::optional<VynRequestsTimeouts> timeouts;
};

struct VYN_EXPORT VynConnectionParameters {
    ServerConnectionParameters serverParameters;
    Credentials credentials;
};

struct VYN_EXPORT VynConnectorSettings {
    std::uint64_t field1{};
    std::uint64_t field2{};
    std::uint64_t field3{};
    std::uint64_t field4{};
    std::uint64_t field5{};
    std::uint64_t field6{};
};

struct VYN_EXPORT VynServerData {
    std::uint64_t field1{};
};

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynRequestsTimeouts {
    std::uint64_t field1;
    std::uint64_t field2;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_ServerConnectionParameters {
    zt_ptr_t address;
    zt_ptr_t proxy;
    zt_ptr_t ssl;
    zt_ptr_t timeouts;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynConnectionParameters {
    tq_vyn_connector_VynTypes_ServerConnectionParameters serverParameters;
    tq_vyn_connector_VynTypes_Credentials credentials;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynConnectorSettings {
    std::uint64_t field1;
    std::uint64_t field2;
    std::uint64_t field3;
    std::uint64_t field4;
    std::uint64_t field5;
    std::uint64_t field6;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynServerData {
    std::uint64_t field1;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_ServerConnectionParameters CastToZt(const ServerConnectionParameters& value,
                                                                         zt_arena* arena);
VYN_EXPORT ServerConnectionParameters CastFromZt(const tq_vyn_connector_VynTypes_ServerConnectionParameters& wire,
                                                 const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_VynConnectionParameters CastToZt(const VynConnectionParameters& value,
                                                                      zt_arena* arena);
VYN_EXPORT VynConnectionParameters CastFromZt(const tq_vyn_connector_VynTypes_VynConnectionParameters& wire,
                                              const zt_arena* arena);

// The arena is ignored and may be null: it is there so that the pair can convert the elements of an optional.
VYN_EXPORT tq_vyn_connector_VynTypes_VynRequestsTimeouts CastToZt(const VynRequestsTimeouts& value, zt_arena* arena);
VYN_EXPORT VynRequestsTimeouts CastFromZt(const tq_vyn_connector_VynTypes_VynRequestsTimeouts& wire,
                                          const zt_arena* arena);

// These two pairs take no arena at all, unlike the others; they cannot fail.
VYN_EXPORT tq_vyn_connector_VynTypes_VynConnectorSettings CastToZt(const VynConnectorSettings& value);
VYN_EXPORT VynConnectorSettings CastFromZt(const tq_vyn_connector_VynTypes_VynConnectorSettings& wire);

VYN_EXPORT tq_vyn_connector_VynTypes_VynServerData CastToZt(const VynServerData& value);
VYN_EXPORT VynServerData CastFromZt(const tq_vyn_connector_VynTypes_VynServerData& wire);

VYN_RECORD(VynRequestsTimeouts, VynRequestsTimeouts, 16, 8,
    VYN_FIELD(0, 8, field1, Number),
    VYN_FIELD(8, 8, field2, Number));

VYN_RECORD(ServerConnectionParameters, ServerConnectionParameters, 32, 4,
    VYN_FIELD( 0, 8, address,  Text<128>),
    VYN_FIELD( 8, 8, proxy,    Optional<Nested>),
    VYN_FIELD(16, 8, ssl,      Optional<Nested>),
    VYN_FIELD(24, 8, timeouts, Optional<Nested>));

VYN_RECORD(VynConnectionParameters, VynConnectionParameters, 48, 4,
    VYN_FIELD( 0, 32, serverParameters, Nested),
    VYN_FIELD(32, 16, credentials,      Nested));

VYN_RECORD(VynConnectorSettings, VynConnectorSettings, 48, 8,
    VYN_FIELD( 0, 8, field1, Number),
    VYN_FIELD( 8, 8, field2, Number),
    VYN_FIELD(16, 8, field3, Number),
    VYN_FIELD(24, 8, field4, Number),
    VYN_FIELD(32, 8, field5, Number),
    VYN_FIELD(40, 8, field6, Number));

VYN_RECORD(VynServerData, VynServerData, 8, 8,
    VYN_FIELD(0, 8, field1, Number));

// These three are the same bytes in both forms; other processes may copy them without a conversion.
static_assert(sizeof(VynRequestsTimeouts) == 16 && alignof(VynRequestsTimeouts) == 8);
static_assert(sizeof(VynConnectorSettings) == 48);
static_assert(sizeof(VynServerData) == 8);

extern template VYN_EXPORT std::optional<ProxySettings>
ZtToOptional<WireOf<ProxySettings>, ProxySettings>(const zt_ptr_t*, const zt_arena*, ReaderOf<ProxySettings>);
extern template VYN_EXPORT std::optional<SslSettings>
ZtToOptional<WireOf<SslSettings>, SslSettings>(const zt_ptr_t*, const zt_arena*, ReaderOf<SslSettings>);

} // namespace vyn_connector::common
