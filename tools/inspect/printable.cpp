#include "printable.h"

#include <fmt/format.h>

#include <algorithm>

namespace inspect {

namespace {

struct Span {
    std::uint32_t first;
    std::uint32_t last;
};

// Control and format characters, separators of lines, what is private or no character, and marks of direction.
constexpr Span unprintable[] = {{0x0000, 0x001F},   {0x007F, 0x009F},   {0x00AD, 0x00AD},   {0x034F, 0x034F},
                                {0x0600, 0x0605},   {0x061C, 0x061C},   {0x06DD, 0x06DD},   {0x070F, 0x070F},
                                {0x0890, 0x0891},   {0x08E2, 0x08E2},   {0x115F, 0x1160},   {0x17B4, 0x17B5},
                                {0x180B, 0x180F},   {0x200B, 0x200F},   {0x2028, 0x202E},   {0x2060, 0x206F},
                                {0x3164, 0x3164},   {0xD800, 0xF8FF},   {0xFDD0, 0xFDEF},   {0xFE00, 0xFE0F},
                                {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},   {0xFFFE, 0xFFFF},
                                {0x110BD, 0x110BD}, {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3},
                                {0x1D173, 0x1D17A}, {0x1FFFE, 0x1FFFF}, {0x2FFFE, 0x2FFFF}, {0x3FFFE, 0x10FFFF}};

bool IsPrintable(std::uint32_t codePoint)
{
    const auto* const span =
        std::find_if(std::begin(unprintable), std::end(unprintable), [&](Span each) { return codePoint <= each.last; });
    return span == std::end(unprintable) || codePoint < span->first;
}

} // namespace

Character FirstOf(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::uint32_t lead = byte(0);
    const std::size_t size = lead < 0x80 ? 1 : lead >= 0xC2 && lead < 0xE0 ? 2 : lead >> 4 == 0xE ? 3 : 4;
    const Character invalid{text.substr(0, 1), false, false};
    if ((lead >= 0x80 && lead < 0xC2) || lead > 0xF4 || size > text.size()) return invalid;
    std::uint32_t codePoint = size == 1 ? lead : lead & (0xFFu >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if (byte(i) >> 6 != 2) return invalid;
        codePoint = codePoint << 6 | (byte(i) & 0x3F);
    }
    constexpr std::uint32_t least[] = {0, 0x80, 0x800, 0x10000};
    if (codePoint < least[size - 1] || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return invalid;
    return {text.substr(0, size), true, IsPrintable(codePoint)};
}

bool IsUtf8(std::string_view text)
{
    while (!text.empty()) {
        const Character next = FirstOf(text);
        if (!next.isValid) return false;
        text.remove_prefix(next.bytes.size());
    }
    return true;
}

std::string Printable(std::string_view text)
{
    std::string printable;
    while (!text.empty()) {
        const Character next = FirstOf(text);
        text.remove_prefix(next.bytes.size());
        if (next.bytes == "\\" || next.bytes == "\"")
            printable.append("\\").append(next.bytes);
        else if (next.isPrintable)
            printable += next.bytes;
        else
            for (const char byte : next.bytes)
                printable += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    }
    return printable;
}

std::string Hex(const std::uint8_t* bytes, std::size_t size)
{
    std::string hex;
    hex.reserve(2 * size);
    for (std::size_t i = 0; i < size; ++i) {
        hex += "0123456789abcdef"[bytes[i] >> 4];
        hex += "0123456789abcdef"[bytes[i] & 15];
    }
    return hex;
}

std::string Amount(std::uint64_t number, std::string_view unit)
{
    return fmt::format("{} {}{}", number, unit, number == 1 ? "" : "s");
}

bool IsMasked(const Message& message, const Node& node, bool showsSecrets)
{
    if (showsSecrets) return false;
    if (node.content == Content::None || node.content == Content::Array || node.content == Content::Optional)
        return false; // nothing to show, or what has nodes of its own
    if (!node.hasPointer) return node.isSecret || message.IsSecret(node.place);
    return node.resolves && (node.isSecret || message.IsSecret(node.Target()));
}

std::string ValueOf(const Message& message, const Node& node, bool showsSecrets, std::size_t most)
{
    if (IsMasked(message, node, showsSecrets)) return std::string(masked);
    switch (node.content) {
    case Content::None:
        return "";
    case Content::Number:
    case Content::Time:
        return node.isSigned ? fmt::format("{}", static_cast<std::int64_t>(node.bits)) : fmt::format("{}", node.bits);
    case Content::Flag:
        return node.bits == 0 ? "false" : node.bits == 1 ? "true" : fmt::format("true ({})", node.bits);
    case Content::Raw:
        return Hex(message.At(node.ValuePlace()), node.ValuePlace().size);
    case Content::Text: {
        if (!node.resolves) return "";
        const std::string_view text(reinterpret_cast<const char*>(message.At(node.Target())), node.pointer.size);
        std::size_t size = 0;
        while (size < text.size() && size < most)
            size += FirstOf(text.substr(size)).bytes.size();
        return fmt::format("\"{}\"{}", Printable(text.substr(0, size)), size < text.size() ? "..." : "");
    }
    case Content::Blob: {
        if (!node.resolves) return "";
        const std::size_t size = std::min<std::size_t>(node.pointer.size, 8);
        const bool isCut = size < node.pointer.size;
        return fmt::format("{}{}", Hex(message.At(node.Target()), size), isCut ? "..." : size == 0 ? "(empty)" : "");
    }
    case Content::Array:
        return "";
    case Content::Optional:
        return node.pointer.size == 0 ? "(absent)" : "";
    case Content::Unused:
        break;
    }
    return "(unused)";
}

std::string At(const Place& place)
{
    return fmt::format("{} 0x{:04x}", place.inArena ? "arena" : "wire", place.offset);
}

} // namespace inspect
