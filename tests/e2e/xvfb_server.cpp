#include "e2e/xvfb_server.h"

#include <xcb/xcb.h>

#include <QDeadlineTimer>
#include <QRandomGenerator>
#include <QThread>
#include <cstdlib>

namespace kivo::test {

namespace {

QStringList xvfbArguments(int displayNumber) {
    // The server writes its display number to standard output once it accepts clients. Without
    // -noreset it would reset whenever its last client leaves, and a client connecting during
    // the reset (a window manager right after a readiness probe) would be turned away.
    return {u':' + QString::number(displayNumber),
            QStringLiteral("-noreset"),
            QStringLiteral("-displayfd"),
            QStringLiteral("1"),
            QStringLiteral("-nolisten"),
            QStringLiteral("tcp"),
            QStringLiteral("-screen"),
            QStringLiteral("0"),
            QStringLiteral("1024x768x24")};
}

// Servers that other tests are shutting down still hold their display's sockets for a moment
// after they have given up its lock, and a new server that takes the number then is unreachable.
// Numbers drawn at random from a wide range are never reused that quickly.
int randomDisplayNumber() {
    return static_cast<int>(QRandomGenerator::global()->bounded(1000, 30000));
}

bool rootHasWindowManagerCheck(xcb_connection_t* connection, xcb_window_t root) {
    const char name[] = "_NET_SUPPORTING_WM_CHECK";
    auto* atom = xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, sizeof name - 1, name), nullptr);
    if (atom == nullptr) {
        return false;
    }
    auto* reply = xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, root, atom->atom, XCB_ATOM_WINDOW, 0, 1),
        nullptr);
    const bool present = reply != nullptr && xcb_get_property_value_length(reply) == 4;
    std::free(reply);
    std::free(atom);
    return present;
}

}  // namespace

XvfbServer::XvfbServer(std::optional<int> displayNumber) {
    // A number that is taken makes the server exit at once; another number is tried then.
    const int attempts = displayNumber ? 1 : 10;
    for (int attempt = 0; attempt < attempts && displayNumber_ < 0; ++attempt) {
        process_ = std::make_unique<ScopedProcess>(
            QStringLiteral("Xvfb"), xvfbArguments(displayNumber.value_or(randomDisplayNumber())));
        QByteArray announced;
        const QDeadlineTimer deadline(20'000);
        while (!announced.contains('\n') && process_->isRunning() && !deadline.hasExpired()) {
            process_->process().waitForReadyRead(200);
            announced += process_->process().readAllStandardOutput();
        }
        bool isNumber = false;
        const int number = announced.trimmed().toInt(&isNumber);
        displayNumber_ = isNumber ? number : -1;
    }
}

QProcessEnvironment XvfbServer::clientEnvironment(QProcessEnvironment base) const {
    base.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(displayName()));
    base.remove(QStringLiteral("WAYLAND_DISPLAY"));
    return base;
}

bool waitForWindowManager(const QByteArray& displayName, int timeoutMs) {
    const QDeadlineTimer deadline(timeoutMs);
    do {
        int screen = 0;
        xcb_connection_t* connection = xcb_connect(displayName.constData(), &screen);
        bool ready = false;
        if (xcb_connection_has_error(connection) == 0) {
            ready = rootHasWindowManagerCheck(
                connection, xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root);
        }
        xcb_disconnect(connection);
        if (ready) {
            return true;
        }
        QThread::msleep(50);
    } while (!deadline.hasExpired());
    return false;
}

}  // namespace kivo::test
