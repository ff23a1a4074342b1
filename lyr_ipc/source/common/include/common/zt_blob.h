// Blobs: byte arrays, on the wire exactly their bytes, unaligned, found through a zt_ptr_t. Errors: see detail/codec.h.
#pragma once

#include <common/zt_arena.h>

#include <vector>

namespace vyn_connector::common {

inline constexpr std::size_t maxBlobSize = 65536; // bytes, on writing

// Writes the bytes, at most maxBlobSize, at the arena's top and points `*out` at them. An empty blob takes no room; its
// offset is that of the top.
VYN_EXPORT void BlobToZt(const std::vector<std::uint8_t>& blob, zt_ptr_t* out, zt_arena* arena);

// Returns a copy of the bytes that `*ptr` names, however many. An empty blob allocates nothing.
VYN_EXPORT std::vector<std::uint8_t> ZtToBlob(const zt_ptr_t* ptr, const zt_arena* arena);

} // namespace vyn_connector::common
