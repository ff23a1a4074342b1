// The runtime's result codes: signed 32-bit, failures have the top bit set, bits 16 to 30 are the facility (0 the
// runtime, 1 the platform). Whoever reports a code to people asks here for its English text.
#pragma once

#include <mur/export.h>

#include <string_view>

namespace mur {

inline constexpr int resultInvalidArgument = static_cast<int>(0x80000046u);
inline constexpr int resultNotMatched = static_cast<int>(0x8000004Au);
inline constexpr int resultNotFound = static_cast<int>(0x8000004Cu);
inline constexpr int resultFound = static_cast<int>(0x8000004Du);
inline constexpr int resultOutOfSpace = static_cast<int>(0x80000062u);

// The text of a code of facility 0; "Unknown result code" for every other value, platform codes included. The
// view is into static memory.
MUR_EXPORT std::string_view rtl_result_code_message(int code) noexcept;

} // namespace mur
