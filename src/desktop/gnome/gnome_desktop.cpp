#include "desktop/gnome/gnome_desktop.h"

#include <unistd.h>

#include <QDBusMessage>

#include "desktop/presence/dbus_call.h"
#include "desktop/xdg/application_resolver.h"

namespace kivo {

namespace {

// The shell answers from memory; a slow answer means a shell in trouble. Starting, Kivo gives it
// a while; a tick waits no longer than this and goes on with the focus it knew, asking again at
// the next tick.
constexpr int openTimeoutMs = 500;
constexpr int tickTimeoutMs = 50;

}  // namespace

std::unique_ptr<GnomeDesktop> GnomeDesktop::open(Options options, QString& failure) {
    if (!options.bus.isConnected()) {
        failure = QStringLiteral("no session bus to reach GNOME Shell on");
        return nullptr;
    }
    std::unique_ptr<GnomeDesktop> desktop(new GnomeDesktop(std::move(options)));
    if (!desktop->fetch(openTimeoutMs)) {
        failure = QStringLiteral("Kivo's GNOME Shell extension does not answer on the session bus");
        return nullptr;
    }
    return desktop;
}

GnomeDesktop::GnomeDesktop(Options options)
    : options_(std::move(options)),
      watcher_(focusedWindowService, options_.bus, QDBusServiceWatcher::WatchForOwnerChange),
      resolutions_(*options_.catalog) {
    // Subscribed before the first question, so that no change falls between the two.
    options_.bus.connect(focusedWindowService, focusedWindowPath, focusedWindowInterface,
                         QStringLiteral("Changed"), this, SLOT(markStale()));
    QObject::connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
                     &GnomeDesktop::markStale);
}

void GnomeDesktop::markStale() {
    isStale_ = true;
}

bool GnomeDesktop::fetch(int timeoutMs) {
    const QDBusMessage reply =
        options_.bus.call(serviceCall(focusedWindowService, focusedWindowPath,
                                      focusedWindowInterface, QStringLiteral("Get")),
                          QDBus::Block, timeoutMs);
    if (reply.type() == QDBusMessage::ErrorMessage &&
        (reply.errorName() == u"org.freedesktop.DBus.Error.NoReply" ||
         reply.errorName() == u"org.freedesktop.DBus.Error.Timeout")) {
        return false;  // late, not gone: what was known stands until the answer comes
    }
    const QList<QVariant> arguments = reply.arguments();
    if (reply.type() != QDBusMessage::ReplyMessage || arguments.size() != 3 ||
        arguments[0].metaType() != QMetaType::fromType<QString>() ||
        arguments[1].metaType() != QMetaType::fromType<QString>() ||
        arguments[2].metaType() != QMetaType::fromType<uint>()) {
        focus_.reset();
        return false;
    }
    focus_ = ExtensionFocus{arguments[0].toString(), arguments[1].toString(),
                            static_cast<std::int64_t>(arguments[2].toUInt())};
    isStale_ = false;
    return true;
}

std::optional<FocusedWindow> GnomeDesktop::focusedWindow() {
    if (isStale_) {
        fetch(tickTimeoutMs);
    }
    if (!focus_ || focus_->appId.isEmpty() || focus_->processId == ::getpid()) {
        return std::nullopt;
    }
    auto id = applicationIdOf(*focus_);
    if (!id) {
        return std::nullopt;
    }
    auto name = options_.catalog->displayName(*id);
    return FocusedWindow{focus_->processId, *std::move(id), name.value_or(QString()),
                         focus_->title};
}

std::optional<uint> GnomeDesktop::extensionVersion() const {
    const auto value = dbusProperty(options_.bus, focusedWindowService, focusedWindowPath,
                                    focusedWindowInterface, QStringLiteral("Version"));
    if (!value || value->metaType() != QMetaType::fromType<uint>()) {
        return std::nullopt;
    }
    return value->toUInt();
}

std::optional<QString> GnomeDesktop::applicationIdOf(const ExtensionFocus& focus) {
    const QString key = QString::number(focus.processId) % u':' % focus.appId;
    return resolutions_.find(key, [&](const ApplicationIndex& index) {
        return resolveToplevelApplicationId({focus.processId, focus.appId}, options_.procRoot,
                                            index);
    });
}

}  // namespace kivo
