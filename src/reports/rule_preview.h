#pragma once

#include <QDate>
#include <QUuid>
#include <cstdint>
#include <vector>

#include "model/activity_moves.h"
#include "model/instant.h"
#include "model/records.h"

namespace kivo {

class RecordStore;

struct RulePreviewDay {
    QDate date;
    int activityCount = 0;
    std::int64_t duration = 0;
};

// What a tag's rule would take over from the unassigned time of a range: the exact moves, and
// per day how many activities and how many seconds.
struct RulePreview {
    std::vector<ActivityChange> moves;
    std::vector<RulePreviewDay> days;  // earliest first, only days with moves
    std::int64_t durationTotal = 0;
};

// Tests every live unassigned activity that started within the local days `first` to `last`
// against `rule` exactly as recording does, on the stored title and address. An accepted one
// moves to the rule's project and tag with the rule's application name and the texts the rule
// tested (cut down when it cuts), as recording would have stored it. Each distinct title and
// address is tested once.
RulePreview previewRule(RecordStore& store, const Filter& rule, QUuid unassignedFilterId,
                        QDate first, QDate last);

// Moves what the preview showed, in one transaction, leaving out activities that changed since
// (assigned, deleted or edited elsewhere). Returns how many moved.
std::size_t applyRulePreview(RecordStore& store, const RulePreview& preview, Instant now);

}  // namespace kivo
