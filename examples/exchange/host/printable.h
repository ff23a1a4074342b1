// Text that came from elsewhere, made fit to print: nothing in it steers the terminal, and it can be made as narrow as
// the terminal is. Whatever this program prints has passed through here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace exchange {

// What is not a printable character of UTF-8 is written out byte by byte ("\x1b"): control characters, marks that turn
// the direction of writing or take no room, and bytes that are not UTF-8 at all.
std::string Printable(std::string_view text);

// "1 byte", "2 bytes"
std::string Amount(std::uint64_t number, std::string_view unit);

// The functions below take printable text.

// In columns of a terminal, of which some characters take two and others none.
std::size_t WidthOf(std::string_view text);

// Text that is wider than `width` loses its middle: beginning and end tell most ("/usr/sha...r/copyright").
std::string Shortened(std::string_view text, std::size_t width);

// Filled with blanks to a column's width. Text that is wider stays as it is.
std::string Padded(std::string_view text, std::size_t width);

// Broken at blanks into lines of at most `width` columns; all but the first are indented.
std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent);

} // namespace exchange
