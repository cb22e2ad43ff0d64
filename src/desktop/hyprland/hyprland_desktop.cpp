#include "desktop/hyprland/hyprland_desktop.h"

#include <sys/socket.h>
#include <unistd.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <cerrno>

#include "desktop/xdg/application_resolver.h"

namespace kivo {

namespace {

// A line longer than this is no event of Hyprland's; it is dropped rather than kept growing.
constexpr qsizetype maximumLineLength = 64 * 1024;

// The active window as the request socket tells it, with its process.
struct ActiveWindowReply {
    HyprlandActiveWindow window;
    std::int64_t processId = 0;
};

std::optional<ActiveWindowReply> askActiveWindow(const QString& requestSocket) {
    const auto reply = hyprlandRequest(requestSocket, "j/activewindow");
    if (!reply) {
        return std::nullopt;
    }
    const QJsonObject object = QJsonDocument::fromJson(*reply).object();
    QByteArray address = object.value(QLatin1String("address")).toString().toLatin1();
    if (address.startsWith("0x")) {
        address.remove(0, 2);
    }
    return ActiveWindowReply{
        {object.value(QLatin1String("class")).toString(),
         object.value(QLatin1String("title")).toString(), address},
        static_cast<std::int64_t>(object.value(QLatin1String("pid")).toDouble())};
}

}  // namespace

std::unique_ptr<HyprlandDesktop> HyprlandDesktop::connect(Options options, QString& failure) {
    std::unique_ptr<HyprlandDesktop> desktop(new HyprlandDesktop(std::move(options)));
    if (!desktop->open()) {
        failure = QStringLiteral("Hyprland does not answer on its sockets in \"%1\"")
                      .arg(desktop->options_.socketFolder);
        return nullptr;
    }
    return desktop;
}

HyprlandDesktop::HyprlandDesktop(Options options)
    : options_(std::move(options)), resolutions_(*options_.catalog) {}

QString HyprlandDesktop::requestSocket() const {
    return options_.socketFolder + QStringLiteral("/.socket.sock");
}

// The event socket tells only changes: the window active now comes from the request socket.
bool HyprlandDesktop::open() {
    events_ = UnixSocket(options_.socketFolder + QStringLiteral("/.socket2.sock"), 0);
    partialLine_.clear();
    const auto reply = events_.isValid() ? askActiveWindow(requestSocket()) : std::nullopt;
    if (!reply) {
        events_ = UnixSocket();
        return false;
    }
    active_.reset();
    if (!reply->window.windowClass.isEmpty() || !reply->window.title.isEmpty()) {
        active_ = reply->window;
    }
    processAddress_ = reply->window.address;
    processId_ = reply->processId;
    return true;
}

bool HyprlandDesktop::readEvents() {
    char buffer[4096];
    for (;;) {
        const ssize_t received = ::recv(events_.fd(), buffer, sizeof buffer, MSG_DONTWAIT);
        if (received < 0 && errno == EINTR) {
            continue;
        }
        if (received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            return true;
        }
        if (received <= 0) {
            return false;
        }
        partialLine_.append(buffer, received);
        qsizetype start = 0;
        for (qsizetype end; (end = partialLine_.indexOf('\n', start)) >= 0; start = end + 1) {
            applyHyprlandEvent(partialLine_.sliced(start, end - start), active_);
        }
        partialLine_.remove(0, start);
        if (partialLine_.size() > maximumLineLength) {
            partialLine_.clear();
        }
    }
}

std::optional<FocusedWindow> HyprlandDesktop::focusedWindow() {
    if ((!events_.isValid() || !readEvents()) && !open()) {
        return std::nullopt;
    }
    if (!active_) {
        return std::nullopt;
    }
    const std::int64_t processId = processIdOfActive();
    if (processId == ::getpid()) {
        return std::nullopt;
    }
    auto id = applicationIdOf(active_->windowClass, processId);
    if (!id) {
        return std::nullopt;
    }
    auto name = options_.catalog->displayName(*id);
    return FocusedWindow{processId, *std::move(id), name.value_or(QString()), active_->title};
}

std::int64_t HyprlandDesktop::processIdOfActive() {
    if (active_->address.isEmpty()) {
        return 0;
    }
    if (processAddress_ != active_->address) {
        processAddress_ = active_->address;
        const auto reply = askActiveWindow(requestSocket());
        processId_ = reply && reply->window.address == active_->address ? reply->processId : 0;
    }
    return processId_;
}

std::optional<QString> HyprlandDesktop::applicationIdOf(const QString& windowClass,
                                                        std::int64_t processId) {
    const QString key = QString::number(processId) % u':' % windowClass;
    return resolutions_.find(key, [&](const ApplicationIndex& index) {
        return resolveToplevelApplicationId({processId, windowClass}, options_.procRoot, index);
    });
}

}  // namespace kivo
