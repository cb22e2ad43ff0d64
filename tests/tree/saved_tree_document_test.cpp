#include "tree/saved_tree_document.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>

#include "tree/tree_harness.h"

namespace kivo {
namespace {

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
    EXPECT_TRUE(document.contains("\"duration\":9007199254740993"));
    const QJsonObject project = QJsonDocument::fromJson(document).array()[0].toObject();
    EXPECT_EQ(project.keys(),
              (QStringList{u"duration"_qs, u"filters"_qs, u"id"_qs, u"isArchived"_qs,
                           u"isExpanded"_qs, u"isToggled"_qs, u"name"_qs}));
    EXPECT_EQ(project[u"filters"][0].toObject().keys(),
              (QStringList{u"duration"_qs, u"id"_qs, u"isToggled"_qs, u"name"_qs}));
    EXPECT_EQ(decodeSavedTree(document), tree);

    const QByteArray upper = "0F8FAD5B-D9CB-469F-A165-70867728950E";
    ASSERT_TRUE(document.contains(QByteArray("\"id\":\"" + upper + '"')));
    EXPECT_EQ(decodeSavedTree(document.replace(upper, upper.toLower())), tree);
}

QByteArray changed(const std::function<void(QJsonObject& project, QJsonObject& filter)>& change) {
    QJsonArray projects = QJsonDocument::fromJson(encodeSavedTree(sampleTree())).array();
    QJsonObject project = projects[0].toObject();
    QJsonArray filters = project[u"filters"].toArray();
    QJsonObject filter = filters[1].toObject();
    change(project, filter);
    filters[1] = filter;
    if (project.value(u"filters").isArray()) {
        project[u"filters"] = filters;
    }
    projects[0] = project;
    return QJsonDocument(projects).toJson(QJsonDocument::Compact);
}

TEST(SavedTreeDocument, AnyMissingKeyOrMistypedValueRejectsTheWholeDocument) {
    for (const char16_t* key :
         {u"id", u"name", u"duration", u"isExpanded", u"isArchived", u"isToggled", u"filters"}) {
        EXPECT_FALSE(decodeSavedTree(changed([&](auto& p, auto&) { p.remove(key); })));
    }
    for (const char16_t* key : {u"id", u"name", u"duration", u"isToggled"}) {
        EXPECT_FALSE(decodeSavedTree(changed([&](auto&, auto& f) { f.remove(key); })));
    }
    const std::vector<std::pair<const char16_t*, QJsonValue>> mistyped{
        {u"id", 7},
        {u"id", u"not-a-uuid-not-a-uuid-not-a-uuid-123"_qs},
        {u"name", 1},
        {u"id", u"{0F8FAD5B-D9CB-469F-A165-70867728950E}"_qs},
        {u"duration", 1.5},
        {u"duration", u"12"_qs},
        {u"duration", 1e300},
        {u"isToggled", 1},
        {u"filters", QJsonObject()}};
    for (const auto& [key, value] : mistyped) {
        EXPECT_FALSE(decodeSavedTree(changed([&](auto& p, auto&) { p[key] = value; })))
            << QString::fromUtf16(key).toStdString();
    }
    EXPECT_FALSE(decodeSavedTree(changed([](auto&, auto& f) { f[u"isToggled"] = u"yes"_qs; })));
    for (const char* document : {"{}", "[1]", "[{]", "", "\xff\xfe"}) {
        EXPECT_FALSE(decodeSavedTree(document)) << document;
    }
}

TEST(SavedTreeLoading, SavedLayoutIsTakenAsItStandsAndAnUnusableOneIsRebuilt) {
    test::ScopedTimeZone zone("Europe/Berlin");
    test::TreeHarness h(QDate(2026, 3, 10));
    const auto work = h.records.project(u"Work"_qs);
    const auto code = h.records.filter(work, u"Code"_qs);
    h.records.tagUsage(code, 90, test::localMoment(h.today, 9));
    h.records.save();

    // Names, flags and a project the store does not know survive: no reconciliation.
    const std::vector<ProjectTreeItem> saved{
        {QUuid::createUuid(), u"Gone"_qs, 5, false, false, false, {}},
        {work.id, u"Old"_qs, 7, false, false, false, {{code.id, u"C"_qs, 3, false}}}};
    const auto loaded = [&h](const QVariant& value) {
        QSettings(h.home.settingsPath(), QSettings::NativeFormat)
            .setValue(u"savedProjectTree"_qs, value);
        const auto settings = h.home.openSettings();
        ProjectTreeViewModel tree(*h.store, *settings, h.clock);
        tree.loadSavedTree();
        tree.recomputeTreeDurations(h.today, h.today);
        return std::pair(tree.projects(), tree.durationTotal());
    };
    const auto [restored, restoredTotal] = loaded(encodeSavedTree(saved));
    ASSERT_EQ(restored.size(), 2u);
    EXPECT_EQ(restored[1].name, u"Old");
    EXPECT_FALSE(restored[1].filters[0].isToggled);
    EXPECT_EQ(restored[1].duration, 90);
    EXPECT_EQ(restoredTotal, 90);

    for (const QVariant& unusable : {QVariant(QByteArray("[]")), QVariant(QByteArray("[{}]")),
                                     QVariant(QString::fromLatin1(encodeSavedTree(saved)))}) {
        const auto [rebuilt, total] = loaded(unusable);
        ASSERT_EQ(rebuilt.size(), 1u);
        EXPECT_EQ(rebuilt[0].name, u"Work");
        EXPECT_TRUE(rebuilt[0].filters[0].isToggled);
        EXPECT_EQ(total, 90);
    }
}

}  // namespace
}  // namespace kivo
