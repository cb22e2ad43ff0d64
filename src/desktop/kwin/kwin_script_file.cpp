#include "desktop/kwin/kwin_script_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace kivo {

QString locateKWinScript() {
    const QString relative = QStringLiteral("kivo/kwin/active_window_reporter.js");
    const QString installed = QStandardPaths::locate(QStandardPaths::GenericDataLocation, relative);
    if (!installed.isEmpty()) {
        return installed;
    }
    const QString besideExecutable =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/") + relative;
    for (const QString& candidate : {besideExecutable, QStringLiteral(KIVO_BUILD_KWIN_SCRIPT)}) {
        if (QFileInfo::exists(candidate)) {
            return QDir::cleanPath(candidate);
        }
    }
    return QString();
}

}  // namespace kivo
