#include "transport/statistics.h"

#include "host/console.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace exchange {

void Statistics::Print(Console& console) const
{
    console.Line("");
    console.Line("each record's messages, and the speed of the largest one:");
    TableRows table = {{"record", "messages", "bytes", "largest", "encode", "", "decode", ""},
                       {"", "", "", "", "ns", "GB/s", "ns", "GB/s"}};
    for (const Row& row : rows_) {
        table.push_back({row.record, fmt::to_string(row.messages), fmt::to_string(row.wireBytes + row.arenaBytes),
                         fmt::to_string(row.largestBytes)});
        const std::optional<Speed> speed = row.measure();
        for (const double Speed::*time : {&Speed::encodeNanoseconds, &Speed::decodeNanoseconds}) {
            table.back().push_back(speed ? fmt::format("{:.0f}", (*speed).*time) : "-");
            table.back().push_back(speed ? fmt::format("{:.1f}", static_cast<double>(row.largestBytes) / (*speed).*time)
                                         : "-");
        }
    }
    console.Table(table);
}

std::string Statistics::ToJson(std::string_view side) const
{
    const auto number = [](bool isKnown, double value) {
        return isKnown ? nlohmann::ordered_json(std::round(value * 10) / 10) : nlohmann::ordered_json();
    };
    nlohmann::ordered_json records = nlohmann::ordered_json::array();
    for (const Row& row : rows_) {
        const std::optional<Speed> measured = row.measure();
        const Speed speed = measured.value_or(Speed{1, 1});
        const auto bytes = static_cast<double>(row.largestBytes) * 1e9;
        records.push_back({{"record", row.record},
                           {"messages", row.messages},
                           {"wireBytes", row.wireBytes},
                           {"arenaBytes", row.arenaBytes},
                           {"largestBytes", row.largestBytes},
                           {"encodeNanoseconds", number(measured.has_value(), speed.encodeNanoseconds)},
                           {"encodeBytesPerSecond", number(measured.has_value(), bytes / speed.encodeNanoseconds)},
                           {"decodeNanoseconds", number(measured.has_value(), speed.decodeNanoseconds)},
                           {"decodeBytesPerSecond", number(measured.has_value(), bytes / speed.decodeNanoseconds)}});
    }
    return nlohmann::ordered_json({{"side", side}, {"records", records}}).dump();
}

Statistics::Row& Statistics::Count(const std::string& record, std::size_t wireBytes, std::size_t arenaBytes)
{
    auto row = std::find_if(rows_.begin(), rows_.end(), [&](const Row& other) { return other.record == record; });
    if (row == rows_.end()) {
        rows_.emplace_back();
        row = rows_.end() - 1;
        row->record = record;
    }
    ++row->messages;
    row->wireBytes += wireBytes;
    row->arenaBytes += arenaBytes;
    return *row;
}

} // namespace exchange
