// What a process of the exchange prints: lines that say which of the two sides they come from, and records, field by
// field. A record's fields are taken from its table, so there is no second list of them here; passwords are masked.
#pragma once

#include <common/vyn_connector_common.h>

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <type_traits>

namespace exchange {

class Console {
public:
    explicit Console(std::string_view side) : side_(side) {}

    // Each line is written whole, so that the lines of two processes do not mix.
    void Line(std::string_view text);

    // For everything that the user has to act upon; goes to standard error.
    void Error(std::string_view text);

    template <typename Record>
    void Fields(const Record& record, std::size_t indent = 2)
    {
        vyn_connector::common::ForEachRow<Record>([&](auto row) {
            if constexpr (vyn_connector::common::isField<decltype(row)>)
                Field(row.name, decltype(row)::InDomain::Of(record), indent);
        });
    }

private:
    template <typename Value>
    void Field(std::string_view name, const Value& value, std::size_t indent)
    {
        if constexpr (vyn_connector::common::isDescribed<Value>) {
            Line(fmt::format("{:{}}{}", "", indent, name));
            Fields(value, indent + 2);
        } else {
            const std::string text = name == "password" ? "********" : ToText(value);
            Line(fmt::format("{:{}}{:<{}}{}", "", indent, name, 24 - indent, text));
        }
    }

    static std::string ToText(const std::string& value); // as a peer may have sent anything: no control characters
    template <typename Value, std::enable_if_t<std::is_integral_v<Value>, int> = 0>
    static std::string ToText(const Value& value)
    {
        return fmt::format("{}", value);
    }

    std::string_view side_;
};

} // namespace exchange
