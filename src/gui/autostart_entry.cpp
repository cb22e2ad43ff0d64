#include "gui/autostart_entry.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>

#include "model/diagnostics.h"

namespace kivo {

namespace {

const QString entryName = QStringLiteral("app.kivo.Kivo.desktop");

// A program path as one argument of an Exec line: quoted when it holds anything the line would
// otherwise split or expand, with the characters that quoting keeps special escaped.
QString execArgument(const QString& path) {
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`=%");
    if (std::none_of(path.begin(), path.end(), [](QChar c) { return reserved.contains(c); })) {
        return path;
    }
    QString quoted;
    for (const QChar c : path) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\') {
            quoted += u'\\';
        }
        quoted += c == u'%' ? QStringLiteral("%%") : QString(c);
    }
    // The desktop entry reads backslashes in values as escapes of their own.
    quoted.replace(u'\\', QStringLiteral("\\\\"));
    return u'"' + quoted + u'"';
}

}  // namespace

QString autostartEntryText(const QString& executable) {
    return QStringLiteral(
               "[Desktop Entry]\n"
               "Type=Application\n"
               "Name=Kivo\n"
               "Comment=Records where your time goes\n"
               "Exec=%1 --hidden\n"
               "Icon=app.kivo.Kivo\n"
               "Terminal=false\n"
               "X-GNOME-Autostart-enabled=true\n")
        .arg(execArgument(executable));
}

AutostartEntry::AutostartEntry(QString configHome) : configHome_(std::move(configHome)) {
    if (configHome_.isEmpty()) {
        configHome_ = qEnvironmentVariable("XDG_CONFIG_HOME");
    }
    if (configHome_.isEmpty() || QDir::isRelativePath(configHome_)) {
        configHome_ = QDir::homePath() + QStringLiteral("/.config");
    }
}

QString AutostartEntry::filePath() const {
    return configHome_ + QStringLiteral("/autostart/") + entryName;
}

bool AutostartEntry::exists() const {
    return QFileInfo::exists(filePath());
}

bool AutostartEntry::enable(const QString& executable) const {
    const QString path = filePath();
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        printDiagnostic(QStringLiteral("ファイル操作エラー: could not create the folder of ") +
                        path);
        return false;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(autostartEntryText(executable).toUtf8()) < 0 || !file.commit()) {
        printDiagnostic(QStringLiteral("ファイル操作エラー: ") + path + QStringLiteral(": ") +
                        file.errorString());
        return false;
    }
    return true;
}

bool AutostartEntry::disable() const {
    QFile file(filePath());
    if (!file.exists() || file.remove()) {
        return true;
    }
    printDiagnostic(QStringLiteral("ファイル操作エラー: ") + file.fileName() +
                    QStringLiteral(": ") + file.errorString());
    return false;
}

}  // namespace kivo
