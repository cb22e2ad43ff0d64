#include "browser/native_host.h"

#include <unistd.h>

#include <QJsonObject>
#include <cerrno>
#include <cstdio>

namespace kivo {

namespace {

namespace protocol = browser_protocol;

// Kivo reads as fast as messages come; more than this unsent means it has stopped reading.
constexpr qint64 maximumUnsentBytes = 4 * protocol::maximumMessageSize;
constexpr int reconnectIntervalMs = 2'000;

void printLine(const QString& line) {
    std::fprintf(stderr, "kivo-browser-host: %s\n", qUtf8Printable(line));
    std::fflush(stderr);
}

}  // namespace

NativeHost::NativeHost(int input, int output, QString socketPath, qint64 browserPid)
    : input_(input),
      output_(output),
      socketPath_(std::move(socketPath)),
      browserPid_(browserPid),
      inputNotifier_(input, QSocketNotifier::Read) {
    connect(&inputNotifier_, &QSocketNotifier::activated, this, &NativeHost::readInput);
    connect(&kivo_, &QLocalSocket::readyRead, this, &NativeHost::readFromKivo);
    connect(&kivo_, &QLocalSocket::connected, this, [this] {
        lastSaid_.clear();
        reconnectTimer_.stop();
        kivo_.write(protocol::frame(
            {{protocol::typeKey, protocol::helloType}, {protocol::browserPidKey, browserPid_}}));
        // What the extension reported while Kivo was away was dropped; it says it all again.
        writeOutput(protocol::frame({{protocol::typeKey, protocol::reportType}}));
    });
    connect(&kivo_, &QLocalSocket::disconnected, this, [this] { reconnectTimer_.start(); });
    connect(&kivo_, &QLocalSocket::errorOccurred, this, [this] {
        if (kivo_.state() == QLocalSocket::UnconnectedState) {
            reconnectTimer_.start();
        }
    });
    reconnectTimer_.setInterval(reconnectIntervalMs);
    connect(&reconnectTimer_, &QTimer::timeout, this, &NativeHost::connectToKivo);
    connectToKivo();
}

void NativeHost::readInput() {
    char bytes[16 * 1024];
    const ssize_t count = ::read(input_, bytes, sizeof bytes);
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
        return;
    }
    if (count <= 0) {
        inputNotifier_.setEnabled(false);
        Q_EMIT finished();
        return;
    }
    inputFrames_.append(QByteArray(bytes, count));
    for (;;) {
        auto next = inputFrames_.next();
        if (auto* message = std::get_if<QJsonObject>(&next)) {
            relayToKivo(*message);
        } else if (auto* malformed = std::get_if<protocol::MalformedFrame>(&next)) {
            printLine(QStringLiteral("dropped ") + malformed->reason);
        } else {
            break;
        }
    }
}

void NativeHost::relayToKivo(const QJsonObject& message) {
    if (kivo_.state() != QLocalSocket::ConnectedState) {
        return;
    }
    if (kivo_.bytesToWrite() > maximumUnsentBytes) {
        sayOnce(QStringLiteral("Kivo is not reading; messages are dropped"));
        return;
    }
    kivo_.write(protocol::frame(message));
}

void NativeHost::connectToKivo() {
    if (kivo_.state() != QLocalSocket::UnconnectedState) {
        return;
    }
    if (const auto refusal = protocol::socketRefusal(socketPath_)) {
        sayOnce(*refusal + QStringLiteral("; is Kivo running?"));
        reconnectTimer_.start();
        return;
    }
    kivo_.connectToServer(socketPath_);
    if (kivo_.state() == QLocalSocket::UnconnectedState) {
        reconnectTimer_.start();
    }
}

void NativeHost::readFromKivo() {
    kivoFrames_.append(kivo_.readAll());
    for (;;) {
        auto next = kivoFrames_.next();
        if (auto* message = std::get_if<QJsonObject>(&next)) {
            writeOutput(protocol::frame(*message));
        } else if (auto* malformed = std::get_if<protocol::MalformedFrame>(&next)) {
            printLine(QStringLiteral("dropped from Kivo: ") + malformed->reason);
        } else {
            break;
        }
    }
}

void NativeHost::writeOutput(const QByteArray& bytes) {
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count = ::write(output_, bytes.constData() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            // The browser has gone.
            Q_EMIT finished();
            return;
        }
        written += count;
    }
}

void NativeHost::sayOnce(const QString& line) {
    if (line != lastSaid_) {
        printLine(line);
        lastSaid_ = line;
    }
}

}  // namespace kivo
