#include "host/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace exchange {

std::size_t ColumnsOf(int descriptor)
{
    if (isatty(descriptor) == 0) return std::numeric_limits<std::size_t>::max();
    if (const char* const given = std::getenv("COLUMNS")) {
        const std::string_view text(given);
        std::size_t columns = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), columns);
        if (error == std::errc() && end == text.data() + text.size() && columns > 0) return columns;
    }
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    return 80;
}

bool TakesControlSequences(int descriptor)
{
    const char* const name = std::getenv("TERM");
    return isatty(descriptor) != 0 && name != nullptr && std::string_view(name) != "dumb" && *name != '\0';
}

} // namespace exchange
