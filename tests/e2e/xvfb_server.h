#pragma once

#include <QByteArray>
#include <memory>
#include <optional>

#include "e2e/scoped_process.h"

namespace kivo::test {

// A private X server on a free display (or on the one asked for, to stand in for a server that
// came back), ready when the constructor returns.
class XvfbServer {
public:
    explicit XvfbServer(std::optional<int> displayNumber = std::nullopt);

    bool isReady() const { return displayNumber_ >= 0; }
    int displayNumber() const { return displayNumber_; }
    QByteArray displayName() const { return ':' + QByteArray::number(displayNumber_); }

    // The environment of a client of this server: DISPLAY set, no Wayland.
    QProcessEnvironment clientEnvironment(
        QProcessEnvironment base = QProcessEnvironment::systemEnvironment()) const;

private:
    std::unique_ptr<ScopedProcess> process_;
    int displayNumber_ = -1;
};

// Polls the root window of `displayName` until an EWMH window manager has announced itself.
bool waitForWindowManager(const QByteArray& displayName, int timeoutMs);

}  // namespace kivo::test
