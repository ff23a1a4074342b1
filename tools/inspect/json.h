// A message as JSON, for programs: all that the tree shows, and the record's value, which encode.h makes a message of.
#pragma once

#include "message.h"

#include <string>

namespace inspect {

// An array shows as many elements as a valid message can have in JSON that somebody reads; more are cut.
inline constexpr Extent jsonExtent{100000, 1000000, 1000};

// Of one message; ends with the end of a line.
std::string ToJson(const Message& message, bool showsSecrets);

} // namespace inspect
