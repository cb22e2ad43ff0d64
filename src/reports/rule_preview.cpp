#include "reports/rule_preview.h"

#include <QHash>
#include <map>
#include <optional>
#include <utility>

#include "classify/filter_match.h"
#include "model/checked_arithmetic.h"
#include "model/local_day.h"
#include "model/record_store.h"

namespace kivo {

namespace {

using Texts = std::pair<QString, QString>;  // title, address

// The texts the rule stores when it accepts, or nothing.
std::optional<Texts> matchedTexts(const Filter& rule, const Activity& activity) {
    CaptureData capture;
    capture.name = activity.appName;
    capture.bundleId = activity.appBundleId;
    capture.title = activity.title;
    capture.url = activity.url;
    if (!matchFilter(capture, rule)) {
        return std::nullopt;
    }
    return Texts{capture.title.value_or(QString()), capture.url.value_or(QString())};
}

}  // namespace

RulePreview previewRule(RecordStore& store, const Filter& rule, QUuid unassignedFilterId,
                        QDate first, QDate last) {
    RulePreview preview;
    if (last < first || rule.isDeleted || rule.id == unassignedFilterId) {
        return preview;
    }
    const DayRange range = localDays(first, last);
    // Only the rule's own application can match, so the store narrows by it first.
    const auto candidates = store.fetch<Activity>(
        {"isDeleted = 0 AND filterId = ? AND appBundleId = ? AND startAt >= ? AND startAt < ?",
         {unassignedFilterId, rule.appBundleId, range.begin, range.end},
         "startAt"});
    QHash<Texts, std::optional<Texts>> matchOf;
    std::map<QDate, RulePreviewDay> days;
    for (const Activity& activity : candidates) {
        const Texts texts{activity.title, activity.url};
        auto found = matchOf.constFind(texts);
        if (found == matchOf.constEnd()) {
            found = matchOf.insert(texts, matchedTexts(rule, activity));
        }
        if (!found->has_value()) {
            continue;
        }
        Activity after = activity;
        after.projectId = rule.projectId;
        after.filterId = rule.id;
        after.appName = rule.appName;
        after.title = (*found)->first;
        after.url = (*found)->second;
        preview.moves.push_back({activity, std::move(after)});

        const QDate date = localDateOf(activity.startAt);
        RulePreviewDay& day = days[date];
        day.date = date;
        day.activityCount += 1;
        day.duration = checkedAdd(day.duration, activity.duration);
        preview.durationTotal = checkedAdd(preview.durationTotal, activity.duration);
    }
    for (const auto& [date, day] : days) {
        preview.days.push_back(day);
    }
    return preview;
}

std::size_t applyRulePreview(RecordStore& store, const RulePreview& preview, Instant now) {
    std::vector<QUuid> ids;
    ids.reserve(preview.moves.size());
    for (const ActivityChange& move : preview.moves) {
        ids.push_back(move.before.id);
    }
    QHash<QUuid, const Activity*> stored;
    const auto live = liveActivitiesById(store, ids);
    for (const Activity& activity : live) {
        stored.insert(activity.id, &activity);
    }
    std::vector<ActivityChange> unchanged;
    for (const ActivityChange& move : preview.moves) {
        const Activity* current = stored.value(move.before.id);
        if (current != nullptr && *current == move.before) {
            unchanged.push_back(move);
        }
    }
    applyActivityChanges(store, unchanged, now);
    return unchanged.size();
}

}  // namespace kivo
