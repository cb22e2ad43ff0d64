#include "desktop/hyprland/hyprland_sockets.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <utility>

namespace kivo {

namespace {

constexpr int replyTimeoutMs = 250;
// A reply about the active window is a few hundred bytes; more means something else answers.
constexpr qsizetype maximumReplySize = 1024 * 1024;

}  // namespace

UnixSocket::UnixSocket(const QString& path, int timeoutMs) {
    const QByteArray encoded = path.toLocal8Bit();
    sockaddr_un address{};
    if (encoded.isEmpty() || static_cast<std::size_t>(encoded.size()) >= sizeof address.sun_path) {
        return;
    }
    fd_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd_ < 0) {
        return;
    }
    const timeval timeout{timeoutMs / 1000, (timeoutMs % 1000) * 1000};
    ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    ::setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, encoded.constData(), encoded.size());
    if (::connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(std::exchange(fd_, -1));
    }
}

UnixSocket::~UnixSocket() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

UnixSocket::UnixSocket(UnixSocket&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

UnixSocket& UnixSocket::operator=(UnixSocket&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
}

std::optional<QByteArray> hyprlandRequest(const QString& path, const QByteArray& request) {
    const UnixSocket socket(path, replyTimeoutMs);
    if (!socket.isValid() ||
        ::send(socket.fd(), request.constData(), request.size(), MSG_NOSIGNAL) != request.size()) {
        return std::nullopt;
    }
    // Hyprland closes the connection after its reply.
    QByteArray reply;
    char buffer[4096];
    for (;;) {
        const ssize_t received = ::recv(socket.fd(), buffer, sizeof buffer, 0);
        if (received == 0) {
            return reply;
        }
        if (received < 0 || reply.size() + received > maximumReplySize) {
            return std::nullopt;
        }
        reply.append(buffer, received);
    }
}

}  // namespace kivo
