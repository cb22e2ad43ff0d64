#pragma once

#include <QLocalSocket>
#include <atomic>
#include <thread>

#include "browser/browser_protocol.h"

namespace kivo::test {

// A native messaging host whose extension shows one page; it answers every "report" request
// with that page, and counts the requests. Runs on a thread of its own, so that it answers
// while the bridge waits.
class FakeBrowserHost {
public:
    FakeBrowserHost(const QString& socketPath, qint64 browserPid, QString title) {
        thread_ = std::thread(
            [this, socketPath, browserPid, title] { run(socketPath, browserPid, title); });
    }
    ~FakeBrowserHost() {
        isDone_ = true;
        thread_.join();
    }
    int requests() const { return requests_; }

private:
    void run(const QString& socketPath, qint64 browserPid, const QString& title) {
        QLocalSocket socket;
        socket.connectToServer(socketPath);
        if (!socket.waitForConnected(10'000)) {
            return;
        }
        socket.write(browser_protocol::frame({{QStringLiteral("type"), QStringLiteral("hello")},
                                              {QStringLiteral("browserPid"), browserPid}}));
        socket.flush();
        browser_protocol::FrameReader reader;
        while (!isDone_ && socket.state() == QLocalSocket::ConnectedState) {
            socket.waitForReadyRead(50);
            reader.append(socket.readAll());
            for (auto next = reader.next(); std::holds_alternative<QJsonObject>(next);
                 next = reader.next()) {
                ++requests_;
                socket.write(browser_protocol::frame(
                    {{QStringLiteral("type"), QStringLiteral("tab")},
                     {QStringLiteral("windowId"), 3},
                     {QStringLiteral("title"), title},
                     {QStringLiteral("url"), QStringLiteral("http://127.0.0.1/")},
                     {QStringLiteral("incognito"), false}}));
                socket.flush();
            }
        }
    }

    std::thread thread_;
    std::atomic<bool> isDone_ = false;
    std::atomic<int> requests_ = 0;
};

}  // namespace kivo::test
