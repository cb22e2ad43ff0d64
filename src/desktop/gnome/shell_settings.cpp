#include "desktop/gnome/shell_settings.h"

#include <QProcess>
#include <QRegularExpression>
#include <optional>

namespace kivo {

namespace {

const QString shellSchema = QStringLiteral("org.gnome.shell");
constexpr int gsettingsTimeoutMs = 10'000;

// Runs gsettings with `arguments`; its output, or nothing with the reason in `failure`.
std::optional<QString> runGsettings(const QStringList& arguments, QString& failure) {
    QProcess gsettings;
    gsettings.start(QStringLiteral("gsettings"), arguments);
    if (!gsettings.waitForFinished(gsettingsTimeoutMs)) {
        gsettings.kill();
        gsettings.waitForFinished();
        failure = QStringLiteral("gsettings did not run: ") % gsettings.errorString();
        return std::nullopt;
    }
    if (gsettings.exitStatus() != QProcess::NormalExit || gsettings.exitCode() != 0) {
        failure = QStringLiteral("gsettings failed: ") %
                  QString::fromLocal8Bit(gsettings.readAllStandardError()).trimmed();
        return std::nullopt;
    }
    return QString::fromUtf8(gsettings.readAllStandardOutput());
}

}  // namespace

QStringList parseStringArray(const QString& text) {
    static const QRegularExpression quoted(
        QStringLiteral(R"re('((?:[^'\\]|\\.)*)'|"((?:[^"\\]|\\.)*)")re"));
    static const QRegularExpression escape(QStringLiteral(R"(\\(.))"));
    QStringList strings;
    for (auto it = quoted.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        QString string = match.captured(1).isNull() ? match.captured(2) : match.captured(1);
        strings.append(string.replace(escape, QStringLiteral("\\1")));
    }
    return strings;
}

QString formatStringArray(const QStringList& strings) {
    QStringList quoted;
    for (QString string : strings) {
        string.replace(u'\\', QStringLiteral("\\\\")).replace(u'\'', QStringLiteral("\\'"));
        quoted.append(u'\'' % string % u'\'');
    }
    return u'[' % quoted.join(QStringLiteral(", ")) % u']';
}

bool enableShellExtension(const QString& uuid, QString& failure) {
    const struct {
        QString key;
        bool shouldList;
    } lists[] = {{QStringLiteral("enabled-extensions"), true},
                 {QStringLiteral("disabled-extensions"), false}};
    for (const auto& [key, shouldList] : lists) {
        const auto current = runGsettings({QStringLiteral("get"), shellSchema, key}, failure);
        if (!current) {
            return false;
        }
        QStringList uuids = parseStringArray(*current);
        if (uuids.contains(uuid) == shouldList) {
            continue;
        }
        if (shouldList) {
            uuids.append(uuid);
        } else {
            uuids.removeAll(uuid);
        }
        if (!runGsettings({QStringLiteral("set"), shellSchema, key, formatStringArray(uuids)},
                          failure)) {
            return false;
        }
    }
    return true;
}

bool areShellExtensionsTurnedOff() {
    QString ignoredFailure;
    const auto value = runGsettings(
        {QStringLiteral("get"), shellSchema, QStringLiteral("disable-user-extensions")},
        ignoredFailure);
    return value && value->trimmed() == u"true";
}

}  // namespace kivo
