#pragma once

#include <QHash>
#include <QString>
#include <memory>

#include "capture/desktop.h"
#include "ui/platform/application_index.h"
#include "ui/platform/x11_connection.h"
#include "ui/platform/xdg_environment.h"

namespace kivo {

// The desktop of an X server run by an EWMH window manager: the frontmost application is the
// owner of the root's _NET_ACTIVE_WINDOW, identified by its desktop-file ID. The connection stays
// open; when it breaks, sampling yields nothing and a later call connects again.
class X11Desktop final : public Desktop {
public:
    struct Options {
        QByteArray displayName;  // as in DISPLAY
        XdgEnvironment environment;
        QString procRoot = QStringLiteral("/proc");
    };

    // A desktop on `options.displayName`; nothing, with the reason in `failure`, when the display
    // cannot be reached or no EWMH window manager runs there.
    static std::unique_ptr<X11Desktop> connect(Options options, QString& failure);

    // Reads the active window once; the title it read is what focusedWindowTitle answers for the
    // same process. Windows of this very process are never reported.
    std::optional<FrontmostApplication> frontmostApplication() override;
    std::optional<QString> focusedWindowTitle(const FrontmostApplication& application) override;
    std::optional<QString> queryBrowser(const BrowserQuery& query) override;
    // Rescans the applications folders; identifiers resolve only against the latest scan.
    QStringList installedApplicationBundleIds() override;
    std::optional<QString> applicationIconName(const QString& bundleId) override;

private:
    X11Desktop(Options options, std::unique_ptr<X11Connection> connection);

    X11Connection* liveConnection();
    std::optional<QString> applicationIdOf(const ActiveWindow& window);

    Options options_;
    std::unique_ptr<X11Connection> connection_;
    ApplicationIndex index_;
    QHash<QString, std::optional<QString>> resolvedIds_;         // by window, process and class
    std::optional<std::pair<std::int64_t, QString>> lastTitle_;  // process and its window's title
};

}  // namespace kivo
