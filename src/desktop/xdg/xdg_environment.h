#pragma once

#include <QString>
#include <QStringList>

namespace kivo {

// The parts of the process environment that say where desktop entries live and which language
// the user reads.
struct XdgEnvironment {
    QString home;
    QString dataHome;  // XDG_DATA_HOME
    QString dataDirs;  // XDG_DATA_DIRS, colon-separated
    QString messagesLocale;

    static XdgEnvironment fromProcess();

    // The applications folders in order of precedence: the user's own first, then each data
    // folder. Relative and empty paths are ignored, as the base directory rules require.
    QStringList applicationFolders() const;
};

}  // namespace kivo
