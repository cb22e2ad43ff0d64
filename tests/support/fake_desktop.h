#pragma once

#include <map>
#include <vector>

#include "capture/application_catalog.h"
#include "capture/browser_tabs.h"
#include "capture/focused_window.h"
#include "capture/presence.h"

namespace kivo::test {

inline const QString editorId = QStringLiteral("org.gnome.TextEditor");
inline const QString chromeId = QStringLiteral("com.google.Chrome");

// A focused window that answers what the test has set.
struct FakeFocusedWindow final : FocusedWindowSource {
    std::optional<FocusedWindow> window;

    void show(const QString& bundleId, const QString& name, const QString& title) {
        window = FocusedWindow{4242, bundleId, name, title};
    }
    void showEditor(const QString& title = QStringLiteral("notes.txt")) {
        show(editorId, QStringLiteral("Text Editor"), title);
    }
    std::optional<FocusedWindow> focusedWindow() override { return window; }
};

// Browsers that answer what the test has set and remember which windows they were asked about.
struct FakeBrowserTabs final : BrowserTabs {
    BrowserTabAnswer answer = BrowserNotConnected{};
    std::vector<FocusedWindow> asked;

    BrowserTabAnswer frontTab(const FocusedWindow& window) override {
        asked.push_back(window);
        return answer;
    }
};

// A desktop that says about the user what the test has set, and counts the questions asked.
struct FakePresence final : PresenceSource {
    bool locked = false;
    std::optional<Seconds> idle;
    bool inhibited = false;
    int questions = 0;

    bool isLocked() override {
        ++questions;
        return locked;
    }
    std::optional<Seconds> idleTime() override {
        ++questions;
        return idle;
    }
    bool isIdleInhibited() override {
        ++questions;
        return inhibited;
    }
};

// A catalog of the applications the test names, in the order it names them.
struct FakeApplicationCatalog final : ApplicationCatalog {
    struct Entry {
        QString id, name, icon;
    };
    std::vector<Entry> entries;
    int rescans = 0;

    void rescan() override { ++rescans; }
    QStringList installedBundleIds() const override {
        QStringList ids;
        for (const auto& entry : entries) {
            ids.append(entry.id);
        }
        return ids;
    }
    std::optional<QString> displayName(const QString& id) const override {
        const Entry* entry = find(id);
        return entry ? std::optional(entry->name) : std::nullopt;
    }
    std::optional<QString> iconName(const QString& id) const override {
        const Entry* entry = find(id);
        return entry && !entry->icon.isEmpty() ? std::optional(entry->icon) : std::nullopt;
    }

private:
    const Entry* find(const QString& id) const {
        for (const auto& entry : entries) {
            if (entry.id == id) {
                return &entry;
            }
        }
        return nullptr;
    }
};

// The focused window and the browsers together, as the recorder sees a desktop.
struct FakeDesktop {
    FakeFocusedWindow focus;
    FakeBrowserTabs tabs;

    void show(const QString& bundleId, const QString& name, const QString& title) {
        focus.show(bundleId, name, title);
    }
    void showEditor(const QString& title = QStringLiteral("notes.txt")) { focus.showEditor(title); }
    // A browser in front whose front tab has this title and address.
    void showTab(const QString& title, const QString& address, const QString& bundleId = chromeId,
                 const QString& name = QStringLiteral("Google Chrome")) {
        show(bundleId, name, name);
        tabs.answer = BrowserTab{title, address};
    }
};

}  // namespace kivo::test
