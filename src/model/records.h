#pragma once

#include <QString>
#include <QUuid>
#include <cstdint>
#include <optional>

#include "model/instant.h"

namespace kivo {

// The six record kinds. Each lists its fields once, in stored column order, through
// forEachField; the store derives its tables, statements and row mapping from that list.
// The extra columns are reserved for later versions and are never read or written here.

using OptionalText = std::optional<QString>;

namespace detail {
template <class Record, class Visitor>
void visitExtraColumns(Record& record, Visitor&& visit) {
    visit("extraColumn1", record.extraColumn1);
    visit("extraColumn2", record.extraColumn2);
    visit("extraColumn3", record.extraColumn3);
    visit("extraColumn4", record.extraColumn4);
    visit("extraColumn5", record.extraColumn5);
}
}  // namespace detail

#define KIVO_EXTRA_COLUMNS     \
    OptionalText extraColumn1; \
    OptionalText extraColumn2; \
    OptionalText extraColumn3; \
    OptionalText extraColumn4; \
    OptionalText extraColumn5

struct Project {
    static constexpr const char* kind = "Project";
    friend bool operator==(const Project&, const Project&) = default;

    QUuid id;
    QString projectName;
    bool isArchived = false;
    bool isNameChangeOnly = false;
    bool isDeleted = false;
    Instant createdAt{};
    Instant updatedAt{};
    KIVO_EXTRA_COLUMNS;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("projectName", r.projectName);
        visit("isArchived", r.isArchived);
        visit("isNameChangeOnly", r.isNameChangeOnly);
        visit("isDeleted", r.isDeleted);
        visit("createdAt", r.createdAt);
        visit("updatedAt", r.updatedAt);
        detail::visitExtraColumns(r, visit);
    }
};

struct Filter {
    static constexpr const char* kind = "Filter";
    friend bool operator==(const Filter&, const Filter&) = default;

    QUuid id;
    QUuid projectId;
    QString tagName;
    QString appName;
    QString appBundleId;
    QString matchExpressionOfTitle;
    bool isTitleRegexOn = false;
    QString matchExpressionOfUrl;
    bool isUrlRegexOn = false;
    std::int64_t logicalOperator = 0;  // 0 = "AND", 1 = "OR"
    std::int64_t rating = 0;           // percent, 0 to 100 in steps of 10
    bool isPreprocessTitleOn = false;
    QString regexOfPreprocessTitle;
    bool isPreprocessUrlOn = false;
    QString regexOfPreprocessUrl;
    bool isNameChangeOnly = false;
    Instant createdAt{};
    Instant updatedAt{};
    bool isDeleted = false;
    KIVO_EXTRA_COLUMNS;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("projectId", r.projectId);
        visit("tagName", r.tagName);
        visit("appName", r.appName);
        visit("appBundleId", r.appBundleId);
        visit("matchExpressionOfTitle", r.matchExpressionOfTitle);
        visit("isTitleRegexOn", r.isTitleRegexOn);
        visit("matchExpressionOfUrl", r.matchExpressionOfUrl);
        visit("isUrlRegexOn", r.isUrlRegexOn);
        visit("logicalOperator", r.logicalOperator);
        visit("rating", r.rating);
        visit("isPreprocessTitleOn", r.isPreprocessTitleOn);
        visit("regexOfPreprocessTitle", r.regexOfPreprocessTitle);
        visit("isPreprocessUrlOn", r.isPreprocessUrlOn);
        visit("regexOfPreprocessUrl", r.regexOfPreprocessUrl);
        visit("isNameChangeOnly", r.isNameChangeOnly);
        visit("createdAt", r.createdAt);
        visit("updatedAt", r.updatedAt);
        visit("isDeleted", r.isDeleted);
        detail::visitExtraColumns(r, visit);
    }
};

struct Activity {
    static constexpr const char* kind = "Activity";
    friend bool operator==(const Activity&, const Activity&) = default;

