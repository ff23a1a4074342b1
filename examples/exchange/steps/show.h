// Prints a record, field by field. What fields there are, and of what kind, is taken from the record's table, so that
// there is no second list of them here. Passwords are masked.
#pragma once

#include "host/console.h"
#include "transport/channel.h"

#include <fmt/chrono.h>

#include <algorithm>

namespace exchange {

class RecordPrinter {
public:
    explicit RecordPrinter(Console& console) : console_(console) {}

    template <typename Record>
    void Fields(const Record& record, int indent)
    {
        vyn_connector::common::ForEachRow<Record>([&](auto row) {
            using Row = decltype(row);
            if constexpr (vyn_connector::common::isField<Row>)
                Field(typename Row::Kind{}, row.name, Row::InDomain::Of(record), indent);
        });
    }

private:
    template <typename Kind, typename Value>
    void Field(vyn_connector::common::kind::Secret<Kind>, std::string_view name, const Value&, int indent)
    {
        Line(name, "********", indent);
    }
    template <typename Value>
    void Field(vyn_connector::common::kind::InPlace, std::string_view name, const Value& value, int indent)
    {
        Line(name, ToText(value), indent);
    }
    template <std::size_t Max>
    void Field(vyn_connector::common::kind::Text<Max>, std::string_view name, const std::string& value, int indent)
    {
        Line(name, ToText(value), indent);
    }
    void Field(vyn_connector::common::kind::Blob, std::string_view name, const std::vector<std::uint8_t>& value,
               int indent)
    {
        Line(name, ToText(value), indent);
    }
    template <std::uint64_t Max, typename Kind, typename Value>
    void Field(vyn_connector::common::kind::Set<Max, Kind>, std::string_view name, const Value& value, int indent)
    {
        Line(name, ToText(value), indent);
    }
    template <std::size_t Count, std::size_t Max, typename Value>
    void Field(vyn_connector::common::kind::EventTexts<Count, Max>, std::string_view name, const Value& value,
               int indent)
    {
        Line(name, ToText(value), indent);
    }
    template <typename Value>
    void Field(vyn_connector::common::kind::Nested, std::string_view name, const Value& value, int indent)
    {
        Line(name, "", indent);
        Fields(value, indent + 2);
    }
    template <typename Kind, typename Value>
    void Field(vyn_connector::common::kind::Optional<Kind>, std::string_view name, const std::optional<Value>& value,
               int indent)
    {
        if (value)
            Field(Kind{}, name, *value, indent);
        else
            Line(name, "(absent)", indent);
    }
    template <std::uint64_t Max, typename Value>
    void Field(vyn_connector::common::kind::List<Max>, std::string_view name, const Value& values, int indent)
    {
        Items(name, values, indent);
    }
    template <std::size_t Max>
    void Field(vyn_connector::common::kind::Entries<Max>, std::string_view name,
               const vyn_connector::VynSubscriptions& subscriptions, int indent)
    {
        Line(name, "", indent);
        for (const auto& [severity, eventTypes] : subscriptions)
            Line("severity " + ToText(severity), ToText(eventTypes), indent + 2);
    }

    // An item is printed on one line.
    template <typename Item>
    void Items(std::string_view name, const std::vector<Item>& items, int indent)
    {
        Line(name, items.empty() ? "(none)" : "", indent);
        for (const Item& item : items) {
            std::vector<std::string> texts;
            vyn_connector::common::ForEachRow<Item>(
                [&](auto row) { texts.push_back(Masked(row.name, ToText(decltype(row)::InDomain::Of(item)))); });
            Line(fmt::format("{}", fmt::join(texts, ": ")), "", indent + 2);
        }
    }

    template <typename Value>
    static std::string ToText(const Value& value)
    {
        if constexpr (std::is_enum_v<Value>)
            return fmt::format("{}", static_cast<std::underlying_type_t<Value>>(value));
        else
            return fmt::format("{}", value);
    }
    // Long texts are cut: a certificate is not to be read here.
    static std::string ToText(const std::string& value)
    {
        constexpr std::size_t longest = 80;
        if (value.empty()) return "(empty)";
        if (value.size() <= longest) return value;
        return fmt::format("{}... ({} bytes)", value.substr(0, longest), value.size());
    }
    static std::string ToText(const std::vector<std::uint8_t>& value)
    {
        return fmt::format("({} bytes)", value.size());
    }
    static std::string ToText(const vyn_connector::VynUpdateIdentifier& value)
    {
        std::string text;
        for (const std::byte byte : value)
            text += fmt::format("{:02x}", static_cast<unsigned>(byte));
        return text;
    }
    static std::string ToText(const wem::types::Timestamp& value)
    {
        return fmt::format("{:%F %T} UTC", fmt::gmtime(static_cast<std::time_t>(value.count / 1'000'000'000)));
    }
    static std::string ToText(const std::unordered_set<std::string>& values)
    {
        std::vector<std::string> sorted(values.begin(), values.end());
        std::sort(sorted.begin(), sorted.end());
        return sorted.empty() ? "(none)" : fmt::format("{}", fmt::join(sorted, ", "));
    }

    static std::string Masked(std::string_view name, std::string text)
    {
        return name == "password" ? "********" : std::move(text);
    }

    void Line(std::string_view name, std::string_view text, int indent)
    {
        const std::string line = fmt::format("{:{}}{:<{}}{}", "", indent, name, text.empty() ? 0 : 26 - indent, text);
        console_.Line(line);
    }

    Console& console_;
};

template <typename Record>
void ShowSizes(Console& console, const Received<Record>& received)
{
    console.Line(fmt::format("{}: {} bytes of wire structure, {} bytes of arena", Codec<Record>::name,
                             received.wireBytes, received.arenaBytes));
}

template <typename Record>
void Show(Console& console, const Received<Record>& received)
{
    ShowSizes(console, received);
    RecordPrinter(console).Fields(received.record, 2);
}

} // namespace exchange
