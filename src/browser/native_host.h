#pragma once

#include <QLocalSocket>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include "browser/browser_protocol.h"

namespace kivo {

// The native messaging host a browser starts for the extension: reads the extension's messages on
// `input`, relays them to Kivo's socket, and passes Kivo's requests back on `output`. While Kivo
// is not running the messages are dropped, not kept; once it is, the extension is asked for a
// fresh report. Diagnostics go to standard error, one line each, since standard output belongs to
// the browser. Ends when the browser closes `input`.
class NativeHost : public QObject {
    Q_OBJECT

public:
    NativeHost(int input, int output, QString socketPath, qint64 browserPid);

Q_SIGNALS:
    void finished();

private:
    void readInput();
    void relayToKivo(const QJsonObject& message);
    void connectToKivo();
    void readFromKivo();
    void writeOutput(const QByteArray& bytes);
    void sayOnce(const QString& line);

    int input_;
    int output_;
    QString socketPath_;
    qint64 browserPid_;
    QSocketNotifier inputNotifier_;
    browser_protocol::FrameReader inputFrames_;
    browser_protocol::FrameReader kivoFrames_;
    // Before the socket: closing the socket on destruction still reaches the timer.
    QTimer reconnectTimer_;
    QLocalSocket kivo_;
    QString lastSaid_;
};

}  // namespace kivo
