#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThread>
#include <optional>

#include "e2e/session_user.h"

namespace kivo::test {

// A private headless sway with its own runtime folder and session bus, ready when the constructor
// returns. Compositors refuse to run as root: as root it and its clients run as "nobody".
class SwaySession {
public:
    SwaySession() {
        if (!runtime_.isValid() || ::chmod(runtime_.path().toLocal8Bit().constData(), 0700) != 0 ||
            (isRoot() &&
             ::chown(runtime_.path().toLocal8Bit().constData(), sessionUser, sessionUser) != 0)) {
            return;
        }
        QFile config(runtime_.filePath(QStringLiteral("config")));
        if (!config.open(QIODevice::WriteOnly) || config.write("xwayland enable\n") < 0) {
            return;
        }
        config.close();
        environment_.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
        environment_.insert(QStringLiteral("HOME"), runtime_.path());
        environment_.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime_.path());
        QProcessEnvironment compositor = environment_;
        compositor.insert(QStringLiteral("WLR_BACKENDS"), QStringLiteral("headless"));
        compositor.insert(QStringLiteral("WLR_LIBINPUT_NO_DEVICES"), QStringLiteral("1"));
        compositor.insert(QStringLiteral("WLR_RENDERER"), QStringLiteral("pixman"));
        process_ = startAsSessionUser(
            QStringLiteral("dbus-run-session"),
            {QStringLiteral("--"), QStringLiteral("sway"), QStringLiteral("-c"), config.fileName()},
            compositor, logFile());
        // sway names its IPC socket sway-ipc.UID.PID.sock once both sockets are there.
        for (const QDeadlineTimer deadline(30'000);
             swayPid_ <= 0 && process_ && process_->isRunning() && !deadline.hasExpired();
             QThread::msleep(50)) {
            const QStringList sockets =
                QDir(runtime_.path())
                    .entryList({QStringLiteral("sway-ipc.*.sock")}, QDir::System | QDir::Hidden);
            const QStringList displays =
                QDir(runtime_.path()).entryList({QStringLiteral("wayland-*")}, QDir::System);
            if (!sockets.isEmpty() && !displays.isEmpty()) {
                swaySocket_ = runtime_.filePath(sockets.first()).toLocal8Bit();
                displayName_ = displays.first().toLocal8Bit();
                swayPid_ = sockets.first().section(u'.', 2, 2).toInt();
            }
        }
        environment_.insert(QStringLiteral("WAYLAND_DISPLAY"),
                            QString::fromLocal8Bit(displayName_));
        environment_.insert(QStringLiteral("SWAYSOCK"), QString::fromLocal8Bit(swaySocket_));
    }

    ~SwaySession() {
        // dbus-run-session ends its bus once the compositor has ended; stopping it sooner would
        // leave the bus behind, and the runtime folder in use.
        if (swayPid_ > 0) {
            ::kill(swayPid_, SIGTERM);
            process_->process().waitForFinished(10'000);
        }
    }

    bool isReady() const { return swayPid_ > 0 && process_ && process_->isRunning(); }
    QString logFile() const { return runtime_.filePath(QStringLiteral("session.log")); }
    QString runtimeFolder() const { return runtime_.path(); }
    // The display as an absolute path, usable from any runtime folder.
    QByteArray displayPath() const {
        return runtime_.filePath(QString::fromLocal8Bit(displayName_)).toLocal8Bit();
    }
    QByteArray swaySocket() const { return swaySocket_; }
    // For the session's own clients.
    const QProcessEnvironment& environment() const { return environment_; }

    // Starts `program` as the session's user, its output going to the session log.
    std::unique_ptr<ScopedProcess> startClient(const QString& program,
                                               const QStringList& arguments) const {
        return startAsSessionUser(program, arguments, environment_, logFile());
    }

    // Runs swaymsg with `arguments`; its output, or nothing when it failed.
    std::optional<QByteArray> swaymsg(const QStringList& arguments) const {
        ScopedProcess command(
            QStringLiteral("swaymsg"),
            QStringList{QStringLiteral("-s"), QString::fromLocal8Bit(swaySocket_)} + arguments,
            environment_);
        QProcess& process = command.process();
        if (!process.waitForFinished(30'000) || process.exitStatus() != QProcess::NormalExit ||
            process.exitCode() != 0) {
            return std::nullopt;
        }
        return process.readAllStandardOutput();
    }

    // The X display of the session's XWayland, started on first use, as sway hands it to its own
    // children; empty when there is none.
    QString xwaylandDisplay() const {
        const QString file = runtime_.filePath(QStringLiteral("xwayland-display"));
        if (!swaymsg({QStringLiteral("exec echo \"$DISPLAY\" > %1").arg(file)})) {
            return {};
        }
        for (const QDeadlineTimer deadline(20'000); !deadline.hasExpired(); QThread::msleep(50)) {
            QFile answer(file);
            if (answer.open(QIODevice::ReadOnly) && answer.readAll().endsWith('\n')) {
                answer.seek(0);
                return QString::fromLocal8Bit(answer.readAll().trimmed());
            }
        }
        return {};
    }

    // The title of the window sway has focused, or nothing.
    std::optional<QString> focusedTitle() const {
        const auto tree =
            swaymsg({QStringLiteral("-r"), QStringLiteral("-t"), QStringLiteral("get_tree")});
        if (!tree) {
            return std::nullopt;
        }
        const auto node = focusedNode(QJsonDocument::fromJson(*tree).object());
        return node ? std::optional(node->value(QLatin1String("name")).toString()) : std::nullopt;
    }

    // Waits until sway has focused the window titled `title`; false after a generous deadline.
    bool waitForFocus(const QString& title) const {
        for (const QDeadlineTimer deadline(20'000); !deadline.hasExpired(); QThread::msleep(50)) {
            if (focusedTitle() == title) {
                return true;
            }
        }
        return false;
    }

private:
    static std::optional<QJsonObject> focusedNode(const QJsonObject& node) {
        if (node.value(QLatin1String("focused")).toBool()) {
            return node;
        }
        for (const char* children : {"nodes", "floating_nodes"}) {
            for (const QJsonValue child : node.value(QLatin1String(children)).toArray()) {
                if (auto found = focusedNode(child.toObject())) {
                    return found;
                }
            }
        }
        return std::nullopt;
    }

    // Under /tmp rather than TMPDIR, which may lie where "nobody" cannot reach.
    QTemporaryDir runtime_{QStringLiteral("/tmp/kivo-sway-XXXXXX")};
    QProcessEnvironment environment_;
    std::unique_ptr<ScopedProcess> process_;
    QByteArray displayName_;
    QByteArray swaySocket_;
    pid_t swayPid_ = 0;
};

}  // namespace kivo::test
