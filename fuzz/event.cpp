// The event's reader, which has a status and rules of its own.
#include "check_message.h"
#include "memory_limit.h"

#include <algorithm>
#include <vector>

namespace {

const library::Conversions& Event()
{
    const auto isEvent = [](const library::Conversions& record) { return record.layout == &model::vynEvent; };
    return *std::find_if(library::Records().begin(), library::Records().end(), isEvent);
}

} // namespace

const std::vector<const model::Layout*>& InputLayouts()
{
    static const std::vector<const model::Layout*> layouts{&model::vynEvent};
    return layouts;
}

void Check(const std::uint8_t* data, std::size_t size)
{
    CheckMessage(Event(), ParseMessageInput(data, size));
}
