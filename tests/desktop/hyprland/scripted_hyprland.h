#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>
#include <QString>
#include <atomic>
#include <cstring>
#include <mutex>
#include <thread>

namespace kivo::test {

// Hyprland's two sockets in `folder`, played by the test: the request socket answers every
// request with the reply set last, from a thread of its own; the event socket sends what the
// test writes to the client that connected last.
class ScriptedHyprland {
public:
    explicit ScriptedHyprland(const QString& folder)
        : requests_(listen(folder + QStringLiteral("/.socket.sock"))),
          events_(listen(folder + QStringLiteral("/.socket2.sock"))),
          folder_(folder),
          answering_([this] { answerRequests(); }) {}

    ~ScriptedHyprland() {
        isStopping_ = true;
        answering_.join();
        for (const int fd : {requests_, events_, eventClient_}) {
            if (fd >= 0) {
                ::close(fd);
            }
        }
        ::unlink((folder_ + QStringLiteral("/.socket.sock")).toLocal8Bit().constData());
        ::unlink((folder_ + QStringLiteral("/.socket2.sock")).toLocal8Bit().constData());
    }

    bool isListening() const { return requests_ >= 0 && events_ >= 0; }
    int requestCount() const { return requestCount_; }

    void setActiveWindowReply(const QByteArray& json) {
        const std::lock_guard lock(replyMutex_);
        reply_ = json;
    }

    // Sends `text` on the event socket, taking the client's connection first if it is new.
    bool sendEvents(const QByteArray& text) {
        if (pollfd waiting{events_, POLLIN, 0}; ::poll(&waiting, 1, 0) > 0) {
            if (eventClient_ >= 0) {
                ::close(eventClient_);
            }
            eventClient_ = ::accept(events_, nullptr, nullptr);
        }
        return eventClient_ >= 0 &&
               ::send(eventClient_, text.constData(), text.size(), MSG_NOSIGNAL) == text.size();
    }

private:
    static int listen(const QString& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray encoded = path.toLocal8Bit();
        std::strncpy(address.sun_path, encoded.constData(), sizeof address.sun_path - 1);
        const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (fd < 0 ||
            ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(fd, 8) != 0) {
            if (fd >= 0) {
                ::close(fd);
            }
            return -1;
        }
        return fd;
    }

    void answerRequests() {
        while (!isStopping_ && requests_ >= 0) {
            if (pollfd waiting{requests_, POLLIN, 0}; ::poll(&waiting, 1, 20) <= 0) {
                continue;
            }
            const int client = ::accept(requests_, nullptr, nullptr);
            if (client < 0) {
                continue;
            }
            char request[256];
            if (::recv(client, request, sizeof request, 0) > 0) {
                ++requestCount_;
                const std::lock_guard lock(replyMutex_);
                ::send(client, reply_.constData(), reply_.size(), MSG_NOSIGNAL);
            }
            ::close(client);
        }
    }

    int requests_;
    int events_;
    int eventClient_ = -1;
    QString folder_;
    std::mutex replyMutex_;
    QByteArray reply_ = "{}";
    std::atomic<int> requestCount_ = 0;
    std::atomic<bool> isStopping_ = false;
    std::thread answering_;
};

}  // namespace kivo::test
