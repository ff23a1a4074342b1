// A message as text: its tree, one line for each field, each fault below its field, and what its reader says of it.
#pragma once

#include "message.h"

#include <string>

namespace inspect {

struct Look {
    bool isColoured = false;
    bool showsSecrets = false;
};

// Ends with the end of a line.
std::string Tree(const Message& message, const Look& look);

// What a pointer or an array says of itself: "7 of 256 bytes -> 0x0048..0x004f". Empty where there is none.
std::string TargetOf(const Node& node);

// "canonical", "tolerated (3 faults)", "refused (2 faults, and 3 tolerated)"
std::string StandingOf(const Message& message);

// "AppInfo, 200 bytes and an arena of 363: canonical"
std::string HeadingOf(const Message& message);

// "reading it throws std::out_of_range at ...: ..."; empty where nothing is thrown.
std::string ReadersWords(const Message& message);

} // namespace inspect
