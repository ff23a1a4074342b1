#include "console.h"

#include <cstdio>

namespace exchange {

void Console::Line(std::string_view text)
{
    fmt::print(stdout, "{:<9} | {}\n", side_, text);
    std::fflush(stdout);
}

void Console::Error(std::string_view text)
{
    fmt::print(stderr, "exchange: {}: {}\n", side_, text);
}

std::string Console::ToText(const std::string& value)
{
    if (value.empty()) return "(empty)";
    std::string text;
    for (const char character : value) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7f)
            text += fmt::format("\\x{:02x}", byte);
        else
            text += character;
    }
    return text;
}

} // namespace exchange
