#include "desktop/xdg/xdg_environment.h"

#include <QDir>

namespace kivo {

namespace {

bool isUsable(const QString& path) {
    return !path.isEmpty() && QDir::isAbsolutePath(path);
}

QString applicationsBelow(const QString& dataFolder) {
    return QDir::cleanPath(dataFolder + QStringLiteral("/applications"));
}

// POSIX order: LC_ALL overrides LC_MESSAGES, which overrides LANG.
QString messagesLocaleFromProcess() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const QString value = qEnvironmentVariable(variable);
        if (!value.isEmpty()) {
            return value;
        }
    }
    return {};
}

}  // namespace

XdgEnvironment XdgEnvironment::fromProcess() {
    return {qEnvironmentVariable("HOME"), qEnvironmentVariable("XDG_DATA_HOME"),
            qEnvironmentVariable("XDG_DATA_DIRS"), messagesLocaleFromProcess()};
}

QStringList XdgEnvironment::applicationFolders() const {
    QStringList folders;
    if (isUsable(dataHome)) {
        folders.append(applicationsBelow(dataHome));
    } else if (isUsable(home)) {
        folders.append(applicationsBelow(home + QStringLiteral("/.local/share")));
    }

    QStringList dataFolders;
    for (const QString& folder : dataDirs.split(u':')) {
        if (isUsable(folder)) {
            dataFolders.append(folder);
        }
    }
    if (dataFolders.isEmpty()) {
        dataFolders = {QStringLiteral("/usr/local/share"), QStringLiteral("/usr/share")};
    }
    for (const QString& folder : dataFolders) {
        folders.append(applicationsBelow(folder));
    }
    return folders;
}

}  // namespace kivo
