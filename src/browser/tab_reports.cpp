#include "browser/tab_reports.h"

namespace kivo {

namespace {

// A misbehaving extension cannot make the reports grow without bound.
constexpr std::size_t maximumWindowsPerBrowser = 1000;

}  // namespace

void TabReports::opened(ConnectionId connection, std::int64_t browserPid) {
    open_[connection] = Browser{browserPid, {}};
}

void TabReports::closed(ConnectionId connection, Instant now) {
    const auto found = open_.find(connection);
    if (found == open_.end()) {
        return;
    }
    lastClosedByPid_[found->second.pid] = now;
    open_.erase(found);
    std::erase_if(lastClosedByPid_,
                  [&](const auto& entry) { return now - entry.second > rules_.reconnectGrace; });
}

void TabReports::reported(ConnectionId connection, TabReport report) {
    const auto found = open_.find(connection);
    if (found == open_.end()) {
        return;
    }
    auto& windows = found->second.windows;
    if (windows.size() >= maximumWindowsPerBrowser && !windows.contains(report.windowId)) {
        return;
    }
    windows[report.windowId] = std::move(report);
}

void TabReports::windowClosed(ConnectionId connection, std::int64_t windowId) {
    if (const auto found = open_.find(connection); found != open_.end()) {
        found->second.windows.erase(windowId);
    }
}

bool TabReports::serves(const Browser& browser, const FocusedWindow& window) const {
    // A desktop that names no process leaves only the titles to go by.
    return window.processId == 0 || browser.pid == window.processId;
}

TabReports::Lookup TabReports::lookup(const FocusedWindow& window, Instant now) {
    Lookup result;
    const TabReport* best = nullptr;
    for (const auto& [connection, browser] : open_) {
        if (!serves(browser, window)) {
            continue;
        }
        result.toAsk.push_back(connection);
        for (const auto& [windowId, report] : browser.windows) {
            if (report.title.isEmpty() || !window.title.contains(report.title)) {
                continue;
            }
            if (best == nullptr || report.title.size() > best->title.size() ||
                (report.title.size() == best->title.size() &&
                 report.receivedAt > best->receivedAt)) {
                best = &report;
            }
        }
    }
    if (result.toAsk.empty()) {
        const bool recentlyGone =
            std::any_of(lastClosedByPid_.begin(), lastClosedByPid_.end(), [&](const auto& entry) {
                return (window.processId == 0 || entry.first == window.processId) &&
                       now - entry.second <= rules_.reconnectGrace;
            });
        if (!recentlyGone) {
            result.answer = BrowserNotConnected{};
        }
        return result;
    }
    if (best != nullptr && now - best->receivedAt <= rules_.reportLifetime) {
        result.toAsk.clear();
        result.answer = best->isIncognito ? BrowserTab{privateWindowTitle(), QString()}
                                          : BrowserTab{best->title, best->url};
    }
    return result;
}

}  // namespace kivo
