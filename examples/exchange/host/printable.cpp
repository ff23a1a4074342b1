#include "host/printable.h"

#include <fmt/format.h>

namespace exchange {

// The second set of control characters, C2 80 to C2 9F in UTF-8, is meant as well.
std::string Printable(std::string_view text)
{
    const auto byteAt = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const auto beginsControl = [&](std::size_t i) {
        return byteAt(i) == 0xc2 && byteAt(i + 1) >= 0x80 && byteAt(i + 1) < 0xa0;
    };
    std::string printable;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isControl =
            byteAt(i) < 0x20 || byteAt(i) == 0x7f || beginsControl(i) || (i > 0 && beginsControl(i - 1));
        printable += isControl ? fmt::format("\\x{:02x}", byteAt(i)) : std::string(1, text[i]);
    }
    return printable;
}

} // namespace exchange
