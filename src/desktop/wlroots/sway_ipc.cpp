#include "desktop/wlroots/sway_ipc.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cstring>

namespace kivo {

namespace {

constexpr char magic[] = {'i', '3', '-', 'i', 'p', 'c'};
constexpr std::uint32_t getTree = 4;
constexpr int replyTimeoutMs = 250;
// A tree of a few hundred windows is well below this; more means something else answered.
constexpr std::uint32_t maximumReplySize = 16 * 1024 * 1024;

class Socket {
public:
    explicit Socket(int fd) : fd_(fd) {}
    ~Socket() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    int fd() const { return fd_; }

private:
    int fd_;
};

bool sendAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t sent = ::send(fd, data, size, MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        data += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

bool receiveAll(int fd, char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t received = ::recv(fd, data, size, 0);
        if (received <= 0) {
            return false;
        }
        data += received;
        size -= static_cast<std::size_t>(received);
    }
    return true;
}

// The focused node of the tree below `node`, depth first over tiled and floating children.
std::optional<QJsonObject> focusedNode(const QJsonObject& node) {
    if (node.value(QLatin1String("focused")).toBool()) {
        return node;
    }
    for (const char* children : {"nodes", "floating_nodes"}) {
        for (const QJsonValue child : node.value(QLatin1String(children)).toArray()) {
            if (auto found = focusedNode(child.toObject())) {
                return found;
            }
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::int64_t> focusedProcessIdInTree(const QByteArray& treeJson,
                                                   const QString& appId) {
    const auto node = focusedNode(QJsonDocument::fromJson(treeJson).object());
    if (!node) {
        return std::nullopt;
    }
    // An XWayland window has no app_id in the tree; the toplevel protocol carries its class.
    const QString windowClass = node->value(QLatin1String("window_properties"))
                                    .toObject()
                                    .value(QLatin1String("class"))
                                    .toString();
    if (node->value(QLatin1String("app_id")).toString(windowClass) != appId) {
        return std::nullopt;
    }
    const auto pid = static_cast<std::int64_t>(node->value(QLatin1String("pid")).toDouble());
    return pid > 0 ? std::optional(pid) : std::nullopt;
}

std::optional<std::int64_t> swayFocusedProcessId(const QByteArray& socketPath,
                                                 const QString& appId) {
    sockaddr_un address{};
    if (socketPath.isEmpty() ||
        static_cast<std::size_t>(socketPath.size()) >= sizeof(address.sun_path)) {
        return std::nullopt;
    }
    Socket socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (socket.fd() < 0) {
        return std::nullopt;
    }
    const timeval timeout{0, replyTimeoutMs * 1000};
    ::setsockopt(socket.fd(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    ::setsockopt(socket.fd(), SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.constData(), socketPath.size());
    if (::connect(socket.fd(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        return std::nullopt;
    }

    char header[sizeof magic + 2 * sizeof(std::uint32_t)];
    std::memcpy(header, magic, sizeof magic);
    const std::uint32_t request[] = {0, getTree};
    std::memcpy(header + sizeof magic, request, sizeof request);
    if (!sendAll(socket.fd(), header, sizeof header) ||
        !receiveAll(socket.fd(), header, sizeof header) ||
        std::memcmp(header, magic, sizeof magic) != 0) {
        return std::nullopt;
    }
    std::uint32_t reply[2];
    std::memcpy(reply, header + sizeof magic, sizeof reply);
    if (reply[1] != getTree || reply[0] > maximumReplySize) {
        return std::nullopt;
    }
    QByteArray tree(static_cast<qsizetype>(reply[0]), Qt::Uninitialized);
    if (!receiveAll(socket.fd(), tree.data(), reply[0])) {
        return std::nullopt;
    }
    return focusedProcessIdInTree(tree, appId);
}

}  // namespace kivo
