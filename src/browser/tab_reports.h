#pragma once

#include <QString>
#include <chrono>
#include <cstdint>
#include <map>
#include <vector>

#include "capture/browser_tabs.h"
#include "capture/focused_window.h"
#include "model/instant.h"

namespace kivo {

// The active tab of one browser window as the extension last reported it.
struct TabReport {
    std::int64_t windowId = 0;
    QString title;
    QString url;
    bool isIncognito = false;
    Instant receivedAt{};
};

// What the browsers' extensions have said, per connection and window, and the rules that decide
// whether it answers for the focused window: the report of the connection's browser process whose
// tab title appears in the window's title (the longest such title, then the latest), if it came
// within `reportLifetime`. Browsers push every change, so a report only ages when a change went
// missing; an aged one is asked again.
class TabReports {
public:
    using ConnectionId = std::uint64_t;

    struct Rules {
        // After this a matching report is asked again before it is used.
        Seconds reportLifetime{30.0};
        // A browser whose extension went away counts as never connected after this: it was
        // disabled or removed, and the browser is recorded by its window title again.
        Seconds reconnectGrace{60.0};
    };

    struct Lookup {
        BrowserTabAnswer answer = BrowserCannotAnswer{};
        // When not empty, the answer is only provisional: these connections should be asked.
        std::vector<ConnectionId> toAsk;
    };

    explicit TabReports(Rules rules) : rules_(rules) {}

    void opened(ConnectionId connection, std::int64_t browserPid);
    void closed(ConnectionId connection, Instant now);
    void reported(ConnectionId connection, TabReport report);
    void windowClosed(ConnectionId connection, std::int64_t windowId);

    Lookup lookup(const FocusedWindow& window, Instant now);

    // The title recorded for a window that is private to the browser's user.
    static QString privateWindowTitle() { return QStringLiteral("Private window"); }

private:
    struct Browser {
        std::int64_t pid = 0;
        std::map<std::int64_t, TabReport> windows;
    };

    bool serves(const Browser& browser, const FocusedWindow& window) const;

    Rules rules_;
    std::map<ConnectionId, Browser> open_;
    std::map<std::int64_t, Instant> lastClosedByPid_;
};

}  // namespace kivo
