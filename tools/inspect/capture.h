// A message as it was captured: the record's name, its wire structure and its arena. Read from a capture file, which
// holds one frame of the exchange, or from two files with the raw bytes. A file that is not what it should be is read
// as far as it goes, and what is wrong with it is noted; nothing but a file that cannot be read at all is an error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace inspect {

using ByteString = std::vector<std::uint8_t>;

struct Capture {
    std::string record;
    ByteString wire;
    ByteString arena;
    std::optional<std::size_t> top;  // the used part of the arena; all of it where this is not given
    std::size_t start = 0;           // the arena begins so far past a multiple of 8
    std::vector<std::string> damage; // what is wrong with the file around the message
};

// What a file may hold of each: larger ones are cut, and that is noted.
inline constexpr std::size_t mostNameBytes = 64;
inline constexpr std::size_t mostArenaBytes = std::size_t{16} << 20;
// The largest message as JSON.
inline constexpr std::size_t mostJsonBytes = 12 * mostArenaBytes;

// A file cannot be read or written. The text names it, and does nothing to a terminal.
class FileError : public std::runtime_error {
public:
    FileError(const std::filesystem::path& file, const std::string& reason);

    const std::string& Reason() const { return reason_; }

private:
    std::string reason_;
};

Capture ParseFrame(const std::uint8_t* data, std::size_t size);

// The frame that the message travels in. Its name and sizes are what a frame can hold.
ByteString FrameOf(const Capture& capture);

// These throw FileError.
Capture ReadCapture(const std::filesystem::path& file);
ByteString ReadBytes(const std::filesystem::path& file, std::size_t most); // more than that are an error
void WriteFile(const std::filesystem::path& file, std::string_view content);

} // namespace inspect
