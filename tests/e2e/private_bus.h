#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QTemporaryDir>
#include <memory>

#include "e2e/scoped_process.h"

namespace kivo::test {

// A D-Bus daemon of the test's own, standing in for the system or the session bus; ready (with
// its address known) when the constructor returns, ended with the object. The names in
// `activatable` are services the bus could start, as where a desktop is installed; starting one
// fails, and the daemon's log tells of each attempt.
class PrivateBus {
public:
    explicit PrivateBus(const QStringList& activatable = {}) {
        const QString services = directory_.filePath(QStringLiteral("services"));
        if (!QDir().mkpath(services)) {
            return;
        }
        for (const QString& name : activatable) {
            QFile service(services + u'/' + name + QStringLiteral(".service"));
            if (!service.open(QIODevice::WriteOnly)) {
                return;
            }
            service.write(
                QStringLiteral("[D-BUS Service]\nName=%1\nExec=/bin/false\n").arg(name).toUtf8());
        }
        const QString config = directory_.filePath(QStringLiteral("bus.conf"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly)) {
            return;
        }
        file.write(
            QStringLiteral(
                R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=%1</listen>
  <auth>EXTERNAL</auth>
  <servicedir>%2</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)")
                .arg(directory_.path(), services)
                .toUtf8());
        file.close();
        process_ = std::make_unique<ScopedProcess>(
            QStringLiteral("dbus-daemon"),
            QStringList{QStringLiteral("--config-file=") + config, QStringLiteral("--nofork"),
                        QStringLiteral("--print-address=1")},
            QProcessEnvironment::systemEnvironment(), QString(), [log = logPath().toLocal8Bit()] {
                ::dup2(::open(log.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
            });
        QByteArray announced;
        for (const QDeadlineTimer deadline(20'000);
             !announced.contains('\n') && process_->isRunning() && !deadline.hasExpired();) {
            process_->process().waitForReadyRead(200);
            announced += process_->process().readAllStandardOutput();
        }
        address_ = QString::fromUtf8(announced.trimmed());
    }

    bool isReady() const { return !address_.isEmpty(); }
    QString address() const { return address_; }

    // What the daemon has logged so far.
    QByteArray log() const {
        QFile file(logPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QString logPath() const { return directory_.filePath(QStringLiteral("daemon.log")); }

    QTemporaryDir directory_;
    std::unique_ptr<ScopedProcess> process_;
    QString address_;
};

}  // namespace kivo::test
