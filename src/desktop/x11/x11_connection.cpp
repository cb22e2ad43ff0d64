#include "desktop/x11/x11_connection.h"

#include <QList>
#include <array>
#include <cstdlib>
#include <cstring>

#include "desktop/x11/window_title.h"

namespace kivo {

namespace {

// Titles longer than this many 32-bit units (16 KiB) are cut; no window shows that much.
constexpr std::uint32_t maximumPropertyUnits = 4096;

struct FreeDeleter {
    void operator()(void* pointer) const { std::free(pointer); }
};
using PropertyReply = std::unique_ptr<xcb_get_property_reply_t, FreeDeleter>;

QByteArrayView valueBytes(xcb_get_property_reply_t* reply) {
    return {static_cast<const char*>(xcb_get_property_value(reply)),
            xcb_get_property_value_length(reply)};
}

// The first 32-bit value of a property, or nothing when it holds none.
std::optional<std::uint32_t> firstCardinal(const PropertyReply& reply) {
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    std::memcpy(&value, xcb_get_property_value(reply.get()), sizeof value);
    return value;
}

xcb_window_t rootOfScreen(xcb_connection_t* connection, int screenNumber) {
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int i = 0; i < screenNumber && screens.rem > 0; ++i) {
        xcb_screen_next(&screens);
    }
    return screens.rem > 0 ? screens.data->root : xcb_window_t{XCB_WINDOW_NONE};
}

}  // namespace

std::unique_ptr<X11Connection> X11Connection::open(const QByteArray& displayName,
                                                   QString& failure) {
    int screenNumber = 0;
    xcb_connection_t* connection =
        xcb_connect(displayName.isEmpty() ? nullptr : displayName.constData(), &screenNumber);
    const int error = xcb_connection_has_error(connection);
    const xcb_window_t root = error == 0 ? rootOfScreen(connection, screenNumber) : 0;
    if (error != 0 || root == XCB_WINDOW_NONE) {
        xcb_disconnect(connection);
        failure = QStringLiteral("cannot connect to the X display \"%1\" (xcb error %2)")
                      .arg(QString::fromLocal8Bit(displayName))
                      .arg(error);
        return nullptr;
    }
    std::unique_ptr<X11Connection> opened(new X11Connection(connection, root, displayName));
    if (!opened->internAtoms()) {
        failure = QStringLiteral("the X display \"%1\" closed the connection")
                      .arg(QString::fromLocal8Bit(displayName));
        return nullptr;
    }
    return opened;
}

X11Connection::X11Connection(xcb_connection_t* connection, xcb_window_t root,
                             const QByteArray& displayName)
    : connection_(connection), root_(root), compoundText_(displayName) {}

X11Connection::~X11Connection() {
    xcb_disconnect(connection_);
}

bool X11Connection::hasFailed() const {
    return xcb_connection_has_error(connection_) != 0;
}

bool X11Connection::internAtoms() {
    const std::array<std::pair<const char*, xcb_atom_t*>, 6> wanted{{
        {"_NET_ACTIVE_WINDOW", &atoms_.netActiveWindow},
        {"_NET_SUPPORTING_WM_CHECK", &atoms_.netSupportingWmCheck},
        {"_NET_WM_PID", &atoms_.netWmPid},
        {"_NET_WM_NAME", &atoms_.netWmName},
        {"UTF8_STRING", &atoms_.utf8String},
        {"COMPOUND_TEXT", &atoms_.compoundText},
    }};
    std::array<xcb_intern_atom_cookie_t, wanted.size()> cookies{};
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const char* name = wanted[i].first;
        cookies[i] =
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    }
    bool allInterned = true;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        xcb_generic_error_t* error = nullptr;
        std::unique_ptr<xcb_intern_atom_reply_t, FreeDeleter> reply(
            xcb_intern_atom_reply(connection_, cookies[i], &error));
        std::free(error);
        allInterned = allInterned && reply != nullptr;
        if (reply) {
            *wanted[i].second = reply->atom;
        }
    }
    return allInterned;
}

bool X11Connection::hasWindowManager() {
    const auto cookie =
        xcb_get_property(connection_, 0, root_, atoms_.netSupportingWmCheck, XCB_ATOM_WINDOW, 0, 1);
    xcb_generic_error_t* error = nullptr;
    PropertyReply reply(xcb_get_property_reply(connection_, cookie, &error));
    std::free(error);
    const auto window = firstCardinal(reply);
    return window && *window != XCB_WINDOW_NONE;
}

std::optional<ActiveWindow> X11Connection::activeWindow() {
    const auto fetch = [this](xcb_window_t window, xcb_atom_t property) {
        return xcb_get_property(connection_, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                                maximumPropertyUnits);
    };
    // Errors are taken with the reply so that none pile up in the event queue, which is never
    // read; a window closed between the two round trips answers with BadWindow.
    const auto collect = [this](xcb_get_property_cookie_t cookie, bool& failed) {
        xcb_generic_error_t* error = nullptr;
        PropertyReply reply(xcb_get_property_reply(connection_, cookie, &error));
        failed = failed || error != nullptr || !reply;
        std::free(error);
        return reply;
    };

    bool failed = false;
    const auto active = firstCardinal(collect(fetch(root_, atoms_.netActiveWindow), failed));
    if (failed || !active || *active == XCB_WINDOW_NONE) {
        return std::nullopt;
    }

    const auto pidCookie = fetch(*active, atoms_.netWmPid);
    const auto classCookie = fetch(*active, XCB_ATOM_WM_CLASS);
    const auto netNameCookie = fetch(*active, atoms_.netWmName);
    const auto nameCookie = fetch(*active, XCB_ATOM_WM_NAME);
    const auto pidReply = collect(pidCookie, failed);
    const auto classReply = collect(classCookie, failed);
    const auto netNameReply = collect(netNameCookie, failed);
    const auto nameReply = collect(nameCookie, failed);
    if (failed) {
        return std::nullopt;
    }

    ActiveWindow window;
    window.id = *active;
    window.processId = firstCardinal(pidReply).value_or(0);
    const auto classParts = valueBytes(classReply.get()).toByteArray().split('\0');
    window.wmInstance = QString::fromLatin1(classParts.value(0));
    window.wmClass = QString::fromLatin1(classParts.value(1));
    window.title = decodeTitle(netNameReply.get());
    if (!window.title) {
        window.title = decodeTitle(nameReply.get());
    }
    return window;
}

std::optional<QString> X11Connection::decodeTitle(xcb_get_property_reply_t* reply) {
    if (reply->type == XCB_ATOM_NONE || reply->format != 8) {
        return std::nullopt;
    }
    QByteArrayView typeName;
    if (reply->type == atoms_.utf8String) {
        typeName = "UTF8_STRING";
    } else if (reply->type == XCB_ATOM_STRING) {
        typeName = "STRING";
    } else if (reply->type == atoms_.compoundText) {
        typeName = "COMPOUND_TEXT";
    }
    return decodeWindowTitle(typeName, valueBytes(reply),
                             [this](QByteArrayView bytes) { return compoundText_.decode(bytes); });
}

}  // namespace kivo
