// What went over a channel: for each record the messages, their bytes, and how fast the largest of them is converted.
// That is measured when the conversation is over, in some milliseconds for all records together.
#pragma once

#include "transport/measure.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace exchange {

class Console;

class Statistics {
public:
    template <typename Record>
    void Add(const Record& record, std::size_t wireBytes, std::size_t arenaBytes)
    {
        Row& row = Count(Codec<Record>::name, wireBytes, arenaBytes);
        if (wireBytes + arenaBytes <= row.largestBytes) return;
        row.largestBytes = wireBytes + arenaBytes;
        row.measure = [largest = record] { return Measure(largest); };
    }

    // Both measure.
    void Print(Console& console) const;
    std::string ToJson(std::string_view side) const;

private:
    struct Row {
        std::string record;
        std::uint64_t messages = 0;
        std::uint64_t wireBytes = 0;
        std::uint64_t arenaBytes = 0;
        std::uint64_t largestBytes = 0; // of one message, wire structure and arena
        std::function<std::optional<Speed>()> measure;
    };

    Row& Count(const std::string& record, std::size_t wireBytes, std::size_t arenaBytes);

    std::vector<Row> rows_; // in the order of their first message
};

} // namespace exchange
