#include "desktop/xdg/desktop_entry.h"

#include <QHash>
#include <QStringList>

namespace kivo {

namespace {

const QLatin1String mainGroup("[Desktop Entry]");

// Undoes the escapes of string values: \s \n \t \r \\. An unknown escape keeps both characters.
QString unescapeValue(const QString& raw) {
    QString value;
    value.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        const QChar c = raw.at(i);
        if (c != u'\\' || i + 1 == raw.size()) {
            value.append(c);
            continue;
        }
        const QChar next = raw.at(++i);
        switch (next.unicode()) {
            case u's':
                value.append(u' ');
                break;
            case u'n':
                value.append(u'\n');
                break;
            case u't':
                value.append(u'\t');
                break;
            case u'r':
                value.append(u'\r');
                break;
            case u'\\':
                value.append(u'\\');
                break;
            default:
                value.append(c).append(next);
        }
    }
    return value;
}

// The key=value pairs of the main group; the first occurrence of a key wins.
QHash<QString, QString> mainGroupValues(QByteArrayView contents, bool& hasMainGroup) {
    QHash<QString, QString> values;
    hasMainGroup = false;
    bool inMainGroup = false;
    const QStringList lines = QString::fromUtf8(contents).split(u'\n');
    for (const QString& rawLine : lines) {
        const QString line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith(u'#')) {
            continue;
        }
        if (line.startsWith(u'[')) {
            inMainGroup = line == mainGroup;
            hasMainGroup = hasMainGroup || inMainGroup;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inMainGroup || equals <= 0) {
            continue;
        }
        const QString key = line.left(equals).trimmed();
        if (!values.contains(key)) {
            values.insert(key, line.mid(equals + 1).trimmed());
        }
    }
    return values;
}

QString localizedValue(const QHash<QString, QString>& values, const QString& key,
                       const QStringList& fallbacks) {
    for (const QString& tag : fallbacks) {
        const auto found = values.constFind(key % u'[' % tag % u']');
        if (found != values.cend()) {
            return unescapeValue(*found);
        }
    }
    return unescapeValue(values.value(key));
}

bool isTrue(const QHash<QString, QString>& values, const QString& key) {
    return values.value(key) == QLatin1String("true");
}

// The locale tags to try for a localized key, best first: de_DE@euro, de_DE, de@euro, de.
QStringList localeFallbacks(const QString& messagesLocale) {
    QString rest = messagesLocale;
    QString modifier;
    if (const qsizetype at = rest.indexOf(u'@'); at >= 0) {
        modifier = rest.mid(at);
        rest.truncate(at);
    }
    if (const qsizetype dot = rest.indexOf(u'.'); dot >= 0) {
        rest.truncate(dot);
    }
    const qsizetype underscore = rest.indexOf(u'_');
    const QString language = underscore >= 0 ? rest.left(underscore) : rest;
    if (language.isEmpty()) {
        return {};
    }

    QStringList tags;
    if (underscore >= 0 && !modifier.isEmpty()) {
        tags.append(rest + modifier);
    }
    if (underscore >= 0) {
        tags.append(rest);
    }
    if (!modifier.isEmpty()) {
        tags.append(language + modifier);
    }
    tags.append(language);
    return tags;
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(QByteArrayView contents,
                                              const QString& messagesLocale) {
    bool hasMainGroup = false;
    const auto values = mainGroupValues(contents, hasMainGroup);
    if (!hasMainGroup) {
        return std::nullopt;
    }
    const QStringList fallbacks = localeFallbacks(messagesLocale);
    DesktopEntry entry;
    entry.type = values.value(QStringLiteral("Type"));
    entry.name = localizedValue(values, QStringLiteral("Name"), fallbacks);
    entry.icon = localizedValue(values, QStringLiteral("Icon"), fallbacks);
    entry.startupWmClass = unescapeValue(values.value(QStringLiteral("StartupWMClass")));
    entry.isHidden = isTrue(values, QStringLiteral("Hidden"));
    return entry;
}

}  // namespace kivo
