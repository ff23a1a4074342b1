// How far a transfer has come: a bar that moves on a terminal that can show it, elsewhere a line now and then.
#pragma once

#include "host/console.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace exchange {

class Progress {
public:
    // `start` bytes of `total` were there before.
    Progress(Console& console, std::string name, std::uint64_t start, std::uint64_t total);

    void Update(std::uint64_t done);
    void Finish();

private:
    using Clock = std::chrono::steady_clock;

    // "NAME: 12.0 of 256.0 MiB, 800.1 MiB/s, 0:03 left"
    std::string Text(const std::string& name, Clock::time_point now) const;
    std::string WithBar(const std::string& text) const;

    Console& console_;
    std::string name_;
    std::uint64_t start_;
    std::uint64_t total_;
    std::uint64_t done_;
    Clock::time_point begin_ = Clock::now();
    Clock::time_point shown_ = begin_;
};

} // namespace exchange
