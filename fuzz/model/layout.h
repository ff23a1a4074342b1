// The wire structures once more, as plain data for the model alone: what stands where, and how much of it a writer
// accepts. Written down from the format by itself; nothing of the library's own tables is used, so that a slip in
// either shows where the two are compared.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace model {

enum class Kind {
    Number,     // `width` bytes, little-endian
    Flag,       // a byte; read as 1 unless it is 0
    Severity,   // a number; an event's reader calls any above 3 a failure
    Raw,        // `width` bytes as they stand
    Text,       // pointer to bytes
    Blob,       // pointer to bytes, with errors of its own
    Nested,     // another structure in place
    List,       // pointer to structures
    Range,      // pointer to structures, at least one, with errors of its own
    Optional,   // pointer to one structure or to none
    Set,        // pointer to pointers to bytes, each at most 128
    Entries,    // `limit` structures in place: a severity and a set each
    Texts,      // `limit` times a Text of at most 512, in place
    NotCarried, // no place on the wire; read as 0
};

struct Layout;

struct Field {
    const char* name;
    std::size_t offset;
    std::size_t width;
    Kind kind;
    std::uint64_t limit = 0;         // bytes of a text or blob, elements of the others; for writing only
    const Layout* element = nullptr; // of Nested, List, Range, Optional and Entries
};

// The fields stand in the order of the domain record, which is the order of reading. Writing goes by offset.
struct Layout {
    const char* name;
    std::size_t size;
    std::size_t alignment;
    std::vector<Field> fields;
};

inline Field Number(const char* name, std::size_t offset, std::size_t width)
{
    return {name, offset, width, Kind::Number};
}
inline Field Text(const char* name, std::size_t offset, std::uint64_t limit)
{
    return {name, offset, 8, Kind::Text, limit};
}
inline Field Pointer(const char* name, std::size_t offset, Kind kind, std::uint64_t limit, const Layout& element)
{
    return {name, offset, 8, kind, limit, &element};
}
inline Field Nested(const char* name, std::size_t offset, const Layout& layout)
{
    return {name, offset, layout.size, Kind::Nested, 0, &layout};
}

// What an optional text and an optional time stamp have in their slots.
inline const Layout textSlot{"text", 8, 4, {Text("text", 0, 128)}};
inline const Layout timeSlot{"time", 8, 8, {Number("time", 0, 8)}};

// clang-format off
inline const Layout credentials{"Credentials", 16, 4, {
    Text("userName", 0, 128),
    Text("password", 8, 128)}};
inline const Layout proxySettings{"ProxySettings", 28, 4, {
    Text("address", 0, 128),
    Number("port", 8, 2),
    Nested("credentials", 12, credentials)}};
inline const Layout sslSettings{"SslSettings", 36, 4, {
    Number("field1", 0, 2),
    Text("field2", 4, 128),
    Text("field3", 12, 128),
    Text("field4", 20, 128),
    Text("field5", 28, 128)}};

inline const Layout vynRequestsTimeouts{"VynRequestsTimeouts", 16, 8, {
    Number("field1", 0, 8),
    Number("field2", 8, 8)}};
inline const Layout vynConnectorSettings{"VynConnectorSettings", 48, 8, {
    Number("field1", 0, 8),
    Number("field2", 8, 8),
    Number("field3", 16, 8),
    Number("field4", 24, 8),
    Number("field5", 32, 8),
    Number("field6", 40, 8)}};
inline const Layout vynServerData{"VynServerData", 8, 8, {
    Number("field1", 0, 8)}};
inline const Layout serverConnectionParameters{"ServerConnectionParameters", 32, 4, {
    Text("address", 0, 128),
    Pointer("proxy", 8, Kind::Optional, 1, proxySettings),
    Pointer("ssl", 16, Kind::Optional, 1, sslSettings),
    Pointer("timeouts", 24, Kind::Optional, 1, vynRequestsTimeouts)}};
inline const Layout vynConnectionParameters{"VynConnectionParameters", 48, 4, {
    Nested("serverParameters", 0, serverConnectionParameters),
    Nested("credentials", 32, credentials)}};

inline const Layout vynParam{"VynParam", 16, 4, {
    {"value", 8, 8, Kind::Blob, 65536},
    Text("name", 0, 128)}};
inline const Layout vynParams{"VynParams", 8, 4, {
    Pointer("params", 0, Kind::List, 2147483647, vynParam)}};

inline const Layout productUpdCfg{"ProductUpdCfg", 16, 4, {
    Text("field1", 0, 256),
    Text("field2", 8, 256)}};
inline const Layout productUpdCfgArray{"ProductUpdCfgArray", 8, 4, {
    Pointer("items", 0, Kind::List, 32, productUpdCfg)}};
inline const Layout productHsdpStatus{"ProductHsdpStatus", 16, 4, {
    Text("field1", 0, 128),
    Text("field2", 8, 256)}};
inline const Layout productHsdpInfo{"ProductHsdpInfo", 12, 4, {
    Number("field1", 0, 4),
    Pointer("statuses", 4, Kind::List, 5, productHsdpStatus)}};

