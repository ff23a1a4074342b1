// Integer formatting into the message string: how result codes get into exception texts. Pure functions of their
// arguments, no locale.
#pragma once

#include <mur/basic_string.h>
#include <mur/export.h>

#include <cstddef>
#include <cstdint>

namespace mur::stream {

struct MUR_EXPORT format_options_t {
    std::uint32_t width = 0; // minimum, in characters
    std::uint32_t radix = 10;
    std::int32_t precision = -1; // not consulted for integers
    std::int32_t alignment = 1;  // > 0 pad on the left, 0 between prefix and digits, < 0 on the right
    std::uint32_t fill = U' ';   // a code point; from 0x10000 on nothing is padded
    bool showBase = false;
};

template <typename Char>
struct formatting_tokens;

template <>
struct MUR_EXPORT formatting_tokens<char16_t> {
    static const char16_t negative[2];
    static const char16_t base_lower[3];
    static const char16_t digits_lower[39]; // three 0 characters after the 36 digits
};

// Appends `value` and returns the number of characters appended. Radixes below 2 count as 2, above 39 as 39. Only
// radix 10 knows a sign; elsewhere a negative value shows its two's complement. Throws as `String` does when it
// cannot grow, and leaves it unchanged then.
template <typename String, typename Options, typename Integer>
MUR_EXPORT std::size_t stream_put_int(String& out, const Options& options, Integer value);

extern template std::size_t stream_put_int<types::wide_string, format_options_t, int>(types::wide_string&,
                                                                                      const format_options_t&, int);

} // namespace mur::stream
