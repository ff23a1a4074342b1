// The readable messages of tests/messages as captures.
#pragma once

#include "../message_file.h"

#include <capture.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace corpus {

inline inspect::ByteString BytesOf(const std::vector<MessageFile::Byte>& bytes)
{
    inspect::ByteString values;
    for (const MessageFile::Byte byte : bytes)
        values.push_back(byte.value_or(0));
    return values;
}

// All of them that have an arena, or need none.
inline std::vector<MessageFile> Files()
{
    std::vector<MessageFile> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("../messages")) {
        if (entry.path().extension() != ".msg") continue;
        MessageFile file = ReadMessage(entry.path());
        const bool hasArena = file.arenaKind == MessageFile::Arena::Bytes || file.arenaKind == MessageFile::Arena::None;
        if (hasArena) files.push_back(std::move(file));
    }
    std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
    return files;
}

inline inspect::Capture CaptureOf(const MessageFile& file)
{
    inspect::Capture capture;
    capture.record = file.record;
    capture.wire = BytesOf(file.wire);
    capture.arena = BytesOf(file.arena);
    capture.top = file.top;
    capture.start = file.start;
    return capture;
}

} // namespace corpus
