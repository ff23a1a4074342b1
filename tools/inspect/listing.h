// A directory of captures, one line for each message; and the same while the exchange writes them.
#pragma once

#include "message.h"
#include "tree.h"

#include <filesystem>
#include <string>

namespace inspect {

// "000001  sent      VynConnectionParameters       wire  48  arena     163  canonical"
std::string ListingLine(const std::filesystem::path& file, const Message& message, const Look& look);

// Prints a line for each capture in the directory, in the order of their names; with `follows`, also for those that come,
// until SIGINT or SIGTERM. Returns the worst standing. Throws FileError where the directory cannot be read.
Standing List(const std::filesystem::path& directory, bool follows, const Look& look);

} // namespace inspect
