#include "unix_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace exchange {

namespace {

[[noreturn]] void RaiseErrno(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

int NewSocket()
{
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) RaiseErrno("socket");
    return descriptor;
}

sockaddr_un AddressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) throw std::runtime_error(path + ": too long for a socket's path");
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

} // namespace

std::pair<UnixSocket, UnixSocket> UnixSocket::Pair()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) RaiseErrno("socketpair");
    return {UnixSocket(ends[0]), UnixSocket(ends[1])};
}

UnixSocket UnixSocket::Accept(const std::string& path)
{
    const sockaddr_un address = AddressOf(path);
    const UnixSocket listener(NewSocket());
    const mode_t oldMask = umask(077); // what passes here is the user's own: passwords among it
    const int bound = bind(listener.descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    umask(oldMask);
    if (bound != 0 || listen(listener.descriptor_, 1) != 0) RaiseErrno(path);

    int accepted = -1;
    do
        accepted = accept4(listener.descriptor_, nullptr, nullptr, SOCK_CLOEXEC);
    while (accepted < 0 && errno == EINTR);
    unlink(path.c_str());
    if (accepted < 0) RaiseErrno(path);
    return UnixSocket(accepted);
}

UnixSocket UnixSocket::Connect(const std::string& path)
{
    const sockaddr_un address = AddressOf(path);
    UnixSocket peer(NewSocket());
    if (connect(peer.descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) RaiseErrno(path);
    return peer;
}

void UnixSocket::Send(const void* data, std::size_t size)
{
    const auto* next = static_cast<const char*>(data);
    while (size != 0) {
        const ssize_t sent = send(descriptor_, next, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0 && (errno == EPIPE || errno == ECONNRESET)) throw PeerGone("the peer has closed the connection");
        if (sent < 0) RaiseErrno("send");
        next += sent;
        size -= static_cast<std::size_t>(sent);
    }
}

void UnixSocket::Receive(void* data, std::size_t size)
{
    auto* next = static_cast<char*>(data);
    while (size != 0) {
        const ssize_t received = recv(descriptor_, next, size, 0);
        if (received < 0 && errno == EINTR) continue;
        if (received == 0 || (received < 0 && errno == ECONNRESET))
            throw PeerGone("the peer has closed the connection");
        if (received < 0) RaiseErrno("recv");
        next += received;
        size -= static_cast<std::size_t>(received);
    }
}

void UnixSocket::Close() noexcept
{
    if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
}

} // namespace exchange
