// What went over a channel: for each record the messages, their bytes, and how long the conversions took.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace exchange {

class Console;

class Statistics {
public:
    void Encoded(const std::string& record, std::size_t wire, std::size_t arena, std::chrono::nanoseconds time);
    void Decoded(const std::string& record, std::size_t wire, std::size_t arena, std::chrono::nanoseconds time);

    void Print(Console& console) const;
    std::string ToJson(std::string_view side) const;

private:
    // The last times only, so that a transfer of gigabytes takes no more memory than a short one.
    struct Times {
        void Add(std::chrono::nanoseconds time);
        std::int64_t Median() const; // -1: there are none

        std::array<std::int64_t, 1024> last{};
        std::size_t count = 0;
    };

    struct Row {
        std::string record;
        std::uint64_t messages = 0;
        std::uint64_t wireBytes = 0;
        std::uint64_t arenaBytes = 0;
        Times encode;
        Times decode;
    };

    Row& Count(const std::string& record, std::size_t wire, std::size_t arena);

    std::vector<Row> rows_; // in the order of their first message
};

} // namespace exchange
