#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>
#include <limits>

#include "tree/duration_label.h"
#include "tree/saved_tree_document.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using Ids = std::vector<QUuid>;
using test::localMoment;

TEST(ProjectTree, SelectionCountsTheFiltersItReachesAmongTheShownProjects) {
    test::TreeHarness h("Europe/Berlin", QDate(2026, 3, 10));
    const auto& s = h.s;
    h.buildTree();  // as on a first start: everything expanded and counted
    const Ids live{s.code.id, s.mail.id, s.cook.id};
    EXPECT_EQ(h.tree.enableFilters(), live);
    EXPECT_EQ(h.tree.tagNames().value(s.mail.id) + h.tree.projectNames().value(s.hobby.id),
              u"MailHobby");

    // A selection; what counts while archived projects are hidden; what counts while shown.
    const std::vector<std::tuple<Ids, Ids, Ids>> cases{
        {{h.tree.roots().front().id}, live, {s.code.id, s.mail.id, s.guitar.id, s.cook.id}},
        {{s.guitar.id}, {}, {s.guitar.id}},
        {{s.cook.id, s.work.id}, live, live},
        {{}, {}, {}},
        {{QUuid::createUuid()}, {}, {}}};
    for (const bool shown : {false, true}) {
        h.tree.setIsShowArchivedProject(shown);
        for (const auto& [selection, whileHidden, whileShown] : cases) {
            h.tree.applySelection(selection);
            EXPECT_EQ(h.tree.enableFilters(), shown ? whileShown : whileHidden) << shown;
            EXPECT_EQ(h.tree.tagNames().size(), h.tree.enableFilters().size());
            EXPECT_EQ(h.tree.projectNames().size(), 3);
        }
        EXPECT_EQ(h.settings->savedProjectTree().has_value(), shown);  // selections are not saved
    }
    for (const auto& project : h.tree.projects()) {
        EXPECT_TRUE(project.isExpanded && project.isToggled);  // selections leave them alone
    }
    EXPECT_EQ(decodeSavedTree(h.settings->savedProjectTree().value()), h.tree.projects());
}

TEST(ProjectTree, DurationsCountLiveFiltersWithinTheLocalDays) {
    test::TreeHarness h("Europe/Berlin", QDate(2026, 3, 29));  // clocks go forward: 23 hours
    auto& r = h.records;
    const auto old = r.filter(h.s.work, u"Old"_qs);
    const auto gone = r.project(u"Gone"_qs);
    const auto orphan = r.filter(gone, u"Orphan"_qs);
    r.remove(old);
    r.remove(gone);
    const QDate yesterday = h.today.addDays(-1);
    r.tagUsage(h.s.code, 100, localMoment(h.today, 0));
    r.tagUsage(h.s.code, 20, localMoment(h.today, 23, 59));
    r.tagUsage(h.s.code, 1000, localMoment(yesterday, 23, 59));
    r.tagUsage(h.s.code, 5000, localMoment(h.today.addDays(1), 0));
    r.tagUsage(old, 7, localMoment(h.today, 9));
    r.tagUsage(orphan, 9, localMoment(h.today, 9));
    r.tagUsage(h.s.guitar, 600, localMoment(h.today, 9));
    h.buildTree();  // fills in the clock's day

    const auto& projects = h.tree.projects();
    ASSERT_EQ(projects.size(), 4u);
    ASSERT_EQ(projects[0].filters.size(), 2u);  // no node for the deleted filter
    EXPECT_EQ(projects[0].duration, 120);
    EXPECT_EQ(projects[1].duration, 600);
    EXPECT_TRUE(projects[3].filters.empty());  // the deleted project keeps an empty node
    EXPECT_EQ(h.tree.durationTotal(), 120);    // the archived project is hidden

    h.tree.setIsShowArchivedProject(true);
    h.tree.recomputeTreeDurations(yesterday, h.today);
    EXPECT_EQ(h.tree.projects()[0].filters[0].duration, 1120);
    EXPECT_EQ(h.tree.durationTotal(), 1720);
}

TEST(DurationLabel, ShowsHoursAndMinutesWithBlanksAround) {
    const std::vector<std::pair<std::int64_t, const char*>> cases{
        {0, ""},         {1, " <1m "},      {59, " <1m "},     {60, " 1m "},
        {3599, " 59m "}, {3600, " 1h 0m "}, {3661, " 1h 1m "}, {90061, " 25h 1m "}};
    for (const auto& [seconds, label] : cases) {
        EXPECT_EQ(formatDurationLabel(seconds), QString::fromUtf8(label)) << seconds;
    }
}

const QUuid projectId = QUuid::fromString(u"0f8fad5b-d9cb-469f-a165-70867728950e");

