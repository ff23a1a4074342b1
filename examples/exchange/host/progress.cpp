#include "host/progress.h"

#include "host/printable.h"

#include <algorithm>
#include <cmath>

namespace exchange {

Progress::Progress(Console& console, std::string name, std::uint64_t start, std::uint64_t total)
    : console_(console), name_(std::move(name)), start_(start), total_(total), done_(start)
{
}

void Progress::Update(std::uint64_t done)
{
    done_ = done;
    const Clock::time_point now = Clock::now();
    if (now - shown_ < (console_.CanOverwrite() ? std::chrono::milliseconds(100) : std::chrono::seconds(1))) return;
    shown_ = now;
    if (console_.CanOverwrite())
        console_.Transient(WithBar(Text(Shortened(Printable(name_), 24), now)));
    else
        console_.Line(Text(name_, now));
}

void Progress::Finish()
{
    console_.Line(Text(name_, Clock::now()));
}

// The bar takes what the text leaves of the terminal's width, and goes where that is next to nothing.
std::string Progress::WithBar(const std::string& text) const
{
    constexpr std::size_t shortest = 5;
    constexpr std::size_t longest = 24;
    constexpr std::size_t around = 3; // "[] "
    const std::size_t needed = WidthOf(text) + around;
    const std::size_t width = std::min(longest, console_.TextWidth() - std::min(console_.TextWidth(), needed));
    if (width < shortest) return text;
    const auto filled = static_cast<std::size_t>(static_cast<double>(width) * static_cast<double>(done_) /
                                                 static_cast<double>(std::max<std::uint64_t>(total_, 1)));
    return fmt::format("[{:.<{}}] {}", std::string(std::min(filled, width), '#'), width, text);
}

std::string Progress::Text(const std::string& name, Clock::time_point now) const
{
    constexpr double mebibyte = 1 << 20;
    const double seconds = std::max(std::chrono::duration<double>(now - begin_).count(), 1e-6);
    const double rate = static_cast<double>(done_ - start_) / seconds;
    std::string text =
        fmt::format("{}: {:.1f} of {:.1f} MiB, {:.1f} MiB/s", name, static_cast<double>(done_) / mebibyte,
                    static_cast<double>(total_) / mebibyte, rate / mebibyte);
    if (done_ < total_ && rate > 0) {
        const auto left = static_cast<std::uint64_t>(std::ceil(static_cast<double>(total_ - done_) / rate));
        text += fmt::format(", {}:{:02} left", left / 60, left % 60);
    }
    return text;
}

} // namespace exchange
