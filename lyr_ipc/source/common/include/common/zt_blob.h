// Blobs: byte arrays, on the wire exactly their bytes, unaligned, found through a zt_ptr_t. Null arguments raise
// mur::InvalidArgumentException, which names the line of the check.
#pragma once

#include <common/zt_arena.h>

#include <vector>

namespace vyn_connector::common {

inline constexpr std::size_t maxBlobSize = 65536; // bytes, on writing

// Writes the bytes at the arena's top and points `*out` at them. Throws std::length_error past maxBlobSize before
// anything is reserved, mur::ResultCodeException (out of space).
VYN_EXPORT void BlobToZt(const std::vector<std::uint8_t>& blob, zt_ptr_t* out, zt_arena* arena);

// Returns a copy of the bytes that `*ptr` names, however many. Throws std::out_of_range where they do not lie inside
// the arena.
VYN_EXPORT std::vector<std::uint8_t> ZtToBlob(const zt_ptr_t* ptr, const zt_arena* arena);

} // namespace vyn_connector::common
