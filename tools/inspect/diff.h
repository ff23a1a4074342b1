// Two messages of one record side by side: which fields differ, and which lie elsewhere.
#pragma once

#include "message.h"
#include "tree.h"

#include <string>

namespace inspect {

// A line for each field of either, with a mark before it: "*" another value, ">" another place in the arena, "-" only
// in the first, "+" only in the second.
std::string Diff(const Message& a, const Message& b, const Look& look);

} // namespace inspect