std::vector<ProjectTreeItem> sampleTree() {
    ProjectTreeItem project{
        projectId, u"Thesis \"draft\" ✍"_qs, 9'007'199'254'740'993, false, true, false, {}};
    project.filters = {{QUuid::createUuid(), u"Writing"_qs, 42, true},
                       {QUuid::createUuid(), QString(), 0, false}};
    return {project, {QUuid::createUuid(), u"Empty"_qs, 0, true, false, true, {}}};
}

TEST(SavedTreeDocument, IsCompactJsonWithUpperCaseIdsAndRoundTrips) {
    const auto tree = sampleTree();
    QByteArray document = encodeSavedTree(tree);
    EXPECT_FALSE(document.contains('\n') || document.contains(": "));
    const QJsonObject project = QJsonDocument::fromJson(document).array()[0].toObject();
    EXPECT_EQ(project.keys().join(u','),
              u"duration,filters,id,isArchived,isExpanded,isToggled,name");
    EXPECT_EQ(project[u"filters"][0].toObject().keys().join(u','), u"duration,id,isToggled,name");
    EXPECT_EQ(decodeSavedTree(document), tree);

    const QByteArray upper = "0F8FAD5B-D9CB-469F-A165-70867728950E";
    ASSERT_TRUE(document.contains(QByteArray("\"id\":\"" + upper + '"')));
    EXPECT_EQ(decodeSavedTree(document.replace(upper, upper.toLower())), tree);
}

// The sample document with one change to its first project, or with "filter." to that project's
// second filter: "key" removes the key, "key=json" sets its value.
QByteArray changed(const QString& change) {
    QJsonArray projects = QJsonDocument::fromJson(encodeSavedTree(sampleTree())).array();
    QJsonObject project = projects[0].toObject(), filter = project[u"filters"][1].toObject();
    const QString key = change.section(u'=', 0, 0), value = change.section(u'=', 1);
    QJsonObject& target = key.startsWith(u"filter.") ? filter : project;
    target.insert(key.section(u'.', -1),
                  value.isEmpty() ? QJsonValue(QJsonValue::Undefined)
                                  : QJsonDocument::fromJson((u'[' + value + u']').toUtf8())[0]);
    if (&target == &filter) {
        project[u"filters"] = QJsonArray{project[u"filters"][0], filter};
    }
    projects[0] = project;
    return QJsonDocument(projects).toJson(QJsonDocument::Compact);
}

TEST(SavedTreeDocument, AnyMissingKeyOrMistypedValueRejectsTheWholeDocument) {
    EXPECT_TRUE(decodeSavedTree(changed(u"filter.name=\"Renamed\""_qs)));
    // Keys removed, then keys set to values of the wrong kind.
    const QStringList changes =
        uR"(id name duration isExpanded isArchived isToggled filters
        filter.id filter.name filter.duration filter.isToggled id=7 name=1 isToggled=1 filters={}
        id="not-a-uuid-not-a-uuid-not-a-uuid-123" id="{0F8FAD5B-D9CB-469F-A165-70867728950E}"
        duration=1.5 duration="12" duration=1e300 filter.isToggled="yes")"_qs.simplified()
            .split(u' ');
    for (const QString& change : changes) {
        EXPECT_FALSE(decodeSavedTree(changed(change))) << change.toStdString();
    }
    for (const char* document : {"{}", "[1]", "[{]", "", "\xff\xfe"}) {
        EXPECT_FALSE(decodeSavedTree(document)) << document;
    }
}

TEST(SavedTreeDocument, DurationsAreExactIntegersAndAnIdNamedTwiceRejectsTheDocument) {
    auto tree = sampleTree();
    tree[0].filters[0].duration = std::numeric_limits<std::int64_t>::max();
    tree[0].filters[1].duration = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(decodeSavedTree(encodeSavedTree(tree)), tree);
    EXPECT_EQ(decodeSavedTree(changed(u"filter.duration=1.2e3"_qs))->at(0).filters[1].duration,
              1200);
    EXPECT_FALSE(decodeSavedTree(changed(u"duration=9223372036854775808"_qs)));

    auto filterTwice = tree;
    filterTwice[0].filters[1].id = tree[0].filters[0].id;
    auto filterInTwoProjects = tree;
    filterInTwoProjects[1].filters.push_back(tree[0].filters[0]);
    auto projectTwice = tree;
    projectTwice[1].id = tree[0].id;
    for (const auto& twice : {filterTwice, filterInTwoProjects, projectTwice}) {
        EXPECT_FALSE(decodeSavedTree(encodeSavedTree(twice)));
    }
}

TEST(SavedTreeLoading, SavedLayoutIsTakenAsItStandsAndAnUnusableOneIsRebuilt) {
    test::TreeHarness h("UTC", QDate(2026, 3, 10));
    h.records.tagUsage(h.s.code, 90, localMoment(h.today, 9));
    h.records.save();
    // Names, flags and a project the store does not know survive: no reconciliation.
    const QByteArray saved = encodeSavedTree(
        {{QUuid::createUuid(), u"Gone"_qs, 5, false, false, false, {}},
         {h.s.work.id, u"Old"_qs, 7, false, false, false, {{h.s.code.id, u"C"_qs, 3, false}}}});
    const std::vector<QVariant> values{saved, QByteArray("[]"), QByteArray("[{}]"),
                                       QString::fromLatin1(saved)};  // only the first is usable
    for (std::size_t i = 0; i < values.size(); ++i) {
        QSettings(h.home.settingsPath(), QSettings::NativeFormat)
            .setValue(u"savedProjectTree"_qs, values[i]);
        const auto settings = h.home.openSettings();
        ProjectTreeViewModel tree(*h.store, *settings, h.clock);
        tree.loadSavedTree();
        tree.recomputeTreeDurations(h.today, h.today);
        ASSERT_EQ(tree.projects().size(), i == 0 ? 2u : 3u);
        const auto& work = tree.projects()[i == 0 ? 1 : 0];
        EXPECT_EQ(work.name, i == 0 ? u"Old"_qs : u"Work"_qs);
        EXPECT_EQ(work.filters[0].isToggled, i != 0);
        EXPECT_EQ(std::pair(work.duration, tree.durationTotal()), std::pair(90l, 90l)) << i;
    }
}

}  // namespace
}  // namespace kivo
