#pragma once

#include <sys/stat.h>
#include <unistd.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <optional>

#include "e2e/session_user.h"

namespace kivo::test {

// A private headless GNOME Shell with its own runtime folder, home, session bus and system bus.
// The buses come with the object; the shell starts with `startShell`, so that a test can first
// let Kivo install and enable its extension the way it does for a user. GNOME Shell refuses
// to run as root: as root the session runs as "nobody". The test's own extension at
// KIVO_TEST_DRIVER_DIR lets the test activate windows and move a virtual pointer.
class GnomeSession {
public:
    static constexpr QLatin1StringView driverUuid{"driver@kivo.test"};

    GnomeSession() {
        const QByteArray runtime = runtime_.path().toLocal8Bit();
        if (!runtime_.isValid() || ::chmod(runtime.constData(), 0700) != 0 ||
            (isRoot() && ::chown(runtime.constData(), sessionUser, sessionUser) != 0)) {
            return;
        }
        environment_.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
        environment_.insert(QStringLiteral("HOME"), runtime_.path());
        environment_.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime_.path());
        environment_.insert(QStringLiteral("XDG_DATA_DIRS"), QStringLiteral("/usr/share"));
        environment_.insert(QStringLiteral("XDG_CURRENT_DESKTOP"), QStringLiteral("GNOME"));
        environment_.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
        environment_.insert(QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("wayland-kivo"));
        sessionBus_ = startBus(QStringLiteral("session"));
        systemBus_ = startBus(QStringLiteral("system"));
        environment_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress(u"session"));
        environment_.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), busAddress(u"system"));
        if (!sessionBus_ || !systemBus_) {
            return;
        }
        bus_ = std::make_unique<QDBusConnection>(
            QDBusConnection::connectToBus(busAddress(u"session"), runtime_.path()));
        const QString applications = runtime_.filePath(QStringLiteral(".local/share/applications"));
        const QString driver =
            runtime_.filePath(QStringLiteral(".local/share/gnome-shell/extensions/") + driverUuid);
        isPrepared_ =
            bus_->isConnected() &&
            runAsUser(QStringLiteral("mkdir"), {QStringLiteral("-p"), applications, driver}) &&
            runAsUser(QStringLiteral("cp"),
                      {QStringLiteral("-r"), QStringLiteral(KIVO_TEST_DRIVER_DIR "/."), driver}) &&
            enableExtension(driverUuid);
    }

    ~GnomeSession() {
        // The shell first: the buses' activated services end with the buses.
        if (shell_) {
            shell_->stop(SIGTERM, 15'000);
        }
        bus_.reset();
        QDBusConnection::disconnectFromBus(runtime_.path());
    }

    bool isPrepared() const { return isPrepared_; }
    QString home() const { return runtime_.path(); }
    QString logFile() const { return runtime_.filePath(QStringLiteral("session.log")); }
    const QProcessEnvironment& environment() const { return environment_; }
    // The session bus, as the test (perhaps another user) reaches it.
    QDBusConnection& bus() const { return *bus_; }

    // Writes a desktop entry the user's applications folder, for the shell and Kivo to find.
    bool addApplication(const QString& id, const QString& name) const {
        QFile file(runtime_.filePath(QStringLiteral(".local/share/applications/") + id +
                                     QStringLiteral(".desktop")));
        return file.open(QIODevice::WriteOnly) &&
               file.write(QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nExec=%2\n")
                              .arg(name, id)
                              .toUtf8()) > 0;
    }

    // Adds `uuid` to the shell's enabled extensions with gsettings, as the user would.
    bool enableExtension(const QString& uuid) const {
        const auto current = runAsUser(QStringLiteral("gsettings"),
                                       {QStringLiteral("get"), QStringLiteral("org.gnome.shell"),
                                        QStringLiteral("enabled-extensions")});
        if (!current) {
            return false;
        }
        QString list = QString::fromUtf8(*current).trimmed().remove(QStringLiteral("@as "));
        list.chop(1);  // the closing bracket
        list += (list.endsWith(u'[') ? QString() : QStringLiteral(", ")) % u'\'' % uuid %
                QStringLiteral("']");
        return runAsUser(QStringLiteral("gsettings"),
                         {QStringLiteral("set"), QStringLiteral("org.gnome.shell"),
                          QStringLiteral("enabled-extensions"), list})
            .has_value();
    }

    // Starts the shell and waits until both the test's extension and Kivo's answer: their
    // objects, not just their names.
    bool startShell() {
        shell_ =
            startAsSessionUser(QStringLiteral("gnome-shell"),
                               {QStringLiteral("--headless"), QStringLiteral("--virtual-monitor"),
                                QStringLiteral("1280x800"), QStringLiteral("--wayland-display"),
                                environment_.value(QStringLiteral("WAYLAND_DISPLAY"))},
                               environment_, logFile());
        for (const QDeadlineTimer deadline(60'000); !deadline.hasExpired(); QThread::msleep(100)) {
            if (!shell_->isRunning()) {
                return false;
            }
            if (focusedTitle() &&
                answers(QStringLiteral("app.kivo.FocusedWindow"),
                        QStringLiteral("/app/kivo/FocusedWindow"),
                        QStringLiteral("app.kivo.FocusedWindow"), QStringLiteral("Get"))) {
                return true;
            }
        }
        return false;
    }

    // The environment of an X client on the shell's XWayland, or nothing before it is known.
    std::optional<QProcessEnvironment> x11Environment() const {
        QFile log(logFile());
        static const QRegularExpression display(QStringLiteral("public X11 display (:\\d+)"));
        const QRegularExpressionMatch match = log.open(QIODevice::ReadOnly)
                                                  ? display.match(QString::fromUtf8(log.readAll()))
                                                  : QRegularExpressionMatch();
        const QStringList authorities =
            QDir(runtime_.path())
                .entryList({QStringLiteral(".mutter-Xwaylandauth.*")}, QDir::Files | QDir::Hidden);
        if (!match.hasMatch() || authorities.isEmpty()) {
            return std::nullopt;
        }
        QProcessEnvironment environment = environment_;
        environment.insert(QStringLiteral("DISPLAY"), match.captured(1));
        environment.insert(QStringLiteral("XAUTHORITY"), runtime_.filePath(authorities.first()));
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        return environment;
    }

    // Starts `program` as the session's user, its output going to the session log.
    std::unique_ptr<ScopedProcess> startClient(const QString& program, const QStringList& arguments,
                                               const QProcessEnvironment& environment) const {
        return startAsSessionUser(program, arguments, environment, logFile());
    }

    // Calls the test's extension; the reply's arguments, or nothing.
    std::optional<QVariantList> drive(const QString& method,
                                      const QVariantList& arguments = {}) const {
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("app.kivo.TestDriver"), QStringLiteral("/app/kivo/TestDriver"),
            QStringLiteral("app.kivo.TestDriver"), method);
        call.setArguments(arguments);
        const QDBusMessage reply = bus_->call(call, QDBus::Block, 10'000);
        if (reply.type() != QDBusMessage::ReplyMessage) {
            return std::nullopt;
        }
        return reply.arguments();
    }

    // Activates the window titled `title` until the shell has focused it; false after a generous
    // deadline.
    bool activate(const QString& title) const {
        for (const QDeadlineTimer deadline(20'000); !deadline.hasExpired(); QThread::msleep(100)) {
            drive(QStringLiteral("Activate"), {title});
            if (focusedTitle() == title) {
                return true;
            }
        }
        return false;
    }

    // Waits until the shell has focused the window titled `title`.
    bool waitForFocus(const QString& title) const {
        for (const QDeadlineTimer deadline(20'000); !deadline.hasExpired(); QThread::msleep(50)) {
            if (focusedTitle() == title) {
                return true;
            }
        }
        return false;
    }

    std::optional<QString> focusedTitle() const {
        const auto reply = drive(QStringLiteral("FocusedTitle"));
        return reply && reply->size() == 1 ? std::optional(reply->front().toString())
                                           : std::nullopt;
    }

    // Runs `program` to its end as the session's user; its output, or nothing when it failed.
    std::optional<QByteArray> runAsUser(const QString& program,
                                        const QStringList& arguments) const {
        const auto command = startAsSessionUser(program, arguments, environment_, QString());
        QProcess& process = command->process();
        if (!process.waitForFinished(30'000) || process.exitStatus() != QProcess::NormalExit ||
            process.exitCode() != 0) {
            return std::nullopt;
        }
        return process.readAllStandardOutput();
    }

private:
    QString busAddress(QStringView name) const {
        return QStringLiteral("unix:path=") + runtime_.filePath(name + QStringLiteral("_bus"));
    }

    // A bus daemon of the session's user; the test, whoever it runs as, may use it too.
    std::unique_ptr<ScopedProcess> startBus(const QString& name) {
        const QString config = runtime_.filePath(name + QStringLiteral(".conf"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly)) {
            return nullptr;
        }
        file.write(
            QStringLiteral(
                R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>%1</type>
  <listen>%2</listen>
  %3
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)")
                .arg(name, busAddress(name),
                     name == u"session" ? QStringLiteral("<standard_session_servicedirs/>")
                                        : QString())
                .toUtf8());
        file.close();
        ::chmod(config.toLocal8Bit().constData(), 0644);
        auto daemon = startAsSessionUser(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--config-file=") + config, QStringLiteral("--nofork")}, environment_,
            logFile());
        const QString socket = runtime_.filePath(name + QStringLiteral("_bus"));
        for (const QDeadlineTimer deadline(20'000); !QFile::exists(socket); QThread::msleep(50)) {
            if (deadline.hasExpired() || !daemon->isRunning()) {
                return nullptr;
            }
        }
        return daemon;
    }

    bool answers(const QString& service, const QString& path, const QString& interface,
                 const QString& method) const {
        const QDBusMessage reply = bus_->call(
            QDBusMessage::createMethodCall(service, path, interface, method), QDBus::Block, 2'000);
        return reply.type() == QDBusMessage::ReplyMessage;
    }

    // Under /tmp rather than TMPDIR, which may lie where "nobody" cannot reach.
    QTemporaryDir runtime_{QStringLiteral("/tmp/kivo-gnome-XXXXXX")};
    QProcessEnvironment environment_;
    std::unique_ptr<ScopedProcess> sessionBus_;
    std::unique_ptr<ScopedProcess> systemBus_;
    std::unique_ptr<QDBusConnection> bus_;
    std::unique_ptr<ScopedProcess> shell_;
    bool isPrepared_ = false;
};

}  // namespace kivo::test
