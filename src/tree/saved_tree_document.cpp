#include "tree/saved_tree_document.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

namespace kivo {

namespace {

QString idText(const QUuid& id) {
    return id.toString(QUuid::WithoutBraces).toUpper();
}

QJsonObject encodeFilter(const FilterTreeItem& filter) {
    return {{QStringLiteral("id"), idText(filter.id)},
            {QStringLiteral("name"), filter.name},
            {QStringLiteral("duration"), QJsonValue(static_cast<qint64>(filter.duration))},
            {QStringLiteral("isToggled"), filter.isToggled}};
}

QJsonObject encodeProject(const ProjectTreeItem& project) {
    QJsonArray filters;
    for (const auto& filter : project.filters) {
        filters.append(encodeFilter(filter));
    }
    return {{QStringLiteral("id"), idText(project.id)},
            {QStringLiteral("name"), project.name},
            {QStringLiteral("duration"), QJsonValue(static_cast<qint64>(project.duration))},
            {QStringLiteral("isExpanded"), project.isExpanded},
            {QStringLiteral("isArchived"), project.isArchived},
            {QStringLiteral("isToggled"), project.isToggled},
            {QStringLiteral("filters"), filters}};
}

// Reads the keys of one object; the first missing or mistyped key marks the whole object bad.
class ObjectReader {
public:
    explicit ObjectReader(const QJsonValue& value)
        : object_(value.toObject()), ok_(value.isObject()) {}

    bool ok() const { return ok_; }

    QUuid id(QStringView key) {
        const QString text = field(key, QJsonValue::String).toString();
        // The canonical hyphenated form only; braces or other spellings are not ids here.
        const QUuid id = QUuid::fromString(text);
        if (text.size() != 36 || (id.isNull() && text != QUuid().toString(QUuid::WithoutBraces))) {
            ok_ = false;
        }
        return id;
    }

    QString text(QStringView key) { return field(key, QJsonValue::String).toString(); }

    bool flag(QStringView key) { return field(key, QJsonValue::Bool).toBool(); }

    // Exact: an integer the parser kept as one, or a whole number written with a fraction or an
    // exponent that fits. Never through a double, which would round large values.
    std::int64_t integer(QStringView key) {
        const QJsonValue value = field(key, QJsonValue::Double);
        // toInteger answers its default for anything that is not a whole 64-bit number; two
        // different defaults tell such a value from one that equals either.
        const qint64 number = value.toInteger(0);
        if (number != value.toInteger(1)) {
            ok_ = false;
        }
        return number;
    }

    QJsonArray array(QStringView key) { return field(key, QJsonValue::Array).toArray(); }

private:
    QJsonValue field(QStringView key, QJsonValue::Type type) {
        const QJsonValue value = object_.value(key);
        if (value.type() != type) {
            ok_ = false;
        }
        return value;
    }

    QJsonObject object_;
    bool ok_;
};

// Every id the document names so far; one named twice makes the document unusable, since the
// tree would count that project or filter twice.
using SeenIds = QSet<QUuid>;

bool isNew(SeenIds& seen, const QUuid& id) {
    if (seen.contains(id)) {
        return false;
    }
    seen.insert(id);
    return true;
}

std::optional<FilterTreeItem> decodeFilter(const QJsonValue& value, SeenIds& seen) {
    ObjectReader reader(value);
    FilterTreeItem filter;
    filter.id = reader.id(u"id");
    filter.name = reader.text(u"name");
    filter.duration = reader.integer(u"duration");
    filter.isToggled = reader.flag(u"isToggled");
    return reader.ok() && isNew(seen, filter.id) ? std::optional(filter) : std::nullopt;
}

std::optional<ProjectTreeItem> decodeProject(const QJsonValue& value, SeenIds& seen) {
    ObjectReader reader(value);
    ProjectTreeItem project;
    project.id = reader.id(u"id");
    project.name = reader.text(u"name");
    project.duration = reader.integer(u"duration");
    project.isExpanded = reader.flag(u"isExpanded");
    project.isArchived = reader.flag(u"isArchived");
    project.isToggled = reader.flag(u"isToggled");
    const QJsonArray filters = reader.array(u"filters");
    if (!reader.ok() || !isNew(seen, project.id)) {
        return std::nullopt;
    }
    for (const auto& filterValue : filters) {
        auto filter = decodeFilter(filterValue, seen);
        if (!filter) {
            return std::nullopt;
        }
        project.filters.push_back(std::move(*filter));
    }
    return project;
}

}  // namespace

QByteArray encodeSavedTree(const std::vector<ProjectTreeItem>& projects) {
    QJsonArray array;
    for (const auto& project : projects) {
        array.append(encodeProject(project));
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

std::optional<std::vector<ProjectTreeItem>> decodeSavedTree(const QByteArray& document) {
    QJsonParseError error{};
    const QJsonDocument parsed = QJsonDocument::fromJson(document, &error);
    if (error.error != QJsonParseError::NoError || !parsed.isArray()) {
        return std::nullopt;
    }
    std::vector<ProjectTreeItem> projects;
    SeenIds seen;
    for (const auto& value : parsed.array()) {
        auto project = decodeProject(value, seen);
        if (!project) {
            return std::nullopt;
        }
        projects.push_back(std::move(*project));
    }
    return projects;
}

}  // namespace kivo
