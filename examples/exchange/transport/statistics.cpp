#include "transport/statistics.h"

#include "host/console.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace exchange {

void Statistics::Encoded(const std::string& record, std::size_t wire, std::size_t arena, std::chrono::nanoseconds time)
{
    Count(record, wire, arena).encode.Add(time);
}

void Statistics::Decoded(const std::string& record, std::size_t wire, std::size_t arena, std::chrono::nanoseconds time)
{
    Count(record, wire, arena).decode.Add(time);
}

void Statistics::Print(Console& console) const
{
    const auto median = [](const Times& times) {
        return times.count == 0 ? std::string("-") : std::to_string(times.Median());
    };
    constexpr const char* format = "{:<28} {:>9} {:>11} {:>12} {:>10} {:>10}";
    console.Line("");
    console.Line(fmt::format(format, "record", "messages", "wire bytes", "arena bytes", "encode ns", "decode ns"));
    for (const Row& row : rows_)
        console.Line(fmt::format(format, row.record, row.messages, row.wireBytes, row.arenaBytes, median(row.encode),
                                 median(row.decode)));
}

std::string Statistics::ToJson(std::string_view side) const
{
    const auto median = [](const Times& times) {
        return times.count == 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(times.Median());
    };
    nlohmann::ordered_json records = nlohmann::ordered_json::array();
    for (const Row& row : rows_)
        records.push_back({{"record", row.record},
                           {"messages", row.messages},
                           {"wireBytes", row.wireBytes},
                           {"arenaBytes", row.arenaBytes},
                           {"encodeNanoseconds", median(row.encode)},
                           {"decodeNanoseconds", median(row.decode)}});
    return nlohmann::ordered_json({{"side", side}, {"records", records}}).dump();
}

void Statistics::Times::Add(std::chrono::nanoseconds time)
{
    last[count % last.size()] = time.count();
    ++count;
}

std::int64_t Statistics::Times::Median() const
{
    if (count == 0) return -1;
    std::vector<std::int64_t> sorted(last.begin(),
                                     last.begin() + static_cast<std::ptrdiff_t>(std::min(count, last.size())));
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
}

Statistics::Row& Statistics::Count(const std::string& record, std::size_t wire, std::size_t arena)
{
    auto row = std::find_if(rows_.begin(), rows_.end(), [&](const Row& other) { return other.record == record; });
    if (row == rows_.end()) {
        rows_.emplace_back();
        row = rows_.end() - 1;
        row->record = record;
    }
    ++row->messages;
    row->wireBytes += wire;
    row->arenaBytes += arena;
    return *row;
}

} // namespace exchange
