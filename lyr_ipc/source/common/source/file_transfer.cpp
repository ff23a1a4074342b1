#include <common/file_transfer.h>

#include "record_conversion.h"

namespace vyn_connector::common {

VYN_DEFINE_CONVERSIONS(FileInfoParams)
VYN_DEFINE_CONVERSIONS(FileInfo)
VYN_DEFINE_CONVERSIONS(FileChunkParams)
VYN_DEFINE_CONVERSIONS(FileChunk)

} // namespace vyn_connector::common
