// The transport between two processes of one machine: a Unix domain socket.
#pragma once

#include "host/descriptor.h"
#include "host/interrupt.h"
#include "transport/transport.h"

#include <chrono>
#include <optional>
#include <string>
#include <utility>

namespace exchange {

class UnixSocket : public Transport {
public:
    // Two connected ends, one of them for a process that is about to be forked.
    static std::pair<UnixSocket, UnixSocket> Pair();

    // Waits at `path` for one peer. Only processes of the same user can connect. The path is removed afterwards; one
    // that a dead server has left behind is taken over. Throws std::system_error, or Interrupted.
    static UnixSocket Accept(const std::string& path);

    // Refuses a server of another user unless `anyUser` is set: passwords are sent to it. Throws std::runtime_error.
    static UnixSocket Connect(const std::string& path, bool anyUser);

    // A peer that takes longer for one message, sending or taking it, is given up with PeerSilent; 0: never.
    void SetTimeout(unsigned seconds) { timeout_ = std::chrono::seconds(seconds); }

    void Send(const void* message, std::size_t size) override;
    void AwaitMessage() override { receiveDeadline_ = NextDeadline(); }
    void Receive(void* data, std::size_t size) override;
    void Close() noexcept { descriptor_.Close(); }

    UnixSocket(UnixSocket&& other) noexcept
        : descriptor_(std::move(other.descriptor_)), timeout_(other.timeout_), receiveDeadline_(other.receiveDeadline_)
    {
    }

private:
    explicit UnixSocket(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

    std::optional<Deadline> NextDeadline() const;
    void Wait(short events, const std::optional<Deadline>& deadline) const;

    Descriptor descriptor_;
    std::chrono::seconds timeout_{0};
    std::optional<Deadline> receiveDeadline_;
};

} // namespace exchange
