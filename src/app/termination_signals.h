#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace kivo {

// Turns SIGINT, SIGTERM and SIGHUP into the signal `received` on the main thread: the handler
// only writes a byte to a socket pair, which the event loop watches. While it lives, SIGPIPE is
// ignored, so that output to a reader that has gone fails instead of ending the process. One
// instance per process.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

Q_SIGNALS:
    void received();

private:
    void drain();

    int sockets_[2] = {-1, -1};
    QSocketNotifier* notifier_ = nullptr;
};

}  // namespace kivo
