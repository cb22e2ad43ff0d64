#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "browser/browser_protocol.h"

namespace kivo::test {

inline bool writeFile(const QString& path, const QByteArray& contents) {
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(contents) == contents.size();
}

// A Firefox ESR profile with Kivo's extension: its folder named by a proxy file, unsigned
// extensions let in, none disabled. ESR honours such a profile.
inline bool writeFirefoxProfile(const QString& profile) {
    return writeFile(
               profile + QStringLiteral("/extensions/") + browser_protocol::firefoxExtensionId,
               KIVO_EXTENSION_DIR) &&
           writeFile(profile + QStringLiteral("/user.js"),
                     "user_pref(\"xpinstall.signatures.required\", false);\n"
                     "user_pref(\"extensions.autoDisableScopes\", 0);\n"
                     "user_pref(\"extensions.enabledScopes\", 15);\n"
                     "user_pref(\"browser.shell.checkDefaultBrowser\", false);\n"
                     // no first-run tab of its own beside the test's pages
                     "user_pref(\"datareporting.policy.firstRunURL\", \"\");\n"
                     "user_pref(\"browser.startup.homepage_override.mstone\", \"ignore\");\n");
}

}  // namespace kivo::test
