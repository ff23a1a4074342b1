#include "host/progress.h"

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
    if (now - shown_ < (console_.IsTerminal() ? std::chrono::milliseconds(100) : std::chrono::seconds(1))) return;
    shown_ = now;
    if (!console_.IsTerminal()) {
        console_.Line(Text(now));
        return;
    }
    constexpr std::size_t width = 24;
    const auto filled = static_cast<std::size_t>(static_cast<double>(width) * static_cast<double>(done_) /
                                                 static_cast<double>(std::max<std::uint64_t>(total_, 1)));
    const std::string bar(std::min(filled, width), '#');
    console_.Transient(fmt::format("[{:.<{}}] {}", bar, width, Text(now)));
}

void Progress::Finish()
{
    console_.Line(Text(Clock::now()));
}

std::string Progress::Text(Clock::time_point now) const
{
    constexpr double mebibyte = 1 << 20;
    const double seconds = std::max(std::chrono::duration<double>(now - begin_).count(), 1e-6);
    const double rate = static_cast<double>(done_ - start_) / seconds;
    std::string text =
        fmt::format("{}: {:.1f} of {:.1f} MiB, {:.1f} MiB/s", name_, static_cast<double>(done_) / mebibyte,
                    static_cast<double>(total_) / mebibyte, rate / mebibyte);
    if (done_ < total_ && rate > 0) {
        const auto left = static_cast<std::uint64_t>(std::ceil(static_cast<double>(total_ - done_) / rate));
        text += fmt::format(", {}:{:02} left", left / 60, left % 60);
    }
    return text;
}

} // namespace exchange
