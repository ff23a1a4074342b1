// The message string as UTF-8, for whoever prints or logs what an exception's Text() says.
#pragma once

#include <mur/basic_string.h>

#include <string>
#include <string_view>

namespace mur {

// Takes a types::wide_string as well. Half a surrogate pair becomes U+FFFD, so that the result is always valid UTF-8.
inline std::string to_utf8(std::u16string_view text)
{
    std::string utf8;
    utf8.reserve(text.size());
    const auto put = [&](unsigned leader, char32_t bits) { utf8 += static_cast<char>(leader | bits); };
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t codePoint = text[i];
        if (codePoint >= 0xD800 && codePoint <= 0xDFFF) {
            const char32_t low = codePoint <= 0xDBFF && i + 1 < text.size() ? text[i + 1] : U'\0';
            if (low >= 0xDC00 && low <= 0xDFFF) {
                codePoint = 0x10000 + ((codePoint - 0xD800) << 10U) + (low - 0xDC00);
                ++i;
            } else {
                codePoint = 0xFFFD;
            }
        }
        if (codePoint < 0x80) {
            put(0, codePoint);
            continue;
        }
        if (codePoint < 0x800) {
            put(0xC0, codePoint >> 6U);
        } else {
            if (codePoint < 0x10000) {
                put(0xE0, codePoint >> 12U);
            } else {
                put(0xF0, codePoint >> 18U);
                put(0x80, codePoint >> 12U & 0x3FU);
            }
            put(0x80, codePoint >> 6U & 0x3FU);
        }
        put(0x80, codePoint & 0x3FU);
    }
    return utf8;
}

} // namespace mur
