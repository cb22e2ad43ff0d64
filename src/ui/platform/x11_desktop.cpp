#include "ui/platform/x11_desktop.h"

#include <unistd.h>

#include "ui/platform/application_resolver.h"

namespace kivo {

namespace {

// Resolution reads a few /proc files; remembering the answer per window keeps a tick at two
// round trips. The bound only matters for sessions that open thousands of windows.
constexpr qsizetype maximumRememberedWindows = 256;

}  // namespace

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
    : options_(std::move(options)), connection_(std::move(connection)) {}

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

std::optional<FrontmostApplication> X11Desktop::frontmostApplication() {
    lastTitle_.reset();
    X11Connection* connection = liveConnection();
    if (connection == nullptr) {
        return std::nullopt;
    }
    const auto window = connection->activeWindow();
    if (!window || window->processId == ::getpid()) {
        return std::nullopt;
    }

    FrontmostApplication application;
    application.processId = window->processId;
    if (const auto id = applicationIdOf(*window)) {
        application.bundleId = id;
        application.localizedName = index_.find(*id)->name;
    }
    if (window->title) {
        lastTitle_.emplace(window->processId, *window->title);
    }
    return application;
}

std::optional<QString> X11Desktop::applicationIdOf(const ActiveWindow& window) {
    const QString key = QString::number(window.id) % u':' % QString::number(window.processId) %
                        u':' % window.wmInstance % u'\0' % window.wmClass;
    if (const auto known = resolvedIds_.constFind(key); known != resolvedIds_.cend()) {
        return *known;
    }
    if (resolvedIds_.size() >= maximumRememberedWindows) {
        resolvedIds_.clear();
    }
    const auto id = resolveApplicationId({window.processId, window.wmInstance, window.wmClass},
                                         options_.procRoot, index_);
    resolvedIds_.insert(key, id);
    return id;
}

std::optional<QString> X11Desktop::focusedWindowTitle(const FrontmostApplication& application) {
    if (!lastTitle_ || lastTitle_->first != application.processId) {
        return std::nullopt;
    }
    return lastTitle_->second;
}

// X11 offers no way to ask a browser for its front tab; browsers are sampled by window title.
std::optional<QString> X11Desktop::queryBrowser(const BrowserQuery&) {
    return std::nullopt;
}

QStringList X11Desktop::installedApplicationBundleIds() {
    index_ = ApplicationIndex::scan(options_.environment.applicationFolders(),
                                    options_.environment.messagesLocale);
    resolvedIds_.clear();
    return index_.installedIds();
}

std::optional<QString> X11Desktop::applicationIconName(const QString& bundleId) {
    const DesktopEntry* entry = index_.find(bundleId);
    if (entry == nullptr || entry->icon.isEmpty()) {
        return std::nullopt;
    }
    return entry->icon;
}

}  // namespace kivo
