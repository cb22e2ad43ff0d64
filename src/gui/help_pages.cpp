#include "gui/help_pages.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include "model/diagnostics.h"

namespace kivo {

namespace {

QString fileName(HelpPage page) {
    switch (page) {
        case HelpPage::website:
            return QStringLiteral("index.html");
        case HelpPage::gettingStarted:
            return QStringLiteral("getting-started.html");
        case HelpPage::releaseNotes:
            return QStringLiteral("release-notes.html");
        case HelpPage::contact:
            return QStringLiteral("contact.html");
        case HelpPage::privacyPolicy:
            return QStringLiteral("privacy.html");
    }
    return {};
}

}  // namespace

QUrl helpPageUrl(HelpPage page) {
    const QString name = fileName(page);
    QString path =
        QStandardPaths::locate(QStandardPaths::GenericDataLocation, u"kivo/help/" + name);
    const QStringList nearby{
        QCoreApplication::applicationDirPath() + u"/../share/kivo/help/" + name,
        QStringLiteral(KIVO_SOURCE_HELP_DIR "/") + name,
    };
    for (const QString& candidate : nearby) {
        if (path.isEmpty() && QFileInfo::exists(candidate)) {
            path = QDir::cleanPath(candidate);
        }
    }
    return path.isEmpty() ? QUrl() : QUrl::fromLocalFile(path);
}

void openHelpPage(HelpPage page) {
    const QUrl url = helpPageUrl(page);
    if (url.isEmpty()) {
        printDiagnostic(u"Help page not installed: " + fileName(page));
    } else if (!QDesktopServices::openUrl(url)) {
        printDiagnostic(u"No browser could open " + url.toString());
    }
}

}  // namespace kivo
