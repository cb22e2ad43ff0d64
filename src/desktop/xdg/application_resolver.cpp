#include "desktop/xdg/application_resolver.h"

#include <QFile>
#include <QHash>
#include <QStringList>

namespace kivo {

namespace {

QByteArray readProcessFile(const QString& procRoot, std::int64_t processId, const char* name) {
    QFile file(procRoot % u'/' % QString::number(processId) % u'/' % QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The `name` of the [Application] group of a Flatpak sandbox's .flatpak-info.
std::optional<QString> flatpakApplicationId(const QByteArray& flatpakInfo) {
    bool inApplicationGroup = false;
    for (const QByteArray& rawLine : flatpakInfo.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('[')) {
            inApplicationGroup = line == "[Application]";
        } else if (inApplicationGroup && line.startsWith("name=")) {
            return QString::fromUtf8(line.mid(5).trimmed());
        }
    }
    return std::nullopt;
}

// The path components of every cgroup the process belongs to, innermost first.
QStringList cgroupUnitsInnermostFirst(const QByteArray& cgroupFile) {
    QStringList units;
    for (const QByteArray& line : cgroupFile.split('\n')) {
        const qsizetype pathStart = line.indexOf(':', line.indexOf(':') + 1);
        if (pathStart < 0) {
            continue;
        }
        const QStringList components = QString::fromUtf8(line.mid(pathStart + 1)).split(u'/');
        for (auto component = components.crbegin(); component != components.crend(); ++component) {
            if (!component->isEmpty()) {
                units.append(*component);
            }
        }
    }
    return units;
}

// snap.NAME.APP.… is the scope or service of the Snap's application APP; its desktop file is
// NAME_APP.desktop.
std::optional<QString> snapApplicationId(const QString& unit) {
    if (!unit.startsWith(QLatin1String("snap."))) {
        return std::nullopt;
    }
    const QStringList parts = unit.mid(5).split(u'.');
    if (parts.size() < 2 || parts[0].isEmpty() || parts[1].isEmpty()) {
        return std::nullopt;
    }
    return parts[0] % u'_' % parts[1];
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Undoes systemd's unit-name escaping (\x2d and other \xNN bytes).
QString unescapeUnitName(const QString& escaped) {
    const QByteArray raw = escaped.toUtf8();
    QByteArray bytes;
    for (qsizetype i = 0; i < raw.size(); ++i) {
        if (i + 3 < raw.size() && raw[i] == '\\' && raw[i + 1] == 'x' && isHexDigit(raw[i + 2]) &&
            isHexDigit(raw[i + 3])) {
            bytes.append(QByteArray::fromHex(raw.mid(i + 2, 2)));
            i += 3;
        } else {
            bytes.append(raw[i]);
        }
    }
    return QString::fromUtf8(bytes);
}

// Launchers start applications as app[-LAUNCHER]-ID-RANDOM.scope or
// app[-LAUNCHER]-ID[@RANDOM].service, with the dashes inside ID escaped.
std::optional<QString> systemdApplicationId(const QString& unit) {
    if (!unit.startsWith(QLatin1String("app-"))) {
        return std::nullopt;
    }
    QString name = unit;
    if (name.endsWith(QLatin1String(".scope"))) {
        name.chop(6);
        name.truncate(name.lastIndexOf(u'-'));
    } else if (name.endsWith(QLatin1String(".service"))) {
        name.chop(8);
        if (const qsizetype at = name.indexOf(u'@'); at >= 0) {
            name.truncate(at);
        }
    } else {
        return std::nullopt;
    }
    const qsizetype lastDash = name.lastIndexOf(u'-');
    if (lastDash < 3 || lastDash + 1 == name.size()) {
        return std::nullopt;
    }
    return unescapeUnitName(name.mid(lastDash + 1));
}

QHash<QByteArray, QByteArray> environmentOf(const QByteArray& environFile) {
    QHash<QByteArray, QByteArray> variables;
    for (const QByteArray& assignment : environFile.split('\0')) {
        const qsizetype equals = assignment.indexOf('=');
        if (equals > 0) {
            variables.insert(assignment.left(equals), assignment.mid(equals + 1));
        }
    }
    return variables;
}

// GIO marks what it launched, but children inherit the marks: they count only for the very
// process GIO started.
std::optional<QString> gioLaunchedId(const QHash<QByteArray, QByteArray>& environment,
                                     std::int64_t processId) {
    const QByteArray launchedPid = environment.value("GIO_LAUNCHED_DESKTOP_FILE_PID");
    if (launchedPid != QByteArray::number(processId)) {
        return std::nullopt;
    }
    return desktopFileIdOfPath(QString::fromUtf8(environment.value("GIO_LAUNCHED_DESKTOP_FILE")));
}

std::optional<QString> chromeDesktopId(const QHash<QByteArray, QByteArray>& environment) {
    QString file = QString::fromUtf8(environment.value("CHROME_DESKTOP"));
    if (!file.endsWith(QLatin1String(".desktop"))) {
        return std::nullopt;
    }
    file.chop(8);
    return file;
}

}  // namespace

std::optional<QString> resolveApplicationId(const WindowOwner& owner, const QString& procRoot,
                                            const ApplicationIndex& index) {
    const auto installed = [&index](const std::optional<QString>& id) {
        return id && index.find(*id) != nullptr;
    };
    const auto firstInstalledOfUnits = [&](const QStringList& units, auto idOfUnit) {
        for (const QString& unit : units) {
            if (auto id = idOfUnit(unit); installed(id)) {
                return id;
            }
        }
        return std::optional<QString>();
    };

    if (owner.processId > 0) {
        const auto pid = owner.processId;
        if (auto id = flatpakApplicationId(readProcessFile(procRoot, pid, "root/.flatpak-info"));
            installed(id)) {
            return id;
        }
        const QStringList units =
            cgroupUnitsInnermostFirst(readProcessFile(procRoot, pid, "cgroup"));
        if (auto id = firstInstalledOfUnits(units, snapApplicationId)) {
            return id;
        }
        if (auto id = firstInstalledOfUnits(units, systemdApplicationId)) {
            return id;
        }
        const auto environment = environmentOf(readProcessFile(procRoot, pid, "environ"));
        if (auto id = gioLaunchedId(environment, pid); installed(id)) {
            return id;
        }
        if (auto id = chromeDesktopId(environment); installed(id)) {
            return id;
        }
    }

    for (const QString& wmName : {owner.wmClass, owner.wmInstance}) {
        if (wmName.isEmpty()) {
            continue;
        }
        if (auto id = index.idForStartupWmClass(wmName)) {
            return id;
        }
    }
    if (auto id = std::optional(owner.wmClass.toLower()); installed(id)) {
        return id;
    }
    return std::nullopt;
}

}  // namespace kivo
