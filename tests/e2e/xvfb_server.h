#pragma once

#include <QDeadlineTimer>
#include <QRandomGenerator>
#include <optional>

#include "e2e/scoped_process.h"

namespace kivo::test {

// A private X server on a free display (or on the one asked for, to stand in for a server that
// came back), ready when the constructor returns.
class XvfbServer {
public:
    explicit XvfbServer(std::optional<int> number = std::nullopt) {
        // A taken display makes the server exit; another is tried then. Numbers are random: servers
        // being shut down still hold their sockets for a moment after giving up the lock.
        for (int attempt = 0; attempt < (number ? 1 : 10) && displayNumber_ < 0; ++attempt) {
            // -displayfd: the number is written once clients are accepted. Without -noreset the
            // server resets when its last client leaves and turns away one connecting meanwhile.
            process_ = std::make_unique<ScopedProcess>(
                QStringLiteral("Xvfb"),
                QStringLiteral(":%1 -noreset -displayfd 1 -nolisten tcp -screen 0 1024x768x24")
                    .arg(number.value_or(QRandomGenerator::global()->bounded(1000, 30000)))
                    .split(u' '));
            QByteArray announced;
            for (const QDeadlineTimer deadline(20'000);
                 !announced.contains('\n') && process_->isRunning() && !deadline.hasExpired();) {
                process_->process().waitForReadyRead(200);
                announced += process_->process().readAllStandardOutput();
            }
            bool isNumber = false;
            const int shown = announced.trimmed().toInt(&isNumber);
            displayNumber_ = isNumber ? shown : -1;
        }
    }

    bool isReady() const { return displayNumber_ >= 0; }
    int displayNumber() const { return displayNumber_; }
    QByteArray displayName() const { return ':' + QByteArray::number(displayNumber_); }

private:
    std::unique_ptr<ScopedProcess> process_;
    int displayNumber_ = -1;
};

}  // namespace kivo::test
