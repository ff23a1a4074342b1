// What the exchange needs of the platform's IPC: bytes to the peer and bytes from it, in order. Another transport is
// put in place by deriving from this one class.
#pragma once

#include <cstddef>
#include <stdexcept>

namespace exchange {

// The peer is no longer there, although the conversation is not over.
class PeerGone : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Transport {
public:
    virtual ~Transport() = default;

    // Sends all of the bytes. Throws PeerGone, or std::system_error.
    virtual void Send(const void* data, std::size_t size) = 0;

    // Waits until all of the bytes are there. Throws PeerGone, or std::system_error.
    virtual void Receive(void* data, std::size_t size) = 0;
};

} // namespace exchange
