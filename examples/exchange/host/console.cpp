#include "host/console.h"

#include "host/printable.h"
#include "host/standard_streams.h"

#include <unistd.h>

#include <cstdio>

namespace exchange {

void Console::Line(std::string_view text)
{
    if (quiet_) return;
    const std::string_view overwrite = IsTerminal() ? "\r\x1b[K" : "";
    WriteOutput(fmt::format("{}{:<9} |{}{}\n", overwrite, side_, text.empty() ? "" : " ", Printable(text)));
}

void Console::Json(const std::string& text)
{
    WriteOutput(text + "\n");
}

void Console::Error(std::string_view text)
{
    if (IsTerminal()) std::fputs("\r\x1b[K", stdout); // a transient line may stand there
    std::fflush(stdout);
    std::fputs(fmt::format("exchange: {}: {}\n", side_, Printable(text)).c_str(), stderr);
}

void Console::Transient(std::string_view text)
{
    WriteOutput(fmt::format("\r\x1b[K{:<9} | {}", side_, Printable(text)));
}

bool Console::IsTerminal() const
{
    return !quiet_ && isatty(STDOUT_FILENO) != 0;
}

} // namespace exchange
