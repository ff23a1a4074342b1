// Writes messages to files, one each, exactly as they travel.
#pragma once

#include "host/descriptor.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace exchange {

class Capture {
public:
    // Makes the directory where there is none. One that is not empty, or in use by another capture, is refused: two
    // runs in one place cannot be told apart. Throws std::runtime_error.
    explicit Capture(const std::string& directory);

    // What is captured may hold passwords: only the user can read it. Throws std::system_error; no part of a file is
    // left then.
    void Write(std::string_view direction, std::string_view record, const std::vector<std::uint8_t>& frame);

private:
    std::string path_;
    Descriptor directory_;
    unsigned count_ = 0;
};

} // namespace exchange
