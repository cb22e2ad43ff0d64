#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace kivo::test {

// Writes `contents` to `path`, creating the folders on the way.
inline void writeFixtureFile(const QString& path, const QByteArray& contents) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        file.write(contents);
    }
}

// A minimal installed application's desktop entry, with `extraLines` appended to its group.
inline QByteArray applicationEntry(const QByteArray& name, const QByteArray& extraLines = {}) {
    return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=true\n" + extraLines;
}

}  // namespace kivo::test
