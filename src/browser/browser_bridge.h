#pragma once

#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>
#include <chrono>
#include <map>
#include <memory>

#include "browser/browser_protocol.h"
#include "browser/tab_reports.h"
#include "capture/browser_tabs.h"
#include "model/instant.h"

namespace kivo {

// Kivo's end of the browser extensions: listens on the local socket the native messaging hosts
// connect to, keeps what each browser reported, and answers the sampler from it. When nothing
// fresh answers for the focused window, the browser is asked and given at most `answerWait` to
// say, once per window title; the sampler's thread waits meanwhile, as it does for any desktop
// query.
class BrowserBridge final : public QObject, public BrowserTabs {
    Q_OBJECT

public:
    struct Options {
        QString socketPath;
        const Clock* clock = nullptr;  // outlives the bridge
        std::chrono::milliseconds answerWait{50};
        TabReports::Rules rules{};
    };

    // A bridge listening at `options.socketPath`; nothing, with the reason in `failure`, when
    // another Kivo already listens there or the socket cannot be made.
    static std::unique_ptr<BrowserBridge> listen(Options options, QString& failure);

    BrowserTabAnswer frontTab(const FocusedWindow& window) override;

private:
    struct Connection {
        QLocalSocket* socket = nullptr;
        browser_protocol::FrameReader frames;
        bool isGreeted = false;
    };

    explicit BrowserBridge(Options options);
    void accept();
    void read(TabReports::ConnectionId id);
    void receive(TabReports::ConnectionId id, Connection& connection, const QJsonObject& message);
    void drop(TabReports::ConnectionId id);
    std::optional<BrowserTabAnswer> askAndWait(const FocusedWindow& window,
                                               const std::vector<TabReports::ConnectionId>& ids);

    Options options_;
    QLocalServer server_;
    TabReports reports_;
    std::map<TabReports::ConnectionId, Connection> connections_;
    TabReports::ConnectionId nextId_ = 1;
    // The window last asked about in vain, so that a window no report will ever match (a
    // developer-tools window) costs the wait only once.
    QString unansweredTitle_;
    Instant unansweredAt_{};
};

}  // namespace kivo
