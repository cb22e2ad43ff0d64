// The sidebar tree and the report tables as item models, checked by Qt's model tester through
// every change they go through.
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QMimeData>

#include "gui/project_tree_item_model.h"
#include "gui/report_table_model.h"
#include "tree/saved_tree_document.h"
#include "tree/tree_harness.h"

namespace kivo {
namespace {

using Kind = ProjectTreeItemModel::Kind;

QStringList childNames(const QAbstractItemModel& model, const QModelIndex& parent) {
    QStringList names;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        names.append(model.index(row, 0, parent).data().toString());
    }
    return names;
}

struct TreeModelTest : ::testing::Test {
    TreeModelTest() {
        h.buildTree();
        h.records.tagUsage(h.s.code, 3600, h.clock.now());
        h.records.tagUsage(h.s.mail, 125, h.clock.now());
        h.records.save();
        h.tree.recomputeTreeDurations(h.today, h.today);
    }

    QStringList savedProjectNames() const {
        QStringList names;
        const auto saved = decodeSavedTree(h.settings->savedProjectTree().value_or(QByteArray()));
        for (const auto& project : saved.value_or(std::vector<ProjectTreeItem>{})) {
            names.append(project.name);
        }
        return names;
    }

    test::TreeHarness h{"Europe/Berlin", QDate(2026, 3, 11)};
    ProjectTreeItemModel model{h.tree};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(TreeModelTest, RootProjectsAndTagsWithDurations) {
    const QModelIndex root = model.rootIndex();
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.kindOf(root), Kind::root);
    EXPECT_EQ(root.siblingAtColumn(1).data().toString(), QStringLiteral("1h 2m"));
    // The archived Hobby stays out while archived projects are hidden.
    EXPECT_EQ(childNames(model, root), (QStringList{u"Work"_qs, u"Home"_qs}));
    const QModelIndex work = model.projectIndex(0);
    EXPECT_EQ(model.idOf(work), h.s.work.id);
    EXPECT_EQ(childNames(model, work), (QStringList{u"Code"_qs, u"Mail"_qs}));
    EXPECT_EQ(model.index(1, 1, work).data().toString(), QStringLiteral("2m"));
    EXPECT_EQ(model.idOf(model.index(1, 0, work)), h.s.mail.id);

    h.tree.setIsShowArchivedProject(true);
    EXPECT_EQ(childNames(model, root), (QStringList{u"Work"_qs, u"Hobby"_qs, u"Home"_qs}));
    EXPECT_TRUE(model.projectIndex(1).data(ProjectTreeItemModel::isArchivedRole).toBool());

