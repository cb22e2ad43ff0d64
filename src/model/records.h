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

// The fields every kind has. Their column order is given by each kind's forEachField.
struct SharedFields {
    QUuid id;
    Instant createdAt{};
    Instant updatedAt{};
    bool isDeleted = false;
    OptionalText extraColumn1;
    OptionalText extraColumn2;
    OptionalText extraColumn3;
    OptionalText extraColumn4;
    OptionalText extraColumn5;

    friend bool operator==(const SharedFields&, const SharedFields&) = default;
};

namespace detail {
template <class Record, class Visitor>
void visitExtraColumns(Record& record, Visitor&& visit) {
    visit("extraColumn1", record.extraColumn1);
    visit("extraColumn2", record.extraColumn2);
    visit("extraColumn3", record.extraColumn3);
    visit("extraColumn4", record.extraColumn4);
    visit("extraColumn5", record.extraColumn5);
}

// The closing columns of every kind but Project: dates, deletion flag, extra columns.
template <class Record, class Visitor>
void visitClosingFields(Record& record, Visitor&& visit) {
    visit("createdAt", record.createdAt);
    visit("updatedAt", record.updatedAt);
    visit("isDeleted", record.isDeleted);
    visitExtraColumns(record, visit);
}
}  // namespace detail

struct Project : SharedFields {
    static constexpr const char* kind = "Project";
    friend bool operator==(const Project&, const Project&) = default;

    QString projectName;
    bool isArchived = false;
    bool isNameChangeOnly = false;

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

struct Filter : SharedFields {
    static constexpr const char* kind = "Filter";
    friend bool operator==(const Filter&, const Filter&) = default;

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
        detail::visitClosingFields(r, visit);
    }
};

struct Activity : SharedFields {
    static constexpr const char* kind = "Activity";
    friend bool operator==(const Activity&, const Activity&) = default;

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
        detail::visitClosingFields(r, visit);
    }
};

struct TagUsage : SharedFields {
    static constexpr const char* kind = "TagUsage";
    friend bool operator==(const TagUsage&, const TagUsage&) = default;

    std::int64_t duration = 0;
    QUuid projectId;
    QUuid filterId;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("duration", r.duration);
        visit("projectId", r.projectId);
        visit("filterId", r.filterId);
        detail::visitClosingFields(r, visit);
    }
};

struct AppUsage : SharedFields {
    static constexpr const char* kind = "AppUsage";
    friend bool operator==(const AppUsage&, const AppUsage&) = default;

    std::int64_t duration = 0;
    QUuid filterId;
    QString appName;
    QString appBundleId;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("duration", r.duration);
        visit("filterId", r.filterId);
        visit("appName", r.appName);
        visit("appBundleId", r.appBundleId);
        detail::visitClosingFields(r, visit);
    }
};

struct WebUsage : SharedFields {
    static constexpr const char* kind = "WebUsage";
    friend bool operator==(const WebUsage&, const WebUsage&) = default;

    std::int64_t duration = 0;
    QUuid filterId;
    QString domainName;

    template <class Self, class Visitor>
    static void forEachField(Self& r, Visitor&& visit) {
        visit("id", r.id);
        visit("duration", r.duration);
        visit("filterId", r.filterId);
        visit("domainName", r.domainName);
        detail::visitClosingFields(r, visit);
    }
};

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
