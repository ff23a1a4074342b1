// Text that came from elsewhere, made fit to print.
#pragma once

#include <string>
#include <string_view>

namespace exchange {

// Control characters are written out byte by byte ("\x1b").
std::string Printable(std::string_view text);

} // namespace exchange
