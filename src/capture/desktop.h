#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <optional>

namespace kivo {

// The application in front, as the desktop reports it. Either text may be missing when the
// desktop cannot tell.
struct FrontmostApplication {
    std::int64_t processId = 0;
    std::optional<QString> bundleId;       // XDG desktop-file ID on Linux desktops
    std::optional<QString> localizedName;  // the desktop entry's Name in the user's language
};

enum class BrowserField { Title, Address };

// A question to a browser about its front tab. `script` is the text a scripting backend runs;
// other backends answer from what they know (an extension's last report, for example).
struct BrowserQuery {
    QString bundleId;
    QString appName;
    BrowserField field = BrowserField::Title;
    QString script;
};

// What sampling needs from the desktop. Backends that are told of focus changes (D-Bus,
// compositor protocols) keep the latest state and answer from it; polling backends ask on each
// call. Every call runs on the main thread within one tick and must not block for long.
class Desktop {
public:
    virtual ~Desktop() = default;

    virtual std::optional<FrontmostApplication> frontmostApplication() = 0;

    // The title of the application's focused window; nothing when there is no focused window,
    // it has no title, or the title cannot be read.
    virtual std::optional<QString> focusedWindowTitle(const FrontmostApplication& application) = 0;

    // The browser's answer, or nothing when it cannot answer. Prints its own diagnostics.
    virtual std::optional<QString> queryBrowser(const BrowserQuery& query) = 0;

    // Identifiers of the installed applications, in order of discovery, duplicates kept.
    virtual QStringList installedApplicationBundleIds() = 0;

    // The application's icon as a theme icon name or an absolute file path, or nothing.
    virtual std::optional<QString> applicationIconName(const QString& bundleId) = 0;
};

}  // namespace kivo
