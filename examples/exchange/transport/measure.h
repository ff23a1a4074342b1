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

// What the codec encodes: a record itself, or a range, where the record is a vector of identifiers.
template <typename Record>
const Record& Encodable(const Record& record)
{
    return record;
}
inline vyn_connector::common::VynUpdateIdentifierRange Encodable(const vyn_connector::VynUpdateIdentifiers& record)
{
    return {record.cbegin(), record.cend()};
}

// Empty where the record cannot be encoded: a reader accepts more than a writer.
template <typename Record>
std::optional<Speed> Measure(const Record& record)
try {
    const auto& source = Encodable(record);
    using Writer = Codec<std::decay_t<decltype(source)>>;
    using Reader = Codec<Record>;

    const std::size_t size = Writer::Size(source);
    std::vector<std::uint8_t> buffer(std::max<std::size_t>(size, 1)); // an arena's addresses must not be null
    const zt_arena empty{buffer.data(), buffer.data(), buffer.data() + size};
    zt_arena arena = empty;
    const auto wire = Writer::Encode(source, arena);
    const zt_arena full = arena;

    Speed speed{};
    speed.encodeNanoseconds = MedianNanoseconds([&] {
        arena = empty;
        Writer::Encode(source, arena);
    });
    speed.decodeNanoseconds = MedianNanoseconds([&] { Reader::Decode(wire, full); });
    return speed;
} catch (const std::exception&) {
    return std::nullopt;
}

} // namespace exchange
