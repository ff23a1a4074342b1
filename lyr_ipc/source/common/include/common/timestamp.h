// Time stamps on the wire: the bare signed 64-bit count, without change of unit or epoch.
#pragma once

#include <common/export.h>
#include <common/zt_arena.h>
#include <wem/types/timestamp.h>

#include <cstdint>
#include <type_traits>

namespace vyn_connector::common {

// The wire value is a signed 64-bit `long`.
static_assert(std::is_same_v<std::int64_t, long>);

// The arena is there for uniformity, is never touched and may be null.
VYN_EXPORT std::int64_t CastToZt(const wem::types::Timestamp& value, zt_arena* arena);
VYN_EXPORT wem::types::Timestamp CastFromZt(const long& wire, const zt_arena* arena);

} // namespace vyn_connector::common
