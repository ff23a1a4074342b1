// Bytes of a message as text that is safe to show: on a terminal, in a page, in a picture. What would move the cursor,
// change direction or not be seen at all is written out byte by byte.
#pragma once

#include "message.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace inspect {

// The first character: its bytes, and whether it can be shown as it is. `text` is not empty.
struct Character {
    std::string_view bytes;
    bool isValid; // UTF-8
    bool isPrintable;
};
Character FirstOf(std::string_view text);

bool IsUtf8(std::string_view text);

// With "\x1b" in place of what cannot be shown, and "\\" and "\"" for what stands for itself in quotes.
std::string Printable(std::string_view text);

std::string Hex(const std::uint8_t* bytes, std::size_t size);

// "1 byte", "3 bytes"
std::string Amount(std::uint64_t number, std::string_view unit);

// In place of what is secret.
inline constexpr std::string_view masked = "********";

// Whether the value of this node is to be left out: it is secret, or lies where a secret does.
bool IsMasked(const Message& message, const Node& node, bool showsSecrets);

// The value on one line: a number, "quoted text" cut behind `most` bytes, a blob's first bytes. Empty without one.
std::string ValueOf(const Message& message, const Node& node, bool showsSecrets, std::size_t most = 48);

// "wire 0x0028", "arena 0x0018"
std::string At(const Place& place);

} // namespace inspect
