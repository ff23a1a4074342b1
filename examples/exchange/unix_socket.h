// The transport between two processes of one machine: a Unix domain socket.
#pragma once

#include "transport.h"

#include <string>
#include <utility>

namespace exchange {

class UnixSocket : public Transport {
public:
    // Two connected ends, one of them for a process that is about to be forked.
    static std::pair<UnixSocket, UnixSocket> Pair();

    // Waits at `path` for one peer. Only processes of the same user can connect; the path is removed afterwards.
    static UnixSocket Accept(const std::string& path);

    static UnixSocket Connect(const std::string& path);

    UnixSocket(UnixSocket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    UnixSocket& operator=(UnixSocket&&) = delete;
    ~UnixSocket() override { Close(); }

    void Send(const void* data, std::size_t size) override;
    void Receive(void* data, std::size_t size) override;
    void Close() noexcept;

private:
    explicit UnixSocket(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
};

} // namespace exchange
