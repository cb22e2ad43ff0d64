#include "browser/host_manifests.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include "browser/browser_protocol.h"

namespace kivo::test {
namespace {

using namespace Qt::StringLiterals;

QJsonObject readJson(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(file.readAll()).object()
                                          : QJsonObject();
}

TEST(HostManifests, WrittenForTheBrowsersThisUserHasOnly) {
    QTemporaryDir home;
    ASSERT_TRUE(home.isValid());
    const QString config = home.filePath(u".config"_s);
    for (const QString& folder : {u".config/chromium"_s, u".config/BraveSoftware/Brave-Browser"_s,
                                  u".mozilla"_s, u".config/unknown-browser"_s}) {
        ASSERT_TRUE(QDir(home.path()).mkpath(folder));
    }
    // A folder that cannot hold the manifest: a file stands where the folder would be.
    ASSERT_TRUE(QDir(home.path()).mkpath(u".config/vivaldi"_s));
    QFile blocker(config + u"/vivaldi/NativeMessagingHosts"_s);
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));

    QStringList failures;
    const QString host = u"/opt/kivo/bin/kivo-browser-host"_s;
    const QString name = u"/app.kivo.browser_host.json"_s;
    const QStringList written = writeHostManifests(host, {config, home.path()}, failures);
    EXPECT_EQ(written,
              (QStringList{config + u"/chromium/NativeMessagingHosts"_s + name,
                           config + u"/BraveSoftware/Brave-Browser/NativeMessagingHosts"_s + name,
                           home.filePath(u".mozilla/native-messaging-hosts"_s) + name}));
    EXPECT_EQ(failures, QStringList(config + u"/vivaldi/NativeMessagingHosts"_s + name));

    const QJsonObject chromium = readJson(written[0]);
    EXPECT_EQ(chromium[u"name"_s], u"app.kivo.browser_host"_s);
    EXPECT_EQ(chromium[u"path"_s], host);
    EXPECT_EQ(chromium[u"type"_s], u"stdio"_s);
    EXPECT_EQ(chromium[u"allowed_origins"_s],
              QJsonArray{u"chrome-extension://ldbigealdefcdbogolojlnpkalihkndf/"_s});
    const QJsonObject firefox = readJson(written[2]);
    EXPECT_EQ(firefox[u"allowed_extensions"_s], QJsonArray{u"browser-extension@kivo.app"_s});
    EXPECT_FALSE(firefox.contains(u"allowed_origins"_s));

    // A moved Kivo registers its new place.
    writeHostManifests(u"/usr/bin/kivo-browser-host"_s, {config, home.path()}, failures);
    EXPECT_EQ(readJson(written[1])[u"path"_s], u"/usr/bin/kivo-browser-host"_s);
}

}  // namespace
}  // namespace kivo::test
