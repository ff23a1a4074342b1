// Unlike those of the other codecs, the checks of a blob stand in a source file: an argument error names this file
// and the check's line, and people who read fault reports know the numbers, so the checks keep their lines.
#include <common/zt_blob.h>
#include <common/zt_codec.h>

namespace vyn_connector::common {

// Takes exactly the blob's bytes from the arena, without alignment. An empty blob takes none and has the offset of
// the top.
//
// The limit is the same for every record, and so is no template argument.
void BlobToZt(const std::vector<std::uint8_t>& blob, zt_ptr_t* out, zt_arena* arena)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_blob, __LINE__);
    if (out == nullptr) mur::raise_invalid_argument(source::zt_blob, __LINE__);
    if (blob.size() > maxBlobSize) RaiseTooLarge("zt blob: blob size larger than zt buffer");

    PlaceBytes(out, arena, blob.data(), blob.size());
}

// Reads a blob of any size.
//
// The limit does not bind on reading. What a hostile size can make this allocate is bounded by the arena all the same:
// the size is the sender's word, but the bytes are there.
//
// The vector is built only after every test has passed, and allocates nothing where there are no bytes. An all-zero
// blob can be told from an empty one by its size alone: the arena's zero fill is no mark of absence.
//
// The bytes are not interpreted.
std::vector<std::uint8_t> ZtToBlob(const zt_ptr_t* ptr, const zt_arena* arena)
{
    if (arena == nullptr) mur::raise_invalid_argument(source::zt_blob, __LINE__);
    if (ptr == nullptr) mur::raise_invalid_argument(source::zt_blob, __LINE__);

    std::size_t size = 0;
    const void* const bytes = zt_arena_resolve(arena, ptr, 1, &size);
    if (bytes == nullptr)
        RaiseOutside("zt blob: zt_arena does not contain an element with the address {}", ptr->offset);
    const auto* const first = static_cast<const std::uint8_t*>(bytes);
    return std::vector<std::uint8_t>(first, first + size);
}

} // namespace vyn_connector::common
