// Every record's reader but the event's.
#include "check_message.h"
#include "memory_limit.h"

#include <vector>

namespace {

const std::vector<library::Conversions>& Records()
{
    static const std::vector<library::Conversions> records = [] {
        std::vector<library::Conversions> throwing;
        for (const library::Conversions& record : library::Records())
            if (record.layout != &model::vynEvent) throwing.push_back(record);
        return throwing;
    }();
    return records;
}

} // namespace

const std::vector<const model::Layout*>& InputLayouts()
{
    static const std::vector<const model::Layout*> layouts = [] {
        std::vector<const model::Layout*> all;
        for (const library::Conversions& record : Records())
            all.push_back(record.layout);
        return all;
    }();
    return layouts;
}

void Check(const std::uint8_t* data, std::size_t size)
{
    const MessageInput input = ParseMessageInput(data, size);
    CheckMessage(Records()[input.number], input);
}
