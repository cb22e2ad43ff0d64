#pragma once

#include <sys/stat.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include "e2e/session_user.h"

namespace kivo::test {

// A private KWin on a virtual output with XWayland, its own runtime folder and its own session
// bus, ready when the constructor returns. The bus lets the test (root, when the session runs as
// "nobody") connect too. The folder also holds an XDG data folder with the desktop entry of the
// test windows and a copy of Kivo's KWin script that KWin's user can read.
class KWinSession {
public:
    static constexpr const char* windowAppId = "kivo-e2e-window";

    KWinSession() {
        const QByteArray runtime = runtime_.path().toLocal8Bit();
        if (!runtime_.isValid() || ::chmod(runtime.constData(), 0700) != 0 ||
            (isRoot() && ::chown(runtime.constData(), sessionUser, sessionUser) != 0) ||
            !prepareDataFolder() || !startBus()) {
            return;
        }
        // The installed binary carries a file capability that a sandbox may refuse to execute; a
        // copy has none and, named like the original, runs the same.
        const QString kwin = runtime_.filePath(QStringLiteral("kwin_wayland"));
        // The test window is copied too: the build tree may lie where "nobody" cannot reach.
        if (!QFile::copy(QStringLiteral("/usr/bin/kwin_wayland"), kwin) ||
            !QFile::copy(QStringLiteral(KIVO_E2E_WINDOW), windowProgram())) {
            return;
        }
        environment_.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
        environment_.insert(QStringLiteral("HOME"), runtime_.path());
        environment_.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime_.path());
        environment_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), busAddress_);
        // KWin starts this once its Wayland and X servers are up, with their names.
        const QString announce = QStringLiteral("sh -c 'printf %s \"$DISPLAY\" > %1'")
                                     .arg(runtime_.filePath(QStringLiteral("x11-display")));
        kwin_ = startAsSessionUser(
            kwin,
            {QStringLiteral("--virtual"), QStringLiteral("--xwayland"), QStringLiteral("--width"),
             QStringLiteral("1280"), QStringLiteral("--height"), QStringLiteral("800"),
             QStringLiteral("--socket"), QString::fromLatin1(socketName),
             QStringLiteral("--no-lockscreen"), QStringLiteral("--no-global-shortcuts"),
             QStringLiteral("--no-kactivities"), announce},
            environment_, logFile());
        for (const QDeadlineTimer deadline(60'000);
             x11Display_.isEmpty() && kwin_->isRunning() && !deadline.hasExpired();
             QThread::msleep(100)) {
            QFile display(runtime_.filePath(QStringLiteral("x11-display")));
            if (bus().interface()->isServiceRegistered(QStringLiteral("org.kde.KWin")) &&
                display.open(QIODevice::ReadOnly)) {
                x11Display_ = QString::fromLocal8Bit(display.readAll().trimmed());
            }
        }
        environment_.insert(QStringLiteral("WAYLAND_DISPLAY"), QString::fromLatin1(socketName));
        environment_.insert(QStringLiteral("DISPLAY"), x11Display_);
    }

    ~KWinSession() {
        QDBusConnection::disconnectFromBus(QString::fromLatin1(connectionName));
        kwin_.reset();  // KWin takes XWayland and its clients with it
        bus_.reset();
    }

    bool isReady() const { return !x11Display_.isEmpty() && kwin_ && kwin_->isRunning(); }
    QString logFile() const { return runtime_.filePath(QStringLiteral("session.log")); }
    QString busAddress() const { return busAddress_; }
    // The test's own connection to the session's bus.
    QDBusConnection bus() const {
        return QDBusConnection::connectToBus(busAddress_, QString::fromLatin1(connectionName));
    }
    QByteArray displayPath() const {
        return runtime_.filePath(QString::fromLatin1(socketName)).toLocal8Bit();
    }
    // An XDG data folder with the test window's desktop entry and kivo/kwin/ with the script.
    QString dataFolder() const { return runtime_.filePath(QStringLiteral("share")); }
    QString scriptCopy() const {
        return dataFolder() + QStringLiteral("/kivo/kwin/active_window_reporter.js");
    }

    // Starts a client as the session's user, its output going to the session log.
    std::unique_ptr<ScopedProcess> startClient(const QString& program,
                                               const QStringList& arguments) const {
        return startAsSessionUser(program, arguments, environment_, logFile());
    }

    // A Qt window on Wayland with the test windows' app id and `title`; write a line to its
    // standard input to retitle it.
    std::unique_ptr<ScopedProcess> startWaylandWindow(const QString& title) const {
        QProcessEnvironment environment = environment_;
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
        return startAsSessionUser(windowProgram(), {title, QString::fromLatin1(windowAppId)},
                                  environment, logFile());
    }

    // An X client through XWayland.
    std::unique_ptr<ScopedProcess> startXterm(const QString& title) const {
        return startClient(QStringLiteral("xterm"),
                           {QStringLiteral("-T"), title, QStringLiteral("-e"),
                            QStringLiteral("sleep"), QStringLiteral("600")});
    }

    // Activates the window titled `title` through a one-shot KWin script; false when KWin did not
    // run the script.
    bool activate(const QString& title) {
        const QString path =
            runtime_.filePath(QStringLiteral("activate-%1.js").arg(++activations_));
        QFile script(path);
        if (!script.open(QIODevice::WriteOnly) ||
            script.write(QStringLiteral(R"(const wanted = "%1";
const isPlasma6 = workspace.windowList !== undefined;
for (const window of isPlasma6 ? workspace.windowList() : workspace.clientList()) {
    if (window.caption === wanted) {
        if (isPlasma6) {
            workspace.activeWindow = window;
        } else {
            workspace.activeClient = window;
        }
    }
}
)")
                             .arg(title)
                             .toUtf8()) < 0) {
            return false;
        }
        script.close();
        const QString name = QStringLiteral("kivo-e2e-activate");
        callScripting(QStringLiteral("unloadScript"), {name});
        // The earlier script ends only when KWin gets round to it.
        for (const QDeadlineTimer deadline(10'000);
             callScripting(QStringLiteral("isScriptLoaded"), {name})
                 .arguments()
                 .value(0)
                 .toBool() &&
             !deadline.hasExpired();
             QThread::msleep(20)) {
        }
        const QDBusMessage loaded = callScripting(QStringLiteral("loadScript"), {path, name});
        if (loaded.type() != QDBusMessage::ReplyMessage ||
            loaded.arguments().value(0).toInt() < 0) {
            return false;
        }
        // start runs every loaded script that is not running yet: the object KWin names by the
        // script's number may be a later script's.
        return callScripting(QStringLiteral("start"), {}).type() == QDBusMessage::ReplyMessage;
    }

private:
    static constexpr const char* socketName = "kivo-kwin";
    static constexpr const char* connectionName = "kivo-e2e-kwin";

    QString windowProgram() const { return runtime_.filePath(QStringLiteral("kivo-e2e-window")); }

    QDBusMessage callScripting(const QString& method, const QVariantList& arguments) const {
        QDBusMessage call = QDBusMessage::createMethodCall(
            QStringLiteral("org.kde.KWin"), QStringLiteral("/Scripting"),
            QStringLiteral("org.kde.kwin.Scripting"), method);
        call.setArguments(arguments);
        return bus().call(call);
    }

    bool prepareDataFolder() {
        const QString applications = dataFolder() + QStringLiteral("/applications");
        const QString scripts = dataFolder() + QStringLiteral("/kivo/kwin");
        if (!QDir().mkpath(applications) || !QDir().mkpath(scripts) ||
            !QFile::copy(QStringLiteral(KIVO_KWIN_SCRIPT), scriptCopy())) {
            return false;
        }
        QFile entry(applications + QStringLiteral("/%1.desktop").arg(QLatin1String(windowAppId)));
        return entry.open(QIODevice::WriteOnly) &&
               entry.write(
                   "[Desktop Entry]\nType=Application\nName=Kivo Test Window\n"
                   "Exec=kivo-e2e-window\n") > 0;
    }

    // A bus that admits the session's user and the test, whichever users they are.
    bool startBus() {
        const QString socket = runtime_.filePath(QStringLiteral("bus"));
        const QString config = runtime_.filePath(QStringLiteral("bus.conf"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly) ||
            file.write(
                QStringLiteral(
                    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)")
                    .arg(socket)
                    .toUtf8()) < 0) {
            return false;
        }
        file.close();
        QProcessEnvironment environment;
        environment.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
        bus_ = startAsSessionUser(
            QStringLiteral("dbus-daemon"),
            {QStringLiteral("--config-file=") + config, QStringLiteral("--nofork")}, environment,
            logFile());
        for (const QDeadlineTimer deadline(20'000); bus_->isRunning() && !deadline.hasExpired();
             QThread::msleep(50)) {
            if (QFile::exists(socket)) {
                busAddress_ = QStringLiteral("unix:path=") + socket;
                return true;
            }
        }
        return false;
    }

    // Under /tmp rather than TMPDIR, which may lie where "nobody" cannot reach.
    QTemporaryDir runtime_{QStringLiteral("/tmp/kivo-kwin-XXXXXX")};
    QProcessEnvironment environment_;
    std::unique_ptr<ScopedProcess> bus_;
    std::unique_ptr<ScopedProcess> kwin_;
    QString busAddress_;
    QString x11Display_;
    int activations_ = 0;
};

}  // namespace kivo::test