    // A selection changes flags only: the rows stay, their data changes.
    h.tree.applySelection({h.s.cook.id});
    EXPECT_EQ(childNames(model, root), (QStringList{u"Work"_qs, u"Hobby"_qs, u"Home"_qs}));
}

TEST_F(TreeModelTest, DraggingReordersProjectsAndTagsWithinTheirProjectAndSaves) {
    // Home goes before Work; Hobby, hidden, keeps its place after Work in the full list.
    std::unique_ptr<QMimeData> home(model.mimeData({model.projectIndex(1)}));
    ASSERT_TRUE(home);
    ASSERT_TRUE(model.canDropMimeData(home.get(), Qt::MoveAction, 0, 0, model.rootIndex()));
    ASSERT_TRUE(model.dropMimeData(home.get(), Qt::MoveAction, 0, 0, model.rootIndex()));
    EXPECT_EQ(childNames(model, model.rootIndex()), (QStringList{u"Home"_qs, u"Work"_qs}));
    EXPECT_EQ(savedProjectNames(), (QStringList{u"Home"_qs, u"Work"_qs, u"Hobby"_qs}));

    // Mail goes before Code, within Work.
    const QModelIndex work = model.projectIndex(1);
    std::unique_ptr<QMimeData> mail(model.mimeData({model.index(1, 0, work)}));
    ASSERT_TRUE(model.dropMimeData(mail.get(), Qt::MoveAction, 0, 0, work));
    EXPECT_EQ(childNames(model, model.projectIndex(1)), (QStringList{u"Mail"_qs, u"Code"_qs}));

    // A tag never changes its project; the root, rows of mixed kinds and copies never move.
    std::unique_ptr<QMimeData> code(model.mimeData({model.index(1, 0, model.projectIndex(1))}));
    EXPECT_FALSE(model.canDropMimeData(code.get(), Qt::MoveAction, 0, 0, model.projectIndex(0)));
    EXPECT_FALSE(model.dropMimeData(code.get(), Qt::MoveAction, -1, 0, model.rootIndex()));
    EXPECT_FALSE(model.canDropMimeData(code.get(), Qt::CopyAction, 0, 0, model.projectIndex(1)));
    EXPECT_EQ(model.mimeData({model.rootIndex()}), nullptr);
    EXPECT_EQ(model.mimeData({model.projectIndex(0), model.index(0, 0, model.projectIndex(1))}),
              nullptr);
    EXPECT_EQ(childNames(model, model.projectIndex(0)), (QStringList{u"Cook"_qs}));
    EXPECT_FALSE(model.flags(model.rootIndex()) & Qt::ItemIsDragEnabled);
}

TEST(ReportTableModelTest, ColumnsTextsAndSorting) {
    ReportTableModel model(ReportKind::tags);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setRows({{QUuid::createUuid(), u"f1"_qs, u"Code"_qs, u"Work"_qs, 5400},
                   {QUuid::createUuid(), u"f2"_qs, u"Cook"_qs, u"Home"_qs, 30},
                   {QUuid::createUuid(), u"f3"_qs, u"Build"_qs, u"Work"_qs, 1800}},
                  7230);
    ASSERT_EQ(model.columnCount(), 4);
    const auto row = [&](int r) {
        QStringList texts;
        for (int column = 0; column < model.columnCount(); ++column) {
            texts.append(model.index(r, column).data().toString());
        }
        return texts;
    };
    EXPECT_EQ(row(0), (QStringList{u"Code"_qs, u"Work"_qs, u"1h 30m"_qs, u"74%"_qs}));
    EXPECT_EQ(row(1), (QStringList{u"Cook"_qs, u"Home"_qs, u"<1m"_qs, u"<1%"_qs}));
    EXPECT_EQ(model.index(2, 0).data(ReportTableModel::keyRole).toString(), u"f3"_qs);

    const struct {
        int column;
        Qt::SortOrder order;
        QStringList names;
    } sorts[] = {{0, Qt::AscendingOrder, {u"Build"_qs, u"Code"_qs, u"Cook"_qs}},
                 {1, Qt::DescendingOrder, {u"Build"_qs, u"Code"_qs, u"Cook"_qs}},
                 {2, Qt::AscendingOrder, {u"Cook"_qs, u"Build"_qs, u"Code"_qs}},
                 {3, Qt::DescendingOrder, {u"Code"_qs, u"Build"_qs, u"Cook"_qs}}};
    for (const auto& sort : sorts) {
        SCOPED_TRACE(sort.column);
        model.sort(sort.column, sort.order);
        EXPECT_EQ(childNames(model, {}), sort.names);
    }

    // Compact columns fold the project into the name and keep the sort by time.
    model.setIsCompactColumns(true);
    EXPECT_EQ(model.columnCount(), 3);
    EXPECT_EQ(model.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Time"));
    EXPECT_EQ(row(0), (QStringList{u"Code · Work"_qs, u"1h 30m"_qs, u"74%"_qs}));
}

TEST(ReportTableModelTest, WebsitesNameTheEmptyDomainAndApplicationsShowIcons) {
    ReportTableModel websites(ReportKind::websites);
    QAbstractItemModelTester tester(&websites,
                                    QAbstractItemModelTester::FailureReportingMode::Fatal);
    websites.setRows({{QUuid::createUuid(), QString(), QString(), QString(), 60},
                      {QUuid::createUuid(), u"kde.org"_qs, u"kde.org"_qs, QString(), 60}},
                     120);
    EXPECT_EQ(childNames(websites, {}), (QStringList{u"(no website)"_qs, u"kde.org"_qs}));
    EXPECT_EQ(websites.index(0, 0).data(ReportTableModel::keyRole).toString(), QString());
    EXPECT_FALSE(websites.index(0, 0).data(Qt::DecorationRole).isValid());

    ReportTableModel applications(ReportKind::applications);
    QHash<QString, QIcon> icons;
    QPixmap red(16, 16);
    red.fill(Qt::red);
    icons.insert(u"known"_qs, QIcon(red));
    applications.setIcons(&icons);
    applications.setRows({{QUuid::createUuid(), u"known"_qs, u"Known"_qs, QString(), 60},
                          {QUuid::createUuid(), u"other"_qs, u"Other"_qs, QString(), 60}},
                         120);
    const auto iconOf = [&](int row) {
        return applications.index(row, 0).data(Qt::DecorationRole).value<QIcon>();
    };
    EXPECT_EQ(iconOf(0).pixmap(16).toImage().pixelColor(8, 8), QColor(Qt::red));
    EXPECT_FALSE(iconOf(1).isNull());  // the unknown-application glyph
    EXPECT_EQ(applications.index(1, 2).data().toString(), QStringLiteral("50%"));
}

}  // namespace
}  // namespace kivo
