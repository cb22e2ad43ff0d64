#include "desktop/gnome/extension_files.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>

namespace kivo {

namespace {

// The first GNOME Shell that loads extensions as modules.
constexpr int firstModuleShell = 45;

std::optional<QByteArray> readWhole(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return file.readAll();
}

bool writeWhole(const QString& path, const QByteArray& content) {
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() &&
           file.commit();
}

}  // namespace

QString extensionVariantFor(const QString& shippedFolder, int shellMajor) {
    return QDir(shippedFolder)
        .filePath(shellMajor >= firstModuleShell ? QStringLiteral("modules")
                                                 : QStringLiteral("imports"));
}

std::optional<int> extensionVersionIn(const QString& folder) {
    const auto metadata = readWhole(QDir(folder).filePath(QStringLiteral("metadata.json")));
    if (!metadata) {
        return std::nullopt;
    }
    const QJsonValue version =
        QJsonDocument::fromJson(*metadata).object().value(QLatin1String("version"));
    if (!version.isDouble()) {
        return std::nullopt;
    }
    return version.toInt();
}

ExtensionInstall installExtension(const QString& source, const QString& target) {
    ExtensionInstall result;
    result.previousVersion = extensionVersionIn(target);
    const QStringList names = QDir(source).entryList(QDir::Files, QDir::Name);
    if (names.isEmpty()) {
        result.failure = QStringLiteral("Kivo's GNOME Shell extension is missing from \"%1\"")
                             .arg(QDir::toNativeSeparators(source));
        return result;
    }
    const bool hadExtension = QFile::exists(QDir(target).filePath(QStringLiteral("metadata.json")));
    bool changed = false;
    for (const QString& name : names) {
        const auto shipped = readWhole(QDir(source).filePath(name));
        if (!shipped) {
            result.failure = QStringLiteral("cannot read \"%1\"").arg(QDir(source).filePath(name));
            return result;
        }
        const QString path = QDir(target).filePath(name);
        if (readWhole(path) == shipped) {
            continue;
        }
        if (!QDir().mkpath(target) || !writeWhole(path, *shipped)) {
            result.failure = QStringLiteral("cannot write \"%1\"").arg(path);
            return result;
        }
        changed = true;
    }
    result.version = extensionVersionIn(target);
    result.outcome = !changed       ? ExtensionInstall::Outcome::Unchanged
                     : hadExtension ? ExtensionInstall::Outcome::Updated
                                    : ExtensionInstall::Outcome::Installed;
    return result;
}

std::optional<int> shellMajorVersion(const QString& versionText) {
    static const QRegularExpression number(QStringLiteral("(?:^|\\s)(\\d+)(?:\\.|\\s|$)"));
    const QRegularExpressionMatch match = number.match(versionText.trimmed());
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    return match.captured(1).toInt();
}

}  // namespace kivo
