#include "host/printable.h"

#include <fmt/format.h>
#include <utf8proc.h>

#include <algorithm>

namespace exchange {

namespace {

struct Character {
    std::string_view bytes;
    bool isPrintable;
    std::size_t width;
};

// The first character of a text that is not empty; where it does not begin with one, a byte that is not printable.
Character FirstOf(std::string_view text)
{
    utf8proc_int32_t codePoint = -1;
    const auto size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                       static_cast<utf8proc_ssize_t>(text.size()), &codePoint);
    if (size <= 0) return {text.substr(0, 1), false, 1};
    bool isPrintable = true;
    switch (utf8proc_category(codePoint)) {
    case UTF8PROC_CATEGORY_CC: // control characters
    case UTF8PROC_CATEGORY_CF: // direction and format
    case UTF8PROC_CATEGORY_CN: // not assigned
    case UTF8PROC_CATEGORY_CO: // private
    case UTF8PROC_CATEGORY_CS: // half a character of UTF-16
    case UTF8PROC_CATEGORY_ZL: // line and paragraph separator
    case UTF8PROC_CATEGORY_ZP:
        isPrintable = false;
        break;
    default:
        break;
    }
    return {text.substr(0, static_cast<std::size_t>(size)), isPrintable,
            static_cast<std::size_t>(utf8proc_charwidth(codePoint))};
}

// As many of the first characters as fit.
std::string_view Beginning(std::string_view text, std::size_t width)
{
    std::size_t end = 0;
    while (end < text.size()) {
        const Character next = FirstOf(text.substr(end));
        if (next.width > width) break;
        width -= next.width;
        end += next.bytes.size();
    }
    return text.substr(0, end);
}

// As many of the last characters as fit.
std::string_view End(std::string_view text, std::size_t width)
{
    std::size_t total = WidthOf(text);
    while (total > width) {
        const Character next = FirstOf(text);
        total -= next.width;
        text.remove_prefix(next.bytes.size());
    }
    return text;
}

} // namespace

std::string Printable(std::string_view text)
{
    std::string printable;
    while (!text.empty()) {
        const Character next = FirstOf(text);
        if (next.isPrintable)
            printable += next.bytes;
        else
            for (const char byte : next.bytes)
                printable += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
        text.remove_prefix(next.bytes.size());
    }
    return printable;
}

std::string Amount(std::uint64_t number, std::string_view unit)
{
    return fmt::format("{} {}{}", number, unit, number == 1 ? "" : "s");
}

std::size_t WidthOf(std::string_view text)
{
    std::size_t width = 0;
    while (!text.empty()) {
        const Character next = FirstOf(text);
        width += next.width;
        text.remove_prefix(next.bytes.size());
    }
    return width;
}

std::string Shortened(std::string_view text, std::size_t width)
{
    constexpr std::string_view gap = "...";
    if (WidthOf(text) <= width) return std::string(text);
    if (width <= gap.size()) return std::string(Beginning(text, width));
    const std::size_t left = width - gap.size();
    return fmt::format("{}{}{}", Beginning(text, left - left / 2), gap, End(text, left / 2));
}

std::string Padded(std::string_view text, std::size_t width)
{
    const std::size_t have = WidthOf(text);
    return std::string(text) + std::string(width - std::min(width, have), ' ');
}

std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent)
{
    std::string wrapped;
    for (std::size_t left = width; WidthOf(text) > left; left = width - std::min(width, indent)) {
        std::string_view line = Beginning(text, left);
        const std::size_t blank = line.rfind(' ');
        if (text[line.size()] != ' ' && blank != std::string_view::npos && blank > 0) line = line.substr(0, blank);
        if (line.empty()) break; // not even one character fits
        wrapped += fmt::format("{}\n{:{}}", line, "", indent);
        text.remove_prefix(std::min(line.size(), text.size()));
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    }
    return wrapped + std::string(text);
}

} // namespace exchange
