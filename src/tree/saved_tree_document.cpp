#include "tree/saved_tree_document.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>

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

    std::int64_t integer(QStringView key) {
        const QJsonValue value = field(key, QJsonValue::Double);
        const double number = value.toDouble();
        if (!std::isfinite(number) || std::trunc(number) != number ||
            number < -9.2233720368547758e18 || number >= 9.2233720368547758e18) {
            ok_ = false;
            return 0;
        }
        return value.toInteger(static_cast<qint64>(number));
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

std::optional<FilterTreeItem> decodeFilter(const QJsonValue& value) {
    ObjectReader reader(value);
    FilterTreeItem filter;
    filter.id = reader.id(u"id");
    filter.name = reader.text(u"name");
    filter.duration = reader.integer(u"duration");
    filter.isToggled = reader.flag(u"isToggled");
    return reader.ok() ? std::optional(filter) : std::nullopt;
}

std::optional<ProjectTreeItem> decodeProject(const QJsonValue& value) {
    ObjectReader reader(value);
    ProjectTreeItem project;
    project.id = reader.id(u"id");
    project.name = reader.text(u"name");
    project.duration = reader.integer(u"duration");
    project.isExpanded = reader.flag(u"isExpanded");
    project.isArchived = reader.flag(u"isArchived");
    project.isToggled = reader.flag(u"isToggled");
    const QJsonArray filters = reader.array(u"filters");
    if (!reader.ok()) {
        return std::nullopt;
    }
    for (const auto& filterValue : filters) {
        auto filter = decodeFilter(filterValue);
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
    for (const auto& value : parsed.array()) {
        auto project = decodeProject(value);
        if (!project) {
            return std::nullopt;
        }
        projects.push_back(std::move(*project));
    }
    return projects;
}

}  // namespace kivo
