// Writes messages to files, one each, exactly as they travel.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

namespace exchange {

class Capture {
public:
    // Makes the directory where there is none. What it captures may hold passwords: only the user can read it.
    explicit Capture(const std::filesystem::path& directory);

    // Throws std::system_error; no part of a file is left then.
    void Write(std::string_view direction, std::string_view record, const std::vector<std::uint8_t>& frame);

private:
    std::filesystem::path directory_;
    unsigned count_ = 0;
};

} // namespace exchange
