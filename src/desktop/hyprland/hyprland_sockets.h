#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace kivo {

// A connected Unix stream socket that closes with the object.
class UnixSocket {
public:
    UnixSocket() = default;  // invalid
    // Connects to `path`; invalid when that fails. Reads and writes wait at most `timeoutMs`
    // (0: as long as it takes; reads that must not wait pass MSG_DONTWAIT).
    UnixSocket(const QString& path, int timeoutMs);
    ~UnixSocket();
    UnixSocket(UnixSocket&& other) noexcept;
    UnixSocket& operator=(UnixSocket&& other) noexcept;

    bool isValid() const { return fd_ >= 0; }
    int fd() const { return fd_; }

private:
    int fd_ = -1;
};

// Sends `request` to Hyprland's request socket at `path` and returns the whole reply, or nothing
// when Hyprland does not answer within a short wait.
std::optional<QByteArray> hyprlandRequest(const QString& path, const QByteArray& request);

}  // namespace kivo
