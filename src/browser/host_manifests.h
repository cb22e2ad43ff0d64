#pragma once

#include <QString>
#include <QStringList>

namespace kivo {

// Where each browser looks for native messaging hosts of the user, relative to the user's
// configuration folder (Chromium family) or home folder (Firefox).
struct HostManifestFolders {
    QString configHome;  // XDG_CONFIG_HOME, normally ~/.config
    QString home;
};

// Registers `hostPath` as the extension's native messaging host with every browser whose
// configuration folder exists: a manifest in its per-user NativeMessagingHosts folder (Firefox:
// ~/.mozilla/native-messaging-hosts). An unchanged manifest is not written again. Returns the
// manifests that are in place; a folder that cannot be written is reported in `failures`.
QStringList writeHostManifests(const QString& hostPath, const HostManifestFolders& folders,
                               QStringList& failures);

}  // namespace kivo
