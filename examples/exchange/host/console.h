// The lines that a process of the exchange prints, each with the side that it comes from. Control characters in them are
// written out ("\x1b"): what a peer or a file holds must not steer the terminal.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

namespace exchange {

class Console {
public:
    // A quiet console prints nothing but errors and JSON.
    Console(std::string_view side, bool quiet) : side_(side), quiet_(quiet) {}

    std::string_view Side() const { return side_; }

    // Lines are written whole, so that those of two processes do not mix.
    void Line(std::string_view text);

    static void Json(const std::string& text);
    void Error(std::string_view text); // to standard error

    // A line that stays until the next one is printed over it. For terminals only.
    void Transient(std::string_view text);
    bool IsTerminal() const;

private:
    std::string_view side_;
    bool quiet_;
};

} // namespace exchange
