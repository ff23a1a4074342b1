#include "host/interrupt.h"

#include "host/descriptor.h"

#include <poll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <csignal>

namespace exchange {

namespace {

constexpr int signals[] = {SIGHUP, SIGINT, SIGTERM};

volatile std::sig_atomic_t received = 0;
int wakeUp = -1; // an event that a signal sets: one that comes just before poll() is not missed

void Notice(int signal)
{
    const int oldErrno = errno;
    received = signal;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeUp, &one, sizeof(one));
    errno = oldErrno;
}

int MillisecondsUntil(const std::optional<Deadline>& deadline)
{
    if (!deadline) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 1'000'000));
}

} // namespace

void NoticeInterrupts()
{
    wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeUp < 0) RaiseErrno("eventfd");
    for (const int signal : signals) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) continue;
        action.sa_handler = Notice;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

void IgnoreInterrupts()
{
    for (const int signal : signals)
        std::signal(signal, SIG_IGN);
}

void CheckInterrupt()
{
    if (received != 0) throw Interrupted(received);
}

bool WaitFor(int descriptor, short events, std::optional<Deadline> deadline)
{
    for (;;) {
        pollfd waited[] = {{descriptor, events, 0}, {wakeUp, POLLIN, 0}};
        const int ready = poll(waited, std::size(waited), MillisecondsUntil(deadline));
        if (ready < 0 && errno != EINTR) RaiseErrno("poll");
        CheckInterrupt();
        if (ready > 0) return true;
        if (deadline && std::chrono::steady_clock::now() >= *deadline) return false;
    }
}

} // namespace exchange
