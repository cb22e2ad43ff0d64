#pragma once

#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <memory>

#include "e2e/scoped_process.h"

namespace kivo::test {

// A D-Bus daemon of the test's own, standing in for the system or the session bus; ready (with
// its address known) when the constructor returns, ended with the object.
class PrivateBus {
public:
    PrivateBus() {
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
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)")
                .arg(directory_.path())
                .toUtf8());
        file.close();
        process_ = std::make_unique<ScopedProcess>(
            QStringLiteral("dbus-daemon"),
            QStringList{QStringLiteral("--config-file=") + config, QStringLiteral("--nofork"),
                        QStringLiteral("--print-address=1")});
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

private:
    QTemporaryDir directory_;
    std::unique_ptr<ScopedProcess> process_;
    QString address_;
};

}  // namespace kivo::test
