#include "browser/browser_bridge.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonObject>

#include "model/diagnostics.h"

namespace kivo {

namespace {

namespace protocol = browser_protocol;

bool isSameUser(const QLocalSocket& socket) {
    ucred credentials{};
    socklen_t size = sizeof credentials;
    return ::getsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_PEERCRED,
                        &credentials, &size) == 0 &&
           credentials.uid == ::getuid();
}

std::optional<TabReport> tabReportFrom(const QJsonObject& message, Instant now) {
    const QJsonValue windowId = message.value(protocol::windowIdKey);
    const QJsonValue title = message.value(protocol::titleKey);
    const QJsonValue url = message.value(protocol::urlKey);
    if (!windowId.isDouble() || !title.isString() || !url.isString()) {
        return std::nullopt;
    }
    return TabReport{windowId.toInteger(), title.toString(), url.toString(),
                     message.value(protocol::incognitoKey).toBool(), now};
}

}  // namespace

BrowserBridge::BrowserBridge(Options options)
    : options_(std::move(options)), reports_(options_.rules) {}

std::unique_ptr<BrowserBridge> BrowserBridge::listen(Options options, QString& failure) {
    const QString path = options.socketPath;
    {
        QLocalSocket probe;
        probe.connectToServer(path);
        if (probe.waitForConnected(200)) {
            failure = QStringLiteral("another Kivo already listens at ") + path;
            return nullptr;
        }
    }
    // A socket left by a Kivo that ended without removing it.
    QLocalServer::removeServer(path);
    std::unique_ptr<BrowserBridge> bridge(new BrowserBridge(std::move(options)));
    bridge->server_.setSocketOptions(QLocalServer::UserAccessOption);
    if (!bridge->server_.listen(path)) {
        failure = QStringLiteral("cannot listen at ") + path + QStringLiteral(": ") +
                  bridge->server_.errorString();
        return nullptr;
    }
    ::chmod(QFile::encodeName(path).constData(), S_IRUSR | S_IWUSR);
    connect(&bridge->server_, &QLocalServer::newConnection, bridge.get(), &BrowserBridge::accept);
    return bridge;
}

void BrowserBridge::accept() {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
        socket->setParent(this);
        if (!isSameUser(*socket)) {
            printDiagnostic(QStringLiteral("Browser bridge: refused another user's connection"));
            socket->abort();
            socket->deleteLater();
            continue;
        }
        const auto id = nextId_++;
        connections_[id].socket = socket;
        connect(socket, &QLocalSocket::readyRead, this, [this, id] { read(id); });
        connect(socket, &QLocalSocket::disconnected, this, [this, id] { drop(id); });
        read(id);
    }
}

void BrowserBridge::read(TabReports::ConnectionId id) {
    const auto found = connections_.find(id);
    if (found == connections_.end()) {
        return;
    }
    Connection& connection = found->second;
    connection.frames.append(connection.socket->readAll());
    for (;;) {
        auto next = connection.frames.next();
        if (auto* message = std::get_if<QJsonObject>(&next)) {
            receive(id, connection, *message);
        } else if (auto* malformed = std::get_if<protocol::MalformedFrame>(&next)) {
            printDiagnostic(QStringLiteral("Browser bridge: dropped ") + malformed->reason);
        } else {
            break;
        }
    }
}

void BrowserBridge::receive(TabReports::ConnectionId id, Connection& connection,
                            const QJsonObject& message) {
    const QString type = message.value(protocol::typeKey).toString();
    if (type == protocol::helloType) {
        connection.isGreeted = true;
        reports_.opened(id, message.value(protocol::browserPidKey).toInteger());
    } else if (type == protocol::tabType && connection.isGreeted) {
        if (auto report = tabReportFrom(message, options_.clock->now())) {
            reports_.reported(id, std::move(*report));
        }
    } else if (type == protocol::windowClosedType) {
        reports_.windowClosed(id, message.value(protocol::windowIdKey).toInteger());
    }
}

void BrowserBridge::drop(TabReports::ConnectionId id) {
    const auto found = connections_.find(id);
    if (found == connections_.end()) {
        return;
    }
    found->second.socket->deleteLater();
    connections_.erase(found);
    reports_.closed(id, options_.clock->now());
}

BrowserTabAnswer BrowserBridge::frontTab(const FocusedWindow& window) {
    const Instant now = options_.clock->now();
    auto lookup = reports_.lookup(window, now);
    if (lookup.toAsk.empty()) {
        return lookup.answer;
    }
    if (window.title == unansweredTitle_ && now - unansweredAt_ <= options_.rules.reportLifetime) {
        return BrowserCannotAnswer{};
    }
    if (auto answer = askAndWait(window, lookup.toAsk)) {
        unansweredTitle_.clear();
        return *answer;
    }
    unansweredTitle_ = window.title;
    unansweredAt_ = now;
    return BrowserCannotAnswer{};
}

std::optional<BrowserTabAnswer> BrowserBridge::askAndWait(
    const FocusedWindow& window, const std::vector<TabReports::ConnectionId>& ids) {
    const QByteArray request = protocol::frame({{protocol::typeKey, protocol::reportType}});
    std::vector<QLocalSocket*> sockets;
    for (const auto id : ids) {
        if (const auto found = connections_.find(id); found != connections_.end()) {
            found->second.socket->write(request);
            found->second.socket->flush();
            sockets.push_back(found->second.socket);
        }
    }
    // Waiting on the sockets themselves, not in an event loop, so that no other timer runs
    // inside a tick. Several browsers share the time in slices.
    const QDeadlineTimer deadline(options_.answerWait);
    while (!deadline.hasExpired() &&
           std::any_of(sockets.begin(), sockets.end(), [](const QLocalSocket* socket) {
               return socket->state() == QLocalSocket::ConnectedState;
           })) {
        for (QLocalSocket* socket : sockets) {
            const int slice = static_cast<int>(
                std::min<qint64>(deadline.remainingTime(), sockets.size() > 1 ? 5 : 1'000));
            if (socket->state() == QLocalSocket::ConnectedState) {
                socket->waitForReadyRead(slice);
            }
        }
        auto lookup = reports_.lookup(window, options_.clock->now());
        if (lookup.toAsk.empty()) {
            return lookup.answer;
        }
    }
    return std::nullopt;
}

}  // namespace kivo
