// A file's transfer between the connector's processes: asking for a file and for its chunks, and the answers.
#pragma once

#include <common/record.h>

namespace vyn_connector {

struct VYN_EXPORT FileInfoParams {
    std::string fileName;
};

struct VYN_EXPORT FileInfo {
    std::string fileName;
    bool field2{};
    bool field3{};
    wem::types::Timestamp timestamp;
    std::uint64_t fileSize{}; // bytes
};

struct VYN_EXPORT FileChunkParams {
    std::string fileName;
    std::uint64_t chunkOffset{}; // bytes
    std::uint64_t chunkSize{};   // bytes
};

struct VYN_EXPORT FileChunk {
    std::uint32_t field1{}; // does not travel: reads as 0
    std::string fileName;
    std::uint64_t chunkOffset{}; // bytes
    std::uint64_t chunkSize{};   // bytes
    std::vector<std::uint8_t> data;
};

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_FileInfoParams {
    zt_ptr_t fileName;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_FileInfo {
    zt_ptr_t fileName;
    std::uint8_t field2;
    std::uint8_t field3;
    std::int64_t timestamp;
    std::uint64_t fileSize;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_FileChunkParams {
    zt_ptr_t fileName;
    std::uint64_t chunkOffset;
    std::uint64_t chunkSize;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_FileChunk {
    zt_ptr_t fileName;
    std::uint64_t chunkOffset;
    std::uint64_t chunkSize;
    zt_ptr_t data;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_FileInfoParams CastToZt(const FileInfoParams& value, zt_arena* arena);
VYN_EXPORT FileInfoParams CastFromZt(const tq_vyn_connector_VynTypes_FileInfoParams& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_FileInfo CastToZt(const FileInfo& value, zt_arena* arena);
VYN_EXPORT FileInfo CastFromZt(const tq_vyn_connector_VynTypes_FileInfo& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_FileChunkParams CastToZt(const FileChunkParams& value, zt_arena* arena);
VYN_EXPORT FileChunkParams CastFromZt(const tq_vyn_connector_VynTypes_FileChunkParams& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_FileChunk CastToZt(const FileChunk& value, zt_arena* arena);
VYN_EXPORT FileChunk CastFromZt(const tq_vyn_connector_VynTypes_FileChunk& wire, const zt_arena* arena);

VYN_RECORD(FileInfoParams, FileInfoParams, 8, 4,
    VYN_FIELD(0, 8, fileName, Text<1024>));

VYN_RECORD(FileInfo, FileInfo, 32, 8,
    VYN_FIELD  ( 0, 8, fileName,  Text<1024>),
    VYN_FIELD  ( 8, 1, field2,    Flag),
    VYN_FIELD  ( 9, 1, field3,    Flag),
    VYN_PADDING(10, 6),
    VYN_FIELD  (16, 8, timestamp, Time),
    VYN_FIELD  (24, 8, fileSize,  Number));

// In both chunk records offset and size are one block of 16 bytes, side by side on either side, which is copied whole.
VYN_RECORD(FileChunkParams, FileChunkParams, 24, 8,
    VYN_FIELD( 0, 8, fileName,    Text<1024>),
    VYN_FIELD( 8, 8, chunkOffset, Number),
    VYN_FIELD(16, 8, chunkSize,   Number));

VYN_RECORD(FileChunk, FileChunk, 32, 8,
    VYN_DOMAIN_ONLY(field1),
    VYN_FIELD( 0, 8, fileName,    Text<1024>),
    VYN_FIELD( 8, 8, chunkOffset, Number),
    VYN_FIELD(16, 8, chunkSize,   Number),
    VYN_FIELD(24, 8, data,        Blob));

} // namespace vyn_connector::common
