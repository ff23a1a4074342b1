// A message as JSON, for programs: all that the tree shows, and the record's value, which encode.h makes a message of.
#pragma once

#include "message.h"

#include <string>

namespace inspect {

// Of a message that is not canonical, an array shows as many elements as somebody reads; more are cut.
inline constexpr Extent jsonExtent{100000, 300000, 1000};

// For ToJson: a canonical message is never cut, since its JSON is to be made the same message again.
Message InspectForJson(const Capture& capture, const Extent& extent = jsonExtent);

// Of one message; ends with the end of a line. All of it is ASCII. `value` is as whole as the message; of `fields`,
// which nobody makes anything of, elements behind the first `mostFields` fields are left out.
std::string ToJson(const Message& message, bool showsSecrets, std::size_t mostFields = jsonExtent.mostNodes);

} // namespace inspect
