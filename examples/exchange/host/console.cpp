#include "host/console.h"

#include <unistd.h>

#include <cstdio>

namespace exchange {

namespace {

void WriteWhole(std::FILE* stream, const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

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

} // namespace

void Console::Line(std::string_view text)
{
    if (quiet_) return;
    const std::string_view overwrite = IsTerminal() ? "\r\x1b[K" : "";
    WriteWhole(stdout, fmt::format("{}{:<9} |{}{}\n", overwrite, side_, text.empty() ? "" : " ", Printable(text)));
}

void Console::Json(const std::string& text)
{
    WriteWhole(stdout, text + "\n");
}

void Console::Error(std::string_view text)
{
    if (IsTerminal()) WriteWhole(stdout, "\r\x1b[K"); // a transient line may stand there
    WriteWhole(stderr, fmt::format("exchange: {}: {}\n", side_, Printable(text)));
}

void Console::Transient(std::string_view text)
{
    WriteWhole(stdout, fmt::format("\r\x1b[K{:<9} | {}", side_, Printable(text)));
}

bool Console::IsTerminal() const
{
    return !quiet_ && isatty(STDOUT_FILENO) != 0;
}

} // namespace exchange
