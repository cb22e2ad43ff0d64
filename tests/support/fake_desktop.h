#pragma once

#include <functional>
#include <map>
#include <vector>

#include "capture/desktop.h"

namespace kivo::test {

// A desktop that answers what the test has set and remembers the browser questions it was asked.
class FakeDesktop final : public Desktop {
public:
    std::optional<FrontmostApplication> frontmost;
    std::optional<QString> windowTitle;
    std::optional<QString> tabTitle;    // a browser's answer to title questions
    std::optional<QString> tabAddress;  // and to address questions
    QStringList installedBundleIds;
    std::map<QString, QString> iconNames;
    std::vector<BrowserQuery> queries;
    std::function<void(const BrowserQuery&)> whileAnswering;  // a slow browser, for example

    // Puts an application with a titled window in front.
    void show(const QString& bundleId, const QString& name, const QString& title) {
        frontmost = FrontmostApplication{4242, bundleId, name};
        windowTitle = title;
    }

    // Puts a browser in front whose front tab has this title and address.
    void showTab(const QString& bundleId, const QString& name, const QString& title,
                 const QString& address) {
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
        if (whileAnswering) {
            whileAnswering(query);
        }
        return query.field == BrowserField::Title ? tabTitle : tabAddress;
    }

    QStringList installedApplicationBundleIds() override { return installedBundleIds; }

    std::optional<QString> applicationIconName(const QString& bundleId) override {
        const auto found = iconNames.find(bundleId);
        return found == iconNames.end() ? std::nullopt : std::optional<QString>(found->second);
    }
};

}  // namespace kivo::test
