// A point in time as records carry it: one signed 64-bit count, which goes onto the wire as it is held. Only the
// conversions to and from std::chrono give the count a meaning: nanoseconds since the Unix epoch. No clock is read.
#pragma once

#include <chrono>
#include <cstdint>

namespace wem::types {

class Timestamp {
public:
    using time_point = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

    constexpr Timestamp() noexcept = default;
    constexpr explicit Timestamp(std::int64_t value) noexcept : count(value) {}

    // Both conversions are exact. A coarser time outside the years 1678 to 2261 does not fit into nanoseconds;
    // keeping to them is the caller's part.
    constexpr Timestamp(time_point time) noexcept : count(time.time_since_epoch().count()) {}
    constexpr explicit Timestamp(std::chrono::nanoseconds sinceEpoch) noexcept : count(sinceEpoch.count()) {}
    constexpr operator time_point() const noexcept { return time_point(std::chrono::nanoseconds(count)); }
    constexpr explicit operator std::chrono::nanoseconds() const noexcept { return std::chrono::nanoseconds(count); }

    friend constexpr bool operator==(Timestamp a, Timestamp b) noexcept { return a.count == b.count; }
    friend constexpr bool operator!=(Timestamp a, Timestamp b) noexcept { return a.count != b.count; }
    friend constexpr bool operator<(Timestamp a, Timestamp b) noexcept { return a.count < b.count; }
    friend constexpr bool operator<=(Timestamp a, Timestamp b) noexcept { return a.count <= b.count; }
    friend constexpr bool operator>(Timestamp a, Timestamp b) noexcept { return a.count > b.count; }
    friend constexpr bool operator>=(Timestamp a, Timestamp b) noexcept { return a.count >= b.count; }

    std::int64_t count = 0;
};

} // namespace wem::types
