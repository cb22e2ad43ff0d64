#include "tree/saved_tree_document.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSettings>

#include "tree/tree_harness.h"

namespace kivo {
namespace {

using test::ScopedTimeZone;
using test::TreeHarness;

const QUuid projectId = QUuid::fromString(u"0f8fad5b-d9cb-469f-a165-70867728950e");
const QUuid filterId = QUuid::fromString(u"7c9e6679-7425-40de-944b-e07fc1f90ae7");

std::vector<ProjectTreeItem> sampleTree() {
    ProjectTreeItem project{
        projectId, QStringLiteral("Thesis \"draft\" ✍"), 9'007'199'254'740'993, false, true, false,
        {}};
    project.filters.push_back({filterId, QStringLiteral("Writing"), 42, true});
    project.filters.push_back({QUuid::createUuid(), QString(), 0, false});
    return {project, {QUuid::createUuid(), QStringLiteral("Empty"), 0, true, false, true, {}}};
}

TEST(SavedTreeDocument, IsCompactJsonWithUpperCaseIdsAndRoundTrips) {
    const auto tree = sampleTree();
    const QByteArray document = encodeSavedTree(tree);
    EXPECT_FALSE(document.contains('\n'));
    EXPECT_FALSE(document.contains(": "));
    EXPECT_TRUE(document.contains("\"id\":\"0F8FAD5B-D9CB-469F-A165-70867728950E\""));
    EXPECT_TRUE(document.contains("\"duration\":9007199254740993"));
    EXPECT_FALSE(document.contains("{0F8F"));

    const QJsonArray array = QJsonDocument::fromJson(document).array();
    ASSERT_EQ(array.size(), 2);
    const QJsonObject project = array[0].toObject();
    EXPECT_EQ(project.keys(),
              (QStringList{u"duration"_qs, u"filters"_qs, u"id"_qs, u"isArchived"_qs,
                           u"isExpanded"_qs, u"isToggled"_qs, u"name"_qs}));
    const QJsonObject filter = project[u"filters"].toArray()[0].toObject();
    EXPECT_EQ(filter.keys(), (QStringList{u"duration"_qs, u"id"_qs, u"isToggled"_qs, u"name"_qs}));
    EXPECT_EQ(filter[u"name"].toString(), QStringLiteral("Writing"));

    EXPECT_EQ(decodeSavedTree(document), tree);
}

TEST(SavedTreeDocument, AcceptsLowerCaseIdsAndUnknownKeys) {
    const QByteArray document =
        R"([{"id":"0f8fad5b-d9cb-469f-a165-70867728950e","name":"P","duration":1,"isExpanded":true,)"
        R"("isArchived":false,"isToggled":true,"colour":"red","filters":[]}])";
    const auto decoded = decodeSavedTree(document);
    ASSERT_TRUE(decoded.has_value());
    ASSERT_EQ(decoded->size(), 1u);
    EXPECT_EQ(decoded->front().id, projectId);
}

QByteArray withProject(const std::function<void(QJsonObject&)>& change) {
    QJsonArray array = QJsonDocument::fromJson(encodeSavedTree(sampleTree())).array();
    QJsonObject project = array[0].toObject();
    change(project);
    array[0] = project;
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QByteArray withFilter(const std::function<void(QJsonObject&)>& change) {
    return withProject([&](QJsonObject& project) {
        QJsonArray filters = project[u"filters"].toArray();
        QJsonObject filter = filters[1].toObject();
        change(filter);
        filters[1] = filter;
        project[u"filters"] = filters;
    });
}

TEST(SavedTreeDocument, AnyMissingKeyRejectsTheWholeDocument) {
    for (const char16_t* key :
         {u"id", u"name", u"duration", u"isExpanded", u"isArchived", u"isToggled", u"filters"}) {
        EXPECT_FALSE(decodeSavedTree(withProject([&](QJsonObject& o) { o.remove(key); })))
            << "project without " << QString::fromUtf16(key).toStdString();
    }
    for (const char16_t* key : {u"id", u"name", u"duration", u"isToggled"}) {
        EXPECT_FALSE(decodeSavedTree(withFilter([&](QJsonObject& o) { o.remove(key); })))
            << "filter without " << QString::fromUtf16(key).toStdString();
    }
}

TEST(SavedTreeDocument, MistypedValuesRejectTheWholeDocument) {
    const std::vector<std::pair<const char16_t*, QJsonValue>> projectValues{
        {u"id", 7},
        {u"id", u"not-a-uuid-not-a-uuid-not-a-uuid-123"_qs},
        {u"id", u"{0F8FAD5B-D9CB-469F-A165-70867728950E}"_qs},
        {u"name", QJsonValue::Null},
        {u"duration", 1.5},
        {u"duration", u"12"_qs},
        {u"duration", 1e300},
        {u"isExpanded", 1},
        {u"filters", QJsonObject()},
    };
    for (const auto& [key, value] : projectValues) {
        EXPECT_FALSE(decodeSavedTree(withProject([&](QJsonObject& o) { o[key] = value; })))
            << QString::fromUtf16(key).toStdString();
    }
    EXPECT_FALSE(decodeSavedTree(withFilter([](QJsonObject& o) { o[u"isToggled"] = u"yes"_qs; })));
    EXPECT_FALSE(
        decodeSavedTree(withProject([](QJsonObject& o) { o[u"filters"] = QJsonArray{1}; })));
    for (const QByteArray& document : {QByteArray("{}"), QByteArray("[1]"), QByteArray("[{]"),
                                       QByteArray(""), QByteArray("\xff\xfe")}) {
        EXPECT_FALSE(decodeSavedTree(document)) << document.toStdString();
    }
}

class SavedTreeLoading : public testing::Test {
protected:
    SavedTreeLoading() {
        work = h.records.project(QStringLiteral("Work"));
        code = h.records.filter(work, QStringLiteral("Code"));
        h.records.tagUsage(code, 90, test::localMoment(h.today, 9));
        h.records.save();
    }

    ScopedTimeZone zone{"Europe/Berlin"};
    TreeHarness h{QDate(2026, 3, 10)};
    Project work;
    Filter code;
};

TEST_F(SavedTreeLoading, SavedLayoutIsTakenAsItStands) {
    // Names, flags and a project the store does not know survive; no reconciliation.
    std::vector<ProjectTreeItem> saved{
        {QUuid::createUuid(), QStringLiteral("Gone"), 5, false, false, false, {}},
        {work.id,
         QStringLiteral("Old name"),
         7,
         false,
         true,
         false,
         {{code.id, u"C"_qs, 3, false}}}};
    h.settings->setSavedProjectTree(encodeSavedTree(saved));

    h.tree.loadSavedTree();
    EXPECT_EQ(h.tree.projects(), saved);
    EXPECT_TRUE(h.tree.enableFilters().empty());
    EXPECT_EQ(h.tree.projectNames().value(work.id), QStringLiteral("Old name"));

    h.tree.setIsShowArchivedProject(true);
    h.tree.recomputeTreeDurations(h.today, h.today);
    EXPECT_EQ(h.tree.projects()[1].duration, 90);
    EXPECT_EQ(h.tree.projects()[0].duration, 0);
    EXPECT_EQ(h.tree.durationTotal(), 90);
}

TEST_F(SavedTreeLoading, UnusableSavedValuesRebuildFromTheRecords) {
    const auto rebuiltFrom = [this](const QVariant& value) {
        {
            QSettings raw(h.home.settingsPath(), QSettings::NativeFormat);
            raw.setValue(QStringLiteral("savedProjectTree"), value);
        }
        const auto settings = h.home.openSettings();
        ProjectTreeViewModel tree(*h.store, *settings, h.clock);
        tree.loadSavedTree();
        return tree.projects().size() == 1 && tree.projects()[0].name == u"Work" &&
               tree.projects()[0].duration == 90 && tree.durationTotal() == 90;
    };
    EXPECT_TRUE(rebuiltFrom(QByteArray("[]")));
    EXPECT_TRUE(rebuiltFrom(QByteArray("[{\"id\":1}]")));
    EXPECT_TRUE(rebuiltFrom(QString::fromLatin1(encodeSavedTree(sampleTree()))));
    EXPECT_FALSE(rebuiltFrom(encodeSavedTree(sampleTree())));
}

}  // namespace
}  // namespace kivo
