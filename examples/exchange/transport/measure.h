// How fast the library converts a record: the median of many warm conversions, because the first one of each kind waits
// for code and data to come from memory and says nothing about the library.
#pragma once

#include "transport/codec.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <optional>
#include <vector>

namespace exchange {

struct Speed {
    double encodeNanoseconds;
    double decodeNanoseconds;
};

template <typename Conversion>
double MedianNanoseconds(Conversion convert)
{
    using Clock = std::chrono::steady_clock;
    const auto time = [&](unsigned repetitions) {
        const Clock::time_point begin = Clock::now();
        for (; repetitions > 0; --repetitions)
            convert();
        return Clock::now() - begin;
    };
    unsigned repetitions = 1; // of one reading: so many that reading the clock does not count
    while (time(repetitions) < std::chrono::microseconds(2))
        repetitions *= 2;

    std::array<double, 51> readings{};
    for (double& reading : readings)
        reading = std::chrono::duration<double, std::nano>(time(repetitions)).count() / repetitions;
    std::nth_element(readings.begin(), readings.begin() + readings.size() / 2, readings.end());
    return readings[readings.size() / 2];
}

// Empty where the record cannot be encoded: a reader accepts more than a writer.
template <typename Record>
std::optional<Speed> Measure(const Record& record)
try {
    auto message = Codec<Record>::Encode(record);
    message.arena.reserve(1); // an arena's addresses must not be null
    std::uint8_t* const start = message.arena.data();
    std::uint8_t* const end = start + message.arena.size();
    const zt_arena full{start, end, end};

    Speed speed{};
    speed.encodeNanoseconds = MedianNanoseconds([&] {
        zt_arena arena{start, start, end};
        Codec<Record>::Write(record, arena);
    });
    speed.decodeNanoseconds = MedianNanoseconds([&] { Codec<Record>::Read(message.wire, full); });
    return speed;
} catch (const std::exception&) {
    return std::nullopt;
}

} // namespace exchange
