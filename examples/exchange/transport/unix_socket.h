// The transport between two processes of one machine: a Unix domain socket.
#pragma once

#include "host/descriptor.h"
#include "transport/transport.h"

#include <string>
#include <utility>

namespace exchange {

class UnixSocket : public Transport {
public:
    // Two connected ends, one of them for a process that is about to be forked.
    static std::pair<UnixSocket, UnixSocket> Pair();

    // Waits at `path` for one peer. Only processes of the same user can connect. The path is removed afterwards; one
    // that a dead server has left behind is taken over.
    static UnixSocket Accept(const std::string& path);

    static UnixSocket Connect(const std::string& path);

    // A peer that sends nothing, or takes nothing, for so long is given up with PeerSilent; 0: never.
    void SetTimeout(unsigned seconds);

    void Send(const void* data, std::size_t size) override;
    void Receive(void* data, std::size_t size) override;
    void Close() noexcept { descriptor_.Close(); }

    UnixSocket(UnixSocket&& other) noexcept : descriptor_(std::move(other.descriptor_)) {}

private:
    explicit UnixSocket(Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

    Descriptor descriptor_;
};

} // namespace exchange
