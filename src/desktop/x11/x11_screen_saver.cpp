#include "desktop/x11/x11_screen_saver.h"

#include <xcb/screensaver.h>

#include <cstdlib>

namespace kivo {

namespace {

// Opens the display and checks for the extension; null, with the reason, when either fails.
xcb_connection_t* openWithExtension(const QByteArray& displayName, xcb_window_t& root,
                                    QString& failure) {
    xcb_connection_t* connection = xcb_connect(displayName.constData(), nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        failure = QStringLiteral("cannot connect to the X display \"%1\"")
                      .arg(QString::fromLocal8Bit(displayName));
        return nullptr;
    }
    const xcb_query_extension_reply_t* extension =
        xcb_get_extension_data(connection, &xcb_screensaver_id);
    if (extension == nullptr || extension->present == 0) {
        xcb_disconnect(connection);
        failure = QStringLiteral("the X display \"%1\" has no MIT-SCREEN-SAVER extension")
                      .arg(QString::fromLocal8Bit(displayName));
        return nullptr;
    }
    root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    return connection;
}

}  // namespace

std::unique_ptr<X11ScreenSaver> X11ScreenSaver::connect(const QByteArray& displayName,
                                                        QString& failure) {
    xcb_window_t root = XCB_WINDOW_NONE;
    xcb_connection_t* connection = openWithExtension(displayName, root, failure);
    if (connection == nullptr) {
        return nullptr;
    }
    return std::unique_ptr<X11ScreenSaver>(new X11ScreenSaver(displayName, connection, root));
}

X11ScreenSaver::X11ScreenSaver(QByteArray displayName, xcb_connection_t* connection,
                               xcb_window_t root)
    : displayName_(std::move(displayName)), connection_(connection), root_(root) {}

X11ScreenSaver::~X11ScreenSaver() {
    if (connection_ != nullptr) {
        xcb_disconnect(connection_);
    }
}

bool X11ScreenSaver::isLocked() {
    const auto state = query();
    return state && state->isSaverOn;
}

std::optional<Seconds> X11ScreenSaver::idleTime() {
    const auto state = query();
    return state ? std::optional(state->idle) : std::nullopt;
}

bool X11ScreenSaver::reconnect() {
    if (connection_ != nullptr && xcb_connection_has_error(connection_) == 0) {
        return true;
    }
    if (connection_ != nullptr) {
        xcb_disconnect(connection_);
    }
    QString ignoredFailure;
    connection_ = openWithExtension(displayName_, root_, ignoredFailure);
    return connection_ != nullptr;
}

std::optional<X11ScreenSaver::State> X11ScreenSaver::query() {
    if (!reconnect()) {
        return std::nullopt;
    }
    auto* reply = xcb_screensaver_query_info_reply(
        connection_, xcb_screensaver_query_info(connection_, root_), nullptr);
    if (reply == nullptr) {
        return std::nullopt;
    }
    const State state{reply->state == XCB_SCREENSAVER_STATE_ON,
                      Seconds{reply->ms_since_user_input / 1000.0}};
    std::free(reply);
    return state;
}

}  // namespace kivo
