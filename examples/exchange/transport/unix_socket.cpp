#include "transport/unix_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cstring>

namespace exchange {

namespace {

Descriptor NewSocket()
{
    return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
}

sockaddr_un AddressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof(address.sun_path)) throw std::runtime_error(path + ": too long for a socket's path");
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

// The path is a socket at which nobody listens any more.
bool IsAbandoned(const std::string& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) return false;
    const sockaddr_un address = AddressOf(path);
    const Descriptor probe = NewSocket();
    return connect(probe.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 &&
           errno == ECONNREFUSED;
}

} // namespace

std::pair<UnixSocket, UnixSocket> UnixSocket::Pair()
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) RaiseErrno("socketpair");
    return {UnixSocket(Descriptor(ends[0], "socketpair")), UnixSocket(Descriptor(ends[1], "socketpair"))};
}

UnixSocket UnixSocket::Accept(const std::string& path)
{
    const sockaddr_un address = AddressOf(path);
    if (IsAbandoned(path)) unlink(path.c_str());
    const Descriptor listener = NewSocket();
    const mode_t oldMask = umask(077); // what passes here is the user's own: passwords among it
    const int bound = bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    umask(oldMask);
    if (bound != 0 || listen(listener.Get(), 1) != 0) RaiseErrno(path);

    int accepted = -1;
    do
        accepted = accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC);
    while (accepted < 0 && errno == EINTR);
    unlink(path.c_str());
    return UnixSocket(Descriptor(accepted, path));
}

UnixSocket UnixSocket::Connect(const std::string& path)
{
    const sockaddr_un address = AddressOf(path);
    Descriptor peer = NewSocket();
    if (connect(peer.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) RaiseErrno(path);
    return UnixSocket(std::move(peer));
}

void UnixSocket::SetTimeout(unsigned seconds)
{
    timeval timeout{};
    timeout.tv_sec = static_cast<time_t>(seconds);
    for (const int direction : {SO_RCVTIMEO, SO_SNDTIMEO})
        if (setsockopt(descriptor_.Get(), SOL_SOCKET, direction, &timeout, sizeof(timeout)) != 0) RaiseErrno("socket");
}

void UnixSocket::Send(const void* data, std::size_t size)
{
    const auto* next = static_cast<const char*>(data);
    while (size != 0) {
        const ssize_t sent = send(descriptor_.Get(), next, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0 && (errno == EPIPE || errno == ECONNRESET)) throw PeerGone();
        if (sent < 0 && errno == EAGAIN) throw PeerSilent();
        if (sent < 0) RaiseErrno("send");
        next += sent;
        size -= static_cast<std::size_t>(sent);
    }
}

void UnixSocket::Receive(void* data, std::size_t size)
{
    auto* next = static_cast<char*>(data);
    while (size != 0) {
        const ssize_t received = recv(descriptor_.Get(), next, size, 0);
        if (received < 0 && errno == EINTR) continue;
        if (received == 0 || (received < 0 && errno == ECONNRESET)) throw PeerGone();
        if (received < 0 && errno == EAGAIN) throw PeerSilent();
        if (received < 0) RaiseErrno("recv");
        next += received;
        size -= static_cast<std::size_t>(received);
    }
}

} // namespace exchange
