// What the exchange needs of the platform's IPC: bytes to the peer and bytes from it, in order. Another transport is
// put in place by deriving from this one class.
#pragma once

#include <cstddef>
#include <stdexcept>

namespace exchange {

// The peer has closed the connection although the conversation is not over.
class PeerGone : public std::runtime_error {
public:
    PeerGone() : PeerGone("the peer has closed the connection") {}

protected:
    using std::runtime_error::runtime_error;
};

// The peer is there and does nothing, or too little.
class PeerSilent : public PeerGone {
public:
    PeerSilent() : PeerGone("the peer has been silent for too long") {}
};

// The peer has said that it cannot go on; its own line says why.
class PeerRefused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// All operations throw PeerGone, PeerSilent, Interrupted, or std::system_error.
class Transport {
public:
    Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;
    virtual ~Transport() = default;

    // Sends a message whole.
    virtual void Send(const void* message, std::size_t size) = 0;

    // Says that the next message is awaited: whatever time limit there is holds for all of it, however it is received.
    virtual void AwaitMessage() = 0;

    // Waits until all of the bytes are there.
    virtual void Receive(void* data, std::size_t size) = 0;
};

} // namespace exchange
