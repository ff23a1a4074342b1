#include <common/zt_blob.h>

#include <common/detail/codec.h>

namespace vyn_connector::common {

using detail::codec::blob;

// The limit is the same for every record, and so is no template argument.
void BlobToZt(const std::vector<std::uint8_t>& value, zt_ptr_t* out, zt_arena* arena)
{
    detail::RequireArgument(arena != nullptr, blob.file, blob.writing.arena);
    detail::RequireArgument(out != nullptr, blob.file, blob.writing.output);
    if (value.size() > maxBlobSize) detail::RaiseTooLarge(blob.tooLarge);
    detail::PlaceBytes(out, arena, value.data(), value.size());
}

std::vector<std::uint8_t> ZtToBlob(const zt_ptr_t* ptr, const zt_arena* arena)
{
    detail::RequireArgument(arena != nullptr, blob.file, blob.reading.arena);
    detail::RequireArgument(ptr != nullptr, blob.file, blob.reading.pointer);

    std::size_t size = 0;
    const void* const bytes = zt_arena_resolve(arena, ptr, 1, &size);
    if (bytes == nullptr) detail::RaiseOutside(blob.outside, ptr->offset);
    const auto* const first = static_cast<const std::uint8_t*>(bytes);
    return std::vector<std::uint8_t>(first, first + size);
}

} // namespace vyn_connector::common
