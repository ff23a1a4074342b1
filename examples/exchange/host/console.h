// The lines that a process of the exchange prints, each with the side that it comes from. On a terminal none is wider
// than the terminal; into a pipe or a file each is whole. What a peer or a file holds cannot steer the terminal.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace exchange {

// The first row is the heading. The first column holds names, the others hold numbers.
using TableRows = std::vector<std::vector<std::string>>;

class Console {
public:
    // A quiet console prints nothing but errors and JSON.
    Console(std::string_view side, bool quiet) : side_(side), quiet_(quiet) {}

    std::string_view Side() const { return side_; }

    // What is printed to standard output is there when a function returns; they throw std::system_error where it cannot
    // be written. Lines are written whole, so that those of two processes do not mix.
    void Line(std::string_view text);
    void Table(const TableRows& rows);
    static void Json(const std::string& text);

    // A name, padded to `nameWidth`, and a value; where the line is too wide, it is the value that loses its middle.
    void Field(std::string_view name, std::size_t nameWidth, std::string_view value);

    // A line that stays until the next one is printed over it. Only where the terminal can do that.
    void Transient(std::string_view text);
    bool CanOverwrite() const;

    // The columns that a line has for its text.
    std::size_t TextWidth() const;

    // To standard error, in as many lines as the terminal's width asks for.
    void Error(std::string_view text);
    static void ProgramError(std::string_view text);

    // What the program says of itself, without a side: help and version. A line that is too wide goes on below its last
    // column.
    static void ProgramText(std::string_view text);

private:
    void WriteLine(std::string_view line) const;

    std::string_view side_;
    bool quiet_;
};

} // namespace exchange
