#include "desktop/x11/x11_desktop.h"

#include <unistd.h>

#include "desktop/xdg/application_resolver.h"

namespace kivo {

std::unique_ptr<X11Desktop> X11Desktop::connect(Options options, QString& failure) {
    auto connection = X11Connection::open(options.displayName, failure);
    if (!connection) {
        return nullptr;
    }
    if (!connection->hasWindowManager()) {
        failure = QStringLiteral("no EWMH window manager runs on the X display \"%1\"")
                      .arg(QString::fromLocal8Bit(options.displayName));
        return nullptr;
    }
    return std::unique_ptr<X11Desktop>(new X11Desktop(std::move(options), std::move(connection)));
}

X11Desktop::X11Desktop(Options options, std::unique_ptr<X11Connection> connection)
    : options_(std::move(options)),
      connection_(std::move(connection)),
      resolutions_(*options_.catalog) {}

X11Connection* X11Desktop::liveConnection() {
    if (connection_ && connection_->hasFailed()) {
        connection_.reset();
    }
    if (!connection_) {
        QString ignoredFailure;
        connection_ = X11Connection::open(options_.displayName, ignoredFailure);
    }
    return connection_.get();
}

std::optional<FocusedWindow> X11Desktop::focusedWindow() {
    X11Connection* connection = liveConnection();
    if (connection == nullptr) {
        return std::nullopt;
    }
    auto window = connection->activeWindow();
    if (!window || window->processId == ::getpid() || !window->title) {
        return std::nullopt;
    }
    auto id = applicationIdOf(*window);
    if (!id) {
        return std::nullopt;
    }
    auto name = options_.catalog->displayName(*id);
    return FocusedWindow{window->processId, *std::move(id), name.value_or(QString()),
                         *std::move(window->title)};
}

std::optional<QString> X11Desktop::applicationIdOf(const ActiveWindow& window) {
    const QString key = QString::number(window.id) % u':' % QString::number(window.processId) %
                        u':' % window.wmInstance % u'\0' % window.wmClass;
    return resolutions_.find(key, [&](const ApplicationIndex& index) {
        return resolveApplicationId({window.processId, window.wmInstance, window.wmClass},
                                    options_.procRoot, index);
    });
}

}  // namespace kivo
