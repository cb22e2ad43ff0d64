#pragma once

#include <vector>

#include "capture/desktop.h"

namespace kivo::test {

inline const QString editorId = QStringLiteral("org.gnome.TextEditor");
inline const QString chromeId = QStringLiteral("com.google.Chrome");

// A desktop that answers what the test has set and remembers the browser questions it was asked.
struct FakeDesktop final : Desktop {
    std::optional<FrontmostApplication> frontmost;
    std::optional<QString> windowTitle, tabTitle, tabAddress;  // tab*: a browser's answers
    std::vector<BrowserQuery> queries;

    void show(const QString& bundleId, const QString& name, const QString& title) {
        frontmost = FrontmostApplication{4242, bundleId, name};
        windowTitle = title;
    }
    void showEditor(const QString& title = QStringLiteral("notes.txt")) {
        show(editorId, QStringLiteral("Text Editor"), title);
    }
    // A browser in front whose front tab has this title and address.
    void showTab(const QString& title, const QString& address, const QString& bundleId = chromeId,
                 const QString& name = QStringLiteral("Google Chrome")) {
        show(bundleId, name, name);
        tabTitle = title;
        tabAddress = address;
    }
    std::optional<FrontmostApplication> frontmostApplication() override { return frontmost; }
    std::optional<QString> focusedWindowTitle(const FrontmostApplication&) override {
        return windowTitle;
    }
    std::optional<QString> queryBrowser(const BrowserQuery& query) override {
        queries.push_back(query);
        return query.field == BrowserField::Title ? tabTitle : tabAddress;
    }
    QStringList installedApplicationBundleIds() override { return {}; }
    std::optional<QString> applicationIconName(const QString&) override { return {}; }
};

}  // namespace kivo::test
