#include "host/console.h"

#include "host/printable.h"
#include "host/standard_streams.h"
#include "host/terminal.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace exchange {

namespace {

constexpr std::string_view eraseLine = "\r\x1b[K";

std::string Prefixed(std::string_view side, std::string_view text)
{
    return fmt::format("{:<9} |{}{}", side, text.empty() ? "" : " ", text);
}

} // namespace

void Console::Line(std::string_view text)
{
    WriteLine(Prefixed(side_, Printable(text)));
}

void Console::Field(std::string_view name, std::size_t nameWidth, std::string_view value)
{
    if (value.empty()) return Line(name);
    const std::string column = Padded(Printable(name), nameWidth);
    const std::size_t left = TextWidth() - std::min(TextWidth(), WidthOf(column));
    WriteLine(Prefixed(side_, column + Shortened(Printable(value), left)));
}

// Columns stand two blanks apart, or one where the terminal is too narrow for that; then the names are shortened. The
// table has no prefix, which would take a sixth of a terminal's width.
void Console::Table(const TableRows& rows)
{
    std::vector<std::size_t> widths(rows.front().size());
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], WidthOf(Printable(row[i])));

    const std::size_t columns = ColumnsOf(STDOUT_FILENO);
    const auto numbersWidth = [&](std::size_t gap) {
        std::size_t width = 0;
        for (std::size_t i = 1; i < widths.size(); ++i)
            width += gap + widths[i];
        return width;
    };
    const std::size_t gap = columns - std::min(columns, widths[0]) >= numbersWidth(2) ? 2 : 1;
    constexpr std::size_t shortestName = 8;
    const std::size_t nameWidth = std::max(shortestName, columns - std::min(columns, numbersWidth(gap)));
    widths[0] = std::min(widths[0], nameWidth);

    for (const auto& row : rows) {
        std::string line = Padded(Shortened(Printable(row[0]), widths[0]), widths[0]);
        for (std::size_t i = 1; i < row.size(); ++i)
            line += fmt::format("{:{}}{:>{}}", "", gap, Printable(row[i]), widths[i]);
        WriteLine(line.substr(0, line.find_last_not_of(' ') + 1));
    }
}

void Console::Json(const std::string& text)
{
    WriteOutput(text + "\n");
}

void Console::Transient(std::string_view text)
{
    const std::string line = Prefixed(side_, Printable(text));
    WriteOutput(fmt::format("{}{}", eraseLine, Shortened(line, ColumnsOf(STDOUT_FILENO))));
}

std::size_t Console::TextWidth() const
{
    const std::size_t columns = ColumnsOf(STDOUT_FILENO);
    return columns - std::min(columns, Prefixed(side_, " ").size() - 1);
}

bool Console::CanOverwrite() const
{
    return !quiet_ && TakesControlSequences(STDOUT_FILENO);
}

void Console::Error(std::string_view text)
{
    if (CanOverwrite()) {
        std::fputs(eraseLine.data(), stdout);
        std::fflush(stdout);
    }
    ProgramError(fmt::format("{}: {}", side_, text));
}

void Console::ProgramError(std::string_view text)
{
    const std::string lines = Wrapped("exchange: " + Printable(text), ColumnsOf(STDERR_FILENO), 2) + "\n";
    std::fputs(lines.c_str(), stderr); // where that cannot be written either, the status has to say it
}

void Console::ProgramText(std::string_view text)
{
    const std::size_t columns = ColumnsOf(STDOUT_FILENO);
    std::string lines;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::size_t begin = std::min(line.find_first_not_of(' '), line.size());
        const std::size_t gap = line.find("  ", begin);
        const std::size_t lastColumn = gap == std::string_view::npos ? begin : line.find_first_not_of(' ', gap);
        lines += Wrapped(Printable(line), columns, std::min(lastColumn, columns / 2)) + "\n";
    }
    WriteOutput(lines);
}

// The other process may have left a transient line.
void Console::WriteLine(std::string_view line) const
{
    if (quiet_) return;
    const std::string_view overwrite = CanOverwrite() ? eraseLine : "";
    WriteOutput(fmt::format("{}{}\n", overwrite, Shortened(line, ColumnsOf(STDOUT_FILENO))));
}

} // namespace exchange
