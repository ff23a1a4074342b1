#include "console.h"

#include <unistd.h>

#include <cstdio>

namespace exchange {

namespace {

void WriteWhole(std::FILE* stream, const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string printable;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7f)
            printable += fmt::format("\\x{:02x}", byte);
        else
            printable += character;
    }
    return printable;
}

void Console::Line(std::string_view text)
{
    if (quiet_) return;
    const std::string_view overwrite = IsTerminal() ? "\r\x1b[K" : "";
    WriteWhole(stdout, fmt::format("{}{:<9} |{}{}\n", overwrite, side_, text.empty() ? "" : " ", text));
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
    WriteWhole(stdout, fmt::format("\r\x1b[K{:<9} | {}", side_, text));
}

bool Console::IsTerminal() const
{
    return !quiet_ && isatty(STDOUT_FILENO) != 0;
}

} // namespace exchange
