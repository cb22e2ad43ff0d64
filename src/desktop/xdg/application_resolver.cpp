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

bool isInstalled(const std::optional<QString>& id, const ApplicationIndex& index) {
    return id && index.find(*id) != nullptr;
}

// Where the process runs: the sandbox names its application for sure.
std::optional<QString> sandboxApplicationId(std::int64_t processId, const QStringList& units,
                                            const QString& procRoot,
                                            const ApplicationIndex& index) {
    if (auto id = flatpakApplicationId(readProcessFile(procRoot, processId, "root/.flatpak-info"));
        isInstalled(id, index)) {
        return id;
    }
    for (const QString& unit : units) {
        if (auto id = snapApplicationId(unit); isInstalled(id, index)) {
            return id;
        }
    }
    return std::nullopt;
}

// How the process was started: the launcher's scope or service, then the launcher's marks.
std::optional<QString> launcherApplicationId(std::int64_t processId, const QStringList& units,
                                             const QString& procRoot,
                                             const ApplicationIndex& index) {
    for (const QString& unit : units) {
        if (auto id = systemdApplicationId(unit); isInstalled(id, index)) {
            return id;
        }
    }
    const auto environment = environmentOf(readProcessFile(procRoot, processId, "environ"));
    if (auto id = gioLaunchedId(environment, processId); isInstalled(id, index)) {
        return id;
    }
    if (auto id = chromeDesktopId(environment); isInstalled(id, index)) {
        return id;
    }
    return std::nullopt;
}

QStringList cgroupUnitsOf(std::int64_t processId, const QString& procRoot) {
    return processId > 0 ? cgroupUnitsInnermostFirst(readProcessFile(procRoot, processId, "cgroup"))
                         : QStringList();
}

}  // namespace

std::optional<QString> resolveApplicationId(const WindowOwner& owner, const QString& procRoot,
                                            const ApplicationIndex& index) {
    if (owner.processId > 0) {
        const QStringList units = cgroupUnitsOf(owner.processId, procRoot);
        if (auto id = sandboxApplicationId(owner.processId, units, procRoot, index)) {
            return id;
        }
        if (auto id = launcherApplicationId(owner.processId, units, procRoot, index)) {
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
    if (auto id = std::optional(owner.wmClass.toLower()); isInstalled(id, index)) {
        return id;
    }
    return std::nullopt;
}

std::optional<QString> resolveToplevelApplicationId(const ToplevelOwner& owner,
                                                    const QString& procRoot,
                                                    const ApplicationIndex& index) {
    const QStringList units = cgroupUnitsOf(owner.processId, procRoot);
    if (owner.processId > 0) {
        if (auto id = sandboxApplicationId(owner.processId, units, procRoot, index)) {
            return id;
        }
    }
    QString appId = owner.appId;
    if (appId.endsWith(QLatin1String(".desktop"))) {
        appId.chop(8);
    }
    if (auto id = std::optional(appId); isInstalled(id, index)) {
        return id;
    }
    if (owner.processId > 0) {
        if (auto id = launcherApplicationId(owner.processId, units, procRoot, index)) {
            return id;
        }
    }
    if (appId.isEmpty()) {
        return std::nullopt;
    }
    if (auto id = index.idForStartupWmClass(appId)) {
        return id;
    }
    if (auto id = std::optional(appId.toLower()); isInstalled(id, index)) {
        return id;
    }
    return std::nullopt;
}

}  // namespace kivo
