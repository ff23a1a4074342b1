// Signals that ask the program to end (^C and its like). They do not end it in the middle of something: it notices them
// where it waits or begins the next piece of work, as an exception, and leaves nothing half done. The second signal of
// a kind ends it at once.
#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

namespace exchange {

class Interrupted : public std::runtime_error {
public:
    explicit Interrupted(int signal, const std::string& text = "interrupted") : runtime_error(text), signal_(signal) {}

    int Signal() const { return signal_; }

private:
    int signal_;
};

// From here on, the signals are noticed; one that the caller of the program wants ignored stays ignored.
void NoticeInterrupts();

// For a process that another one ends.
void IgnoreInterrupts();

// Throws Interrupted where a signal has come.
void CheckInterrupt();

using Deadline = std::chrono::steady_clock::time_point;

// Waits until the descriptor is ready for `events`, those of poll(); false: the time is over. Throws Interrupted, or
// std::system_error.
bool WaitFor(int descriptor, short events, std::optional<Deadline> deadline);

} // namespace exchange
