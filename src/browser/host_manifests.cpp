#include "browser/host_manifests.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include "browser/browser_protocol.h"

namespace kivo {

namespace {

namespace protocol = browser_protocol;

// The configuration folders of the Chromium family on Linux, each with its own list of hosts.
const QStringList chromiumFamilyFolders{
    QStringLiteral("chromium"),
    QStringLiteral("google-chrome"),
    QStringLiteral("google-chrome-beta"),
    QStringLiteral("google-chrome-unstable"),
    QStringLiteral("microsoft-edge"),
    QStringLiteral("microsoft-edge-beta"),
    QStringLiteral("microsoft-edge-dev"),
    QStringLiteral("BraveSoftware/Brave-Browser"),
    QStringLiteral("vivaldi"),
    QStringLiteral("opera"),
};

QByteArray manifest(const QString& hostPath, bool isFirefox) {
    QJsonObject object{
        {QStringLiteral("name"), protocol::hostName},
        {QStringLiteral("description"), QStringLiteral("Kivo: the front tab of each window")},
        {QStringLiteral("path"), hostPath},
        {QStringLiteral("type"), QStringLiteral("stdio")},
    };
    if (isFirefox) {
        object.insert(QStringLiteral("allowed_extensions"),
                      QJsonArray{QString(protocol::firefoxExtensionId)});
    } else {
        object.insert(QStringLiteral("allowed_origins"),
                      QJsonArray{QString(QStringLiteral("chrome-extension://") +
                                         protocol::chromiumExtensionId + u'/')});
    }
    return QJsonDocument(object).toJson();
}

bool writeIfChanged(const QString& path, const QByteArray& contents) {
    if (QFile existing(path);
        existing.open(QIODevice::ReadOnly) && existing.readAll() == contents) {
        return true;
    }
    if (!QDir().mkpath(QFileInfo(path).path())) {
        return false;
    }
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size() &&
           file.commit();
}

}  // namespace

QStringList writeHostManifests(const QString& hostPath, const HostManifestFolders& folders,
                               QStringList& failures) {
    struct Target {
        QString browserFolder;
        QString manifestFolder;
        bool isFirefox;
    };
    std::vector<Target> targets;
    for (const QString& folder : chromiumFamilyFolders) {
        const QString browserFolder = folders.configHome + u'/' + folder;
        targets.push_back(
            {browserFolder, browserFolder + QStringLiteral("/NativeMessagingHosts"), false});
    }
    targets.push_back({folders.home + QStringLiteral("/.mozilla"),
                       folders.home + QStringLiteral("/.mozilla/native-messaging-hosts"), true});

    QStringList written;
    for (const auto& [browserFolder, manifestFolder, isFirefox] : targets) {
        if (!QFileInfo(browserFolder).isDir()) {
            continue;
        }
        const QString path = manifestFolder + u'/' + protocol::hostName + QStringLiteral(".json");
        if (writeIfChanged(path, manifest(hostPath, isFirefox))) {
            written.append(path);
        } else {
            failures.append(path);
        }
    }
    return written;
}

}  // namespace kivo
