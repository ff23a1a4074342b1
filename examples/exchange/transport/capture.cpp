#include "transport/capture.h"

#include "host/descriptor.h"
#include "host/files.h"

#include <fcntl.h>
#include <fmt/format.h>

namespace exchange {

Capture::Capture(const std::filesystem::path& directory) : directory_(directory)
{
    std::filesystem::create_directories(directory);
}

void Capture::Write(std::string_view direction, std::string_view record, const std::vector<std::uint8_t>& frame)
{
    const std::string path = directory_ / fmt::format("{:06}-{}-{}.vyn", ++count_, direction, record);
    const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600), path);
    try {
        WriteAll(file.Get(), path, frame.data(), frame.size());
    } catch (...) {
        unlink(path.c_str());
        throw;
    }
}

} // namespace exchange
