#include "transport/unix_socket.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>
#include <filesystem>

namespace exchange {

namespace {

constexpr int socketFlags = SOCK_CLOEXEC | SOCK_NONBLOCK;

Descriptor NewSocket(int type = SOCK_STREAM)
{
    return Descriptor(socket(AF_UNIX, type | socketFlags, 0), "socket");
}

sockaddr_un AddressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty()) throw std::runtime_error("a socket's path cannot be empty");
    if (path.size() >= sizeof(address.sun_path)) throw std::runtime_error(path + ": too long for a socket's path");
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

int Connect(const Descriptor& socket, const std::string& path)
{
    const sockaddr_un address = AddressOf(path);
    return connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

// The path is a socket that no process has open any more. One that is open refuses a socket of another type with
// another error, so that its owner notices nothing, and refuses it also before it listens.
bool IsAbandoned(const std::string& path)
{
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) return false;
    return Connect(NewSocket(SOCK_SEQPACKET), path) != 0 && errno == ECONNREFUSED;
}

// One server at a time looks at the path and takes it: the lock is on the directory.
Descriptor LockDirectoryOf(const std::string& path)
{
    const std::string directory = std::filesystem::absolute(path).parent_path();
    Descriptor lock(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), directory);
    while (flock(lock.Get(), LOCK_EX) != 0) {
        if (errno != EINTR) RaiseErrno(directory);
        CheckInterrupt();
    }
    return lock;
}

// Listens at a path, and removes it in the end.
class Listener {
public:
    explicit Listener(const std::string& path) : path_(path), socket_(NewSocket())
    {
        const sockaddr_un address = AddressOf(path);
        const Descriptor lock = LockDirectoryOf(path);
        if (IsAbandoned(path)) unlink(path.c_str());
        const mode_t oldMask = umask(077); // what passes here is the user's own: passwords among it
        const int bound = bind(socket_.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
        umask(oldMask);
        if (bound != 0 || lstat(path.c_str(), &own_) != 0 || listen(socket_.Get(), 1) != 0) RaiseErrno(path);
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener()
    {
        struct stat there {}; // somebody may have put another socket into its place
        if (lstat(path_.c_str(), &there) == 0 && there.st_dev == own_.st_dev && there.st_ino == own_.st_ino)
            unlink(path_.c_str());
    }

    Descriptor Accept() const
    {
        int accepted = -1;
        do {
            WaitFor(socket_.Get(), POLLIN, std::nullopt);
            accepted = accept4(socket_.Get(), nullptr, nullptr, socketFlags);
        } while (accepted < 0 && (errno == EINTR || errno == EAGAIN || errno == ECONNABORTED));
        return Descriptor(accepted, path_);
    }

private:
    std::string path_;
    Descriptor socket_;
    struct stat own_ {};
};

} // namespace

std::pair<UnixSocket, UnixSocket> UnixSocket::Pair()
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | socketFlags, 0, ends) != 0) RaiseErrno("socketpair");
    return {UnixSocket(Descriptor(ends[0], "socketpair")), UnixSocket(Descriptor(ends[1], "socketpair"))};
}

UnixSocket UnixSocket::Accept(const std::string& path)
{
    return UnixSocket(Listener(path).Accept());
}

UnixSocket UnixSocket::Connect(const std::string& path, bool anyUser)
{
    Descriptor server = NewSocket();
    if (exchange::Connect(server, path) != 0) RaiseErrno(path);

    ucred owner{};
    socklen_t size = sizeof(owner);
    if (getsockopt(server.Get(), SOL_SOCKET, SO_PEERCRED, &owner, &size) != 0) RaiseErrno(path);
    if (owner.uid != geteuid() && !anyUser)
        throw std::runtime_error(
            fmt::format("{}: user {} listens there, not {}; --any-user sends to it all the same, passwords included",
                        path, owner.uid, geteuid()));
    return UnixSocket(std::move(server));
}

std::optional<Deadline> UnixSocket::NextDeadline() const
{
    if (timeout_.count() == 0) return std::nullopt;
    return std::chrono::steady_clock::now() + timeout_;
}

void UnixSocket::Wait(short events, const std::optional<Deadline>& deadline) const
{
    if (!WaitFor(descriptor_.Get(), events, deadline)) throw PeerSilent();
}

void UnixSocket::Send(const void* message, std::size_t size)
{
    CheckInterrupt();
    const std::optional<Deadline> deadline = NextDeadline();
    const auto* next = static_cast<const char*>(message);
    while (size != 0) {
        const ssize_t sent = send(descriptor_.Get(), next, size, MSG_NOSIGNAL);
        if (sent < 0 && errno == EAGAIN) {
            Wait(POLLOUT, deadline);
            continue;
        }
        if (sent < 0 && (errno == EPIPE || errno == ECONNRESET)) throw PeerGone();
        if (sent < 0) RaiseErrno("send");
        next += sent;
        size -= static_cast<std::size_t>(sent);
    }
}

void UnixSocket::Receive(void* data, std::size_t size)
{
    CheckInterrupt();
    auto* next = static_cast<char*>(data);
    while (size != 0) {
        const ssize_t received = recv(descriptor_.Get(), next, size, 0);
        if (received < 0 && errno == EAGAIN) {
            Wait(POLLIN, receiveDeadline_);
            continue;
        }
        if (received == 0 || (received < 0 && errno == ECONNRESET)) throw PeerGone();
        if (received < 0) RaiseErrno("recv");
        next += received;
        size -= static_cast<std::size_t>(received);
    }
}

} // namespace exchange
