// How the connector reaches the server: a login, a proxy with its own login, and the TLS settings.
#pragma once

#include <common/record.h>

namespace vyn_connector {

struct VYN_EXPORT Credentials {
    std::string userName;
    std::string password;
};

struct VYN_EXPORT ProxySettings {
    std::string address;
    std::uint16_t port{};
    Credentials credentials;
};

// The settings' users give the fields their meaning; here they are carried.
struct VYN_EXPORT SslSettings {
    std::uint16_t field1{};
    std::string field2;
    std::string field3;
    std::string field4;
    std::string field5;
};

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_Credentials {
    zt_ptr_t userName;
    zt_ptr_t password;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_ProxySettings {
    zt_ptr_t address;
    std::uint16_t port;
    tq_vyn_connector_VynTypes_Credentials credentials;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_SslSettings {
    std::uint16_t field1;
    zt_ptr_t field2;
    zt_ptr_t field3;
    zt_ptr_t field4;
    zt_ptr_t field5;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_Credentials CastToZt(const Credentials& value, zt_arena* arena);
VYN_EXPORT Credentials CastFromZt(const tq_vyn_connector_VynTypes_Credentials& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_ProxySettings CastToZt(const ProxySettings& value, zt_arena* arena);
VYN_EXPORT ProxySettings CastFromZt(const tq_vyn_connector_VynTypes_ProxySettings& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_SslSettings CastToZt(const SslSettings& value, zt_arena* arena);
VYN_EXPORT SslSettings CastFromZt(const tq_vyn_connector_VynTypes_SslSettings& wire, const zt_arena* arena);

VYN_RECORD(Credentials, Credentials, 16, 4,
    VYN_FIELD(0, 8, userName, Text<128>),
    VYN_FIELD(8, 8, password, Secret<Text<128>>));

VYN_RECORD(ProxySettings, ProxySettings, 28, 4,
    VYN_FIELD  ( 0,  8, address,     Text<128>),
    VYN_FIELD  ( 8,  2, port,        Number),
    VYN_PADDING(10,  2),
    VYN_FIELD  (12, 16, credentials, Nested));

VYN_RECORD(SslSettings, SslSettings, 36, 4,
    VYN_FIELD  ( 0, 2, field1, Number),
    VYN_PADDING( 2, 2),
    VYN_FIELD  ( 4, 8, field2, Text<128>),
    VYN_FIELD  (12, 8, field3, Text<128>),
    VYN_FIELD  (20, 8, field4, Text<128>),
    VYN_FIELD  (28, 8, field5, Text<128>));

} // namespace vyn_connector::common
