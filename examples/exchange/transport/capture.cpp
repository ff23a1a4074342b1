#include "transport/capture.h"

#include "host/files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>

#include <filesystem>

namespace exchange {

namespace {

Descriptor OpenDirectory(const std::string& path)
{
    std::filesystem::create_directories(path);
    return Descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), path);
}

} // namespace

Capture::Capture(const std::string& directory) : path_(directory), directory_(OpenDirectory(directory))
{
    if (flock(directory_.Get(), LOCK_EX | LOCK_NB) != 0 || !std::filesystem::is_empty(directory))
        throw std::runtime_error(directory + ": not empty, or in use; a capture takes a directory of its own");
}

void Capture::Write(std::string_view direction, std::string_view record, const std::vector<std::uint8_t>& frame)
{
    const std::string name = fmt::format("{:06}-{}-{}.vyn", ++count_, direction, record);
    const std::string path = std::filesystem::path(path_) / name;
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor file(openat(directory_.Get(), name.c_str(), flags, 0600), path);
    try {
        WriteAll(file.Get(), path, frame.data(), frame.size());
    } catch (...) {
        unlinkat(directory_.Get(), name.c_str(), 0);
        throw;
    }
}

} // namespace exchange