inline const Layout licenseKeyInfo{"LicenseKeyInfo", 44, 4, {
    Number("field1", 0, 4),
    Number("field2", 4, 4),
    Number("field3", 8, 4),
    Pointer("field4", 12, Kind::Optional, 1, timeSlot),
    Pointer("field5", 20, Kind::Optional, 1, timeSlot),
    Number("field6", 28, 4),
    Number("field7", 32, 4),
    Pointer("field8", 36, Kind::Optional, 1, textSlot)}};
inline const Layout licenseInfo{"LicenseInfo", 16, 4, {
    Pointer("keyInfo1", 0, Kind::Optional, 1, licenseKeyInfo),
    Pointer("keyInfo2", 8, Kind::Optional, 1, licenseKeyInfo)}};

inline const Layout productInfo{"ProductInfo", 64, 8, {
    Text("field1", 0, 32),
    Text("field2", 8, 32),
    Number("field3", 16, 8),
    Text("field4", 24, 256),
    Text("field5", 32, 256),
    Nested("updCfgArray", 40, productUpdCfgArray),
    Nested("hsdpInfo", 48, productHsdpInfo),
    Number("field6", 60, 4)}};
inline const Layout deviceInfo{"DeviceInfo", 120, 8, {
    Text("field1", 0, 256),
    Text("field2", 8, 128),
    Number("field3", 16, 4),
    Number("field4", 20, 4),
    Number("field5", 24, 4),
    Text("field6", 28, 128),
    Text("field7", 36, 128),
    Number("field8", 48, 8),
    Text("field9", 56, 128),
    Text("field10", 64, 256),
    Text("field11", 72, 128),
    Text("field12", 80, 128),
    Text("field13", 88, 128),
    {"field14", 96, 16, Kind::Raw},
    Text("field15", 112, 128)}};
inline const Layout appInfo{"AppInfo", 200, 8, {
    Nested("productInfo", 0, productInfo),
    Nested("licenseInfo", 64, licenseInfo),
    Nested("deviceInfo", 80, deviceInfo)}};
inline const Layout dynamicAppInfo{"DynamicAppInfo", 8, 8, {
    Number("field1", 0, 8)}};

inline const Layout fileInfoParams{"FileInfoParams", 8, 4, {
    Text("fileName", 0, 1024)}};
inline const Layout fileInfo{"FileInfo", 32, 8, {
    Text("fileName", 0, 1024),
    {"field2", 8, 1, Kind::Flag},
    {"field3", 9, 1, Kind::Flag},
    Number("timestamp", 16, 8),
    Number("fileSize", 24, 8)}};
inline const Layout fileChunkParams{"FileChunkParams", 24, 8, {
    Text("fileName", 0, 1024),
    Number("chunkOffset", 8, 8),
    Number("chunkSize", 16, 8)}};
inline const Layout fileChunk{"FileChunk", 32, 8, {
    {"field1", 0, 0, Kind::NotCarried},
    Text("fileName", 0, 1024),
    Number("chunkOffset", 8, 8),
    Number("chunkSize", 16, 8),
    {"data", 24, 8, Kind::Blob, 65536}}};

inline const Layout clientCertParams{"ClientCertParams", 24, 4, {
    Text("field1", 0, 16384),
    Text("field2", 8, 16384),
    {"field3", 16, 1, Kind::Flag},
    Number("field4", 20, 4)}};
inline const Layout clientCertInfo{"ClientCertInfo", 28, 4, {
    Number("field1", 0, 4),
    Text("field2", 4, 16384),
    Text("field3", 12, 16384),
    Pointer("field4", 20, Kind::Optional, 1, textSlot),
    {"field5", 0, 0, Kind::NotCarried}}};
inline const Layout clientCertsInfo{"ClientCertsInfo", 8, 4, {
    Pointer("certs", 0, Kind::List, 10, clientCertInfo)}};

inline const Layout vynUpdateIdentifier{"VynUpdateIdentifier", 16, 1, {
    {"bytes", 0, 16, Kind::Raw}}};
inline const Layout vynUpdateIdentifierContainer{"VynUpdateIdentifierContainer", 8, 4, {
    Pointer("identifiers", 0, Kind::Range, 10, vynUpdateIdentifier)}};
inline const Layout vynSubscription{"VynSubscription", 12, 4, {
    {"severity", 0, 4, Kind::Severity},
    {"eventTypes", 4, 8, Kind::Set, 128}}};
inline const Layout vynSubscriptions{"VynSubscriptions", 48, 4, {
    {"entries", 0, 48, Kind::Entries, 4, &vynSubscription}}};
inline const Layout vynSubscriptionsWithHash{"VynSubscriptionsWithHash", 56, 8, {
    Number("hash", 0, 8),
    {"subscriptions", 8, 48, Kind::Entries, 4, &vynSubscription}}};

inline const Layout vynEvent{"VynEvent", 136, 8, {
    Text("field1", 0, 128),
    {"severity", 8, 4, Kind::Severity},
    Text("field3", 12, 128),
    Text("field4", 20, 128),
    Text("field5", 28, 64),
    Text("field6", 36, 128),
    Text("field7", 44, 1024),
    Number("field8", 52, 4),
    Number("field9", 56, 8),
    {"stringArray", 64, 72, Kind::Texts, 9}}};
// clang-format on

} // namespace model
