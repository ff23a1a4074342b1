// A file descriptor that is closed in the end.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace exchange {

[[noreturn]] inline void RaiseErrno(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

class Descriptor {
public:
    // Throws std::system_error, with `what` before errno's text, where the value is that of a failed call.
    Descriptor(int value, const std::string& what) : value_(value)
    {
        if (value < 0) RaiseErrno(what);
    }
    Descriptor(Descriptor&& other) noexcept : value_(std::exchange(other.value_, -1)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() { Close(); }

    int Get() const noexcept { return value_; }
    void Close() noexcept
    {
        if (value_ >= 0) close(std::exchange(value_, -1));
    }

private:
    int value_;
};

} // namespace exchange