    QUuid id;
    QUuid projectId;
    QUuid filterId;
    QString appName;
    QString appBundleId;
    QString title;
    QString url;
    QString domainName;
    std::int64_t duration = 0;
    Instant startAt{};
    Instant endAt{};
    Instant createdAt{};
    Instant updatedAt{};
    bool isDeleted = false;
    KIVO_EXTRA_COLUMNS;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("projectId", r.projectId);
        visit("filterId", r.filterId);
        visit("appName", r.appName);
        visit("appBundleId", r.appBundleId);
        visit("title", r.title);
        visit("url", r.url);
        visit("domainName", r.domainName);
        visit("duration", r.duration);
        visit("startAt", r.startAt);
        visit("endAt", r.endAt);
        visit("createdAt", r.createdAt);
        visit("updatedAt", r.updatedAt);
        visit("isDeleted", r.isDeleted);
        detail::visitExtraColumns(r, visit);
    }
};

struct TagUsage {
    static constexpr const char* kind = "TagUsage";
    friend bool operator==(const TagUsage&, const TagUsage&) = default;

    QUuid id;
    std::int64_t duration = 0;
    QUuid projectId;
    QUuid filterId;
    Instant createdAt{};
    Instant updatedAt{};
    bool isDeleted = false;
    KIVO_EXTRA_COLUMNS;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("duration", r.duration);
        visit("projectId", r.projectId);
        visit("filterId", r.filterId);
        visit("createdAt", r.createdAt);
        visit("updatedAt", r.updatedAt);
        visit("isDeleted", r.isDeleted);
        detail::visitExtraColumns(r, visit);
    }
};

struct AppUsage {
    static constexpr const char* kind = "AppUsage";
    friend bool operator==(const AppUsage&, const AppUsage&) = default;

    QUuid id;
    std::int64_t duration = 0;
    QUuid filterId;
    QString appName;
    QString appBundleId;
    Instant createdAt{};
    Instant updatedAt{};
    bool isDeleted = false;
    KIVO_EXTRA_COLUMNS;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("duration", r.duration);
        visit("filterId", r.filterId);
        visit("appName", r.appName);
        visit("appBundleId", r.appBundleId);
        visit("createdAt", r.createdAt);
        visit("updatedAt", r.updatedAt);
        visit("isDeleted", r.isDeleted);
        detail::visitExtraColumns(r, visit);
    }
};

struct WebUsage {
    static constexpr const char* kind = "WebUsage";
    friend bool operator==(const WebUsage&, const WebUsage&) = default;

    QUuid id;
    std::int64_t duration = 0;
    QUuid filterId;
    QString domainName;
    Instant createdAt{};
    Instant updatedAt{};
    bool isDeleted = false;
    KIVO_EXTRA_COLUMNS;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("duration", r.duration);
        visit("filterId", r.filterId);
        visit("domainName", r.domainName);
        visit("createdAt", r.createdAt);
        visit("updatedAt", r.updatedAt);
        visit("isDeleted", r.isDeleted);
        detail::visitExtraColumns(r, visit);
    }
};

#undef KIVO_EXTRA_COLUMNS

// A record as it is created: every identifier a fresh random UUID, both dates `now`, text empty,
// numbers 0, flags false, extra columns absent. Callers then set the fields they are given.
template <class Record>
Record newRecord(Instant now) {
    Record record;
    Record::forEachField(record, [&](const char*, auto& field) {
        using Field = std::decay_t<decltype(field)>;
        if constexpr (std::is_same_v<Field, QUuid>) {
            field = QUuid::createUuid();
        } else if constexpr (std::is_same_v<Field, Instant>) {
            field = now;
        }
    });
    return record;
}

// Display texts of the two integer choice fields of a filter, in picker order.
QString logicalOperatorText(std::int64_t logicalOperator);
QString ratingText(std::int64_t rating);

}  // namespace kivo
