// A directory of captures, one line for each message; and the same while the exchange writes them.
#pragma once

#include "message.h"
#include "tree.h"

#include <filesystem>
#include <string>

namespace inspect {

// "000001  sent      VynConnectionParameters       wire  48  arena     163  canonical"
std::string ListingLine(const std::filesystem::path& file, const Message& message, const Look& look);

struct Listed {
    Standing worst = Standing::Canonical;
    bool isWhole = true; // no file could not be read
};

// Prints a line for each entry of the directory that is called as a capture, in the order of their names; with
// `follows`, also for those that come, until SIGINT or SIGTERM. What is no regular file is not opened, and what cannot
// be read is passed over; their lines say so. Throws FileError where the directory cannot be read.
Listed List(const std::filesystem::path& directory, bool follows, const Look& look);

} // namespace inspect
