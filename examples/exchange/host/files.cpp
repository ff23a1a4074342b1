#include "host/files.h"

#include "host/descriptor.h"
#include "host/interrupt.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <array>
#include <filesystem>

namespace exchange {

std::string PathBelow(const std::string& root, const std::string& path)
{
    return std::filesystem::path(root) / path;
}

std::string ReadFile(const std::string& path, std::size_t limit)
{
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK), path);
    std::string content;
    std::array<char, 16384> buffer;
    ssize_t count = 0;
    while ((count = read(file.Get(), buffer.data(), buffer.size())) != 0) {
        if (count < 0) RaiseErrno(path);
        content.append(buffer.data(), static_cast<std::size_t>(count));
        if (content.size() > limit) throw std::runtime_error(fmt::format("{}: over {} MiB", path, limit >> 20U));
    }
    return content;
}

std::optional<std::string> ReadFileIfAny(const std::string& path)
try {
    return ReadFile(path);
} catch (const std::runtime_error&) {
    return std::nullopt;
}

void WriteAll(int descriptor, const std::string& path, const void* data, std::size_t size)
{
    const auto* next = static_cast<const char*>(data);
    while (size != 0) {
        const ssize_t written = write(descriptor, next, size);
        if (written < 0 && errno != EINTR) RaiseErrno(path);
        if (written < 0) {
            CheckInterrupt();
            continue;
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
}

} // namespace exchange
