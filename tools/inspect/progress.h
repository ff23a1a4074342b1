// Says on a terminal how far long work has got, on one line that is taken away at the end.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <unistd.h>

namespace inspect {

class Progress {
public:
    // Nothing is shown where the results themselves appear on the terminal.
    Progress() : isShown_(isatty(STDERR_FILENO) == 1 && isatty(STDOUT_FILENO) != 1) {}
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress()
    {
        if (isShown_) std::fputs("\r\x1b[K", stderr);
    }

    void Show(std::size_t done, std::size_t all)
    {
        const auto now = std::chrono::steady_clock::now();
        if (!isShown_ || now < next_) return;
        next_ = now + std::chrono::milliseconds(100);
        std::fprintf(stderr, "\r%zu of %zu messages\x1b[K", done, all);
    }

private:
    const bool isShown_;
    std::chrono::steady_clock::time_point next_{};
};

} // namespace inspect
