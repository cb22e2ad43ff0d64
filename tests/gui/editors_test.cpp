// The project and filter editors, the tree's delete and duplicate, and the settings window, over
// the main window's private store.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "capture/capture_timer.h"
#include "gui/autostart_entry.h"
#include "gui/editor_windows.h"
#include "gui/filter_edit_view.h"
#include "gui/project_edit_view.h"
#include "gui/report_table_model.h"
#include "gui/report_view.h"
#include "gui/settings_view.h"
#include "gui/window_harness.h"

namespace kivo {
namespace {

using test::WindowHarness;

QStringList tableNames(const ReportView& view) {
    QStringList names;
    const auto& model = view.tableModel();
    for (int row = 0; row < model.rowCount(); ++row) {
        names.append(model.index(row, 0).data().toString());
    }
    return names;
}

const ProjectTreeItem* projectNode(MainWindow& window, const QUuid& id) {
    for (const auto& project : window.treeModel().projects()) {
        if (project.id == id) {
            return &project;
        }
    }
    return nullptr;
}

QStringList filterNames(const ProjectTreeItem& project) {
    QStringList names;
    for (const auto& filter : project.filters) {
        names.append(filter.name);
    }
    return names;
}

TEST(FilterEditViewTest, SaveFollowsTheValidityOfEachExpressionWhileItsSwitchIsOn) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    FilterEditView* editor = window.editors().openFilterEditor(h.s.work.id, std::nullopt);
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->windowTitle(), QStringLiteral("New Filter"));
    EXPECT_FALSE(editor->saveButton().isEnabled());  // no name, no application
    editor->tagNameField().setText(QStringLiteral("Notes"));
    EXPECT_FALSE(editor->saveButton().isEnabled());
    editor->selectApplication(test::editorId);
    EXPECT_TRUE(editor->saveButton().isEnabled());

    struct Case {
        const char* name;
        QLineEdit& field;
        QCheckBox& toggle;
    };
    const Case cases[] = {
        {"title", editor->titleField(), editor->titleRegexSwitch()},
        {"url", editor->urlField(), editor->urlRegexSwitch()},
        {"title cutting", editor->preprocessTitleField(), editor->preprocessTitleSwitch()},
        {"url cutting", editor->preprocessUrlField(), editor->preprocessUrlSwitch()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        c.field.setText(QStringLiteral("["));
        EXPECT_TRUE(editor->saveButton().isEnabled());  // a plain keyword, or no cutting
        c.toggle.setChecked(true);
        EXPECT_FALSE(editor->isValidRegexAll());
        EXPECT_FALSE(editor->saveButton().isEnabled());
        c.field.setText(QStringLiteral("[a-z]+"));
        EXPECT_TRUE(editor->saveButton().isEnabled());
        c.field.setText(QStringLiteral("(unclosed"));
        EXPECT_FALSE(editor->saveButton().isEnabled());
        c.toggle.setChecked(false);
        EXPECT_TRUE(editor->saveButton().isEnabled());
    }

    // The warning sign and the placeholder follow the title's switch.
    editor->titleField().setText(QStringLiteral("["));
    EXPECT_EQ(editor->titleField().placeholderText(), QStringLiteral("single keyword"));
    editor->titleRegexSwitch().setChecked(true);
    EXPECT_FALSE(editor->titleWarning().isHidden());
    EXPECT_EQ(editor->titleField().placeholderText(), QStringLiteral("regular expression"));
    editor->titleRegexSwitch().setChecked(false);
    EXPECT_TRUE(editor->titleWarning().isHidden());

    // A blank name cannot be saved either.
    editor->tagNameField().setText(QStringLiteral("   "));
    EXPECT_FALSE(editor->save());
    EXPECT_EQ(h.store->fetch<Filter>(live()).size(), 5u);  // the samples and "Unassigned"
}

TEST(FilterEditViewTest, NewFilterJoinsItsProjectAndCountsWhatIsRecordedAfter) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    FilterEditView* editor = window.editors().openFilterEditor(h.s.work.id, std::nullopt);
    QSignalSpy saved(&window.editors(), &EditorWindows::filterSaved);
    editor->selectApplication(test::editorId);
    editor->tagNameField().setText(QStringLiteral("Notes"));
    editor->titleField().setText(QStringLiteral("notes"));
    editor->ratingPicker().setCurrentIndex(7);
    QTest::keyClick(&editor->tagNameField(), Qt::Key_Return);

    ASSERT_EQ(saved.count(), 1);
    const QUuid id = saved.front().front().toUuid();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.editors().filterEditor(), nullptr);  // closed
    const auto filter = h.store->fetch<Filter>(Query{"id = ?", {id}, {}});
    ASSERT_EQ(filter.size(), 1u);
    EXPECT_EQ(filter.front().projectId, h.s.work.id);
    EXPECT_EQ(filter.front().appName, QStringLiteral("Text Editor"));
    EXPECT_EQ(filter.front().appBundleId, test::editorId);
    EXPECT_EQ(filter.front().matchExpressionOfTitle, QStringLiteral("notes"));
    EXPECT_EQ(filter.front().rating, 70);
    EXPECT_EQ(filterNames(*projectNode(window, h.s.work.id)),
              (QStringList{u"Code"_qs, u"Mail"_qs, u"Notes"_qs}));

    // Recorded through the fake desktop, its time shows in the tag report.
    h.desktop.showEditor(QStringLiteral("notes.txt"));
    for (int tick = 0; tick < 5; ++tick) {
        h.recorder.captureTick();
        h.clock.advance(1);
    }
    h.recorder.finish();
    window.forceUpdate();
    window.selectSection(MenuType::tags);
    EXPECT_TRUE(tableNames(window.reportView(ReportKind::tags)).contains(u"Notes"_qs));
    EXPECT_GT(projectNode(window, h.s.work.id)->filters.back().duration, 0);
}

TEST(FilterEditViewTest, EditingKeepsIdAndProjectAndEscapeSavesNothing) {
    WindowHarness h;
    Filter original = h.s.mail;
    original.appBundleId = test::editorId;
    original.matchExpressionOfUrl = QStringLiteral("^https://mail\\.");
    original.isUrlRegexOn = true;
    original.logicalOperator = 1;
    h.store->update(original);
    MainWindow& window = h.showWindow();

    FilterEditView* editor = window.editors().openFilterEditor(h.s.mail.id);
    EXPECT_EQ(editor->windowTitle(), QStringLiteral("Edit Filter"));
    EXPECT_EQ(editor->tagNameField().text(), QStringLiteral("Mail"));
    EXPECT_EQ(editor->urlField().text(), original.matchExpressionOfUrl);
    EXPECT_TRUE(editor->urlRegexSwitch().isChecked());
    EXPECT_EQ(editor->operatorPicker().currentText(), QStringLiteral("OR"));
    EXPECT_EQ(editor->ratingPicker().currentText(), QStringLiteral("50%"));
    editor->tagNameField().setText(QStringLiteral("Changed"));
    QTest::keyClick(editor, Qt::Key_Escape);
    EXPECT_EQ(h.store->fetch<Filter>(Query{"id = ?", {h.s.mail.id}, {}}).front().tagName,
              QStringLiteral("Mail"));

    editor = window.editors().openFilterEditor(h.s.mail.id);
    editor->tagNameField().setText(QStringLiteral("Post"));
    editor->operatorPicker().setCurrentIndex(0);
    ASSERT_TRUE(editor->save());
    const Filter stored = h.store->fetch<Filter>(Query{"id = ?", {h.s.mail.id}, {}}).front();
    EXPECT_EQ(stored.tagName, QStringLiteral("Post"));
    EXPECT_EQ(stored.projectId, h.s.work.id);
    EXPECT_EQ(stored.logicalOperator, 0);
    EXPECT_EQ(stored.matchExpressionOfUrl, original.matchExpressionOfUrl);
    EXPECT_EQ(filterNames(*projectNode(window, h.s.work.id)),
              (QStringList{u"Code"_qs, u"Post"_qs}));
}

TEST(FilterEditViewTest, TheUnassignedFilterOpensForRenamingOnly) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    const QUuid unassigned = window.treeModel().projects().back().filters.front().id;
    FilterEditView* editor = window.editors().openFilterEditor(unassigned);
    ASSERT_TRUE(editor->isNameChangeOnly());
    EXPECT_TRUE(editor->titleField().isHidden());
    EXPECT_TRUE(editor->ratingPicker().isHidden());
    EXPECT_FALSE(editor->tagNameField().isHidden());
    EXPECT_TRUE(editor->saveButton().isEnabled());  // no application needed
    editor->tagNameField().setText(QStringLiteral("Elsewhere"));
    ASSERT_TRUE(editor->save());
    const Filter stored = h.store->fetch<Filter>(Query{"id = ?", {unassigned}, {}}).front();
    EXPECT_EQ(stored.tagName, QStringLiteral("Elsewhere"));
    EXPECT_TRUE(stored.appBundleId.isEmpty());
    EXPECT_TRUE(stored.isNameChangeOnly);
}

TEST(ProjectEditViewTest, NewRenameAndTheUnassignedProject) {
    WindowHarness h;
    h.records.tagUsage(h.s.code, 600, h.clock.now());
    MainWindow& window = h.showWindow();
    const auto before = *projectNode(window, h.s.work.id);

    ProjectEditView* editor = window.editors().openProjectEditor(h.s.work.id);
    EXPECT_EQ(editor->windowTitle(), QStringLiteral("Edit Project"));
    EXPECT_EQ(editor->archiveToggle().accessibleName(), QStringLiteral("ProjectArchiveToggle"));
    EXPECT_EQ(editor->saveButton().accessibleName(), QStringLiteral("ProjectSaveButton"));
    EXPECT_EQ(editor->nameField().text(), QStringLiteral("Work"));
    editor->nameField().setText(QString());
    EXPECT_FALSE(editor->saveButton().isEnabled());
    editor->nameField().setText(QStringLiteral("Job"));
    editor->saveButton().click();
    const auto& renamed = *projectNode(window, h.s.work.id);
    EXPECT_EQ(renamed.name, QStringLiteral("Job"));
    EXPECT_EQ(renamed.filters.size(), before.filters.size());
    EXPECT_EQ(renamed.duration, 600);
    EXPECT_EQ(renamed.filters.front().duration, 600);
    EXPECT_EQ(h.store->fetch<Project>(Query{"id = ?", {h.s.work.id}, {}}).front().projectName,
              QStringLiteral("Job"));

    editor = window.editors().openProjectEditor(std::nullopt);
    EXPECT_EQ(editor->windowTitle(), QStringLiteral("New Project"));
    EXPECT_EQ(editor->nameField().placeholderText(), QStringLiteral("Project name"));
    editor->nameField().setText(QStringLiteral("Garden"));
    editor->archiveToggle().setChecked(true);
    ASSERT_TRUE(editor->save());
    const auto& added = window.treeModel().projects().back();
    EXPECT_EQ(added.name, QStringLiteral("Garden"));
    EXPECT_TRUE(added.isArchived);
    EXPECT_TRUE(added.filters.empty());

    // "Others" can only be renamed: no archive toggle, and it stays unarchived.
    const QUuid others = window.treeModel().projects().at(3).id;
    editor = window.editors().openProjectEditor(others);
    EXPECT_TRUE(editor->isNameChangeOnly());
    EXPECT_TRUE(editor->archiveToggle().isHidden());
}

TEST(TreeEditsTest, DeleteHidesFromTreeAndReportsButKeepsTheRecords) {
    WindowHarness h;
    h.records.tagUsage(h.s.code, 600, h.clock.now());
    h.records.tagUsage(h.s.cook, 120, h.clock.now());
    MainWindow& window = h.showWindow();
    EXPECT_EQ(window.treeModel().durationTotal(), 720);

    EXPECT_TRUE(window.editors().deleteWithoutAsking(h.s.work.id));
    EXPECT_EQ(projectNode(window, h.s.work.id), nullptr);
    EXPECT_EQ(window.treeModel().durationTotal(), 120);
    EXPECT_FALSE(tableNames(window.reportView(ReportKind::projects)).contains(u"Work"_qs));
    const auto work = h.store->fetch<Project>(Query{"id = ?", {h.s.work.id}, {}});
    EXPECT_TRUE(work.front().isDeleted);
    for (const Filter& filter : h.store->fetch<Filter>(Query{"projectId = ?", {h.s.work.id}, {}})) {
        EXPECT_TRUE(filter.isDeleted);
    }
    EXPECT_EQ(h.store->fetch<TagUsage>().size(), 2u);

    EXPECT_TRUE(window.editors().deleteWithoutAsking(h.s.cook.id));
    EXPECT_TRUE(projectNode(window, h.s.home.id)->filters.empty());
    EXPECT_EQ(window.treeModel().durationTotal(), 0);

    // The unassigned project and filter stay.
    const auto others = window.treeModel().projects().back();
    EXPECT_FALSE(window.editors().deleteWithoutAsking(others.id));
    EXPECT_FALSE(window.editors().deleteWithoutAsking(others.filters.front().id));
    EXPECT_NE(projectNode(window, others.id), nullptr);
    EXPECT_TRUE(deleteConfirmationText(u"Work"_qs, true).contains(u"stays in the store"_qs));
}

TEST(TreeEditsTest, DuplicateCopiesNameWithCopyAndEveryRule) {
    WindowHarness h;
    Filter code = h.s.code;
    code.appBundleId = test::editorId;
    code.matchExpressionOfTitle = QStringLiteral("\\.cpp$");
    code.isTitleRegexOn = true;
    code.isPreprocessTitleOn = true;
    code.regexOfPreprocessTitle = QStringLiteral("[^-]+");
    h.store->update(code);
    MainWindow& window = h.showWindow();

    const auto filterCopy = window.editors().duplicate(h.s.code.id);
    ASSERT_TRUE(filterCopy);
    EXPECT_EQ(filterNames(*projectNode(window, h.s.work.id)),
              (QStringList{u"Code"_qs, u"Code copy"_qs, u"Mail"_qs}));
    Filter stored = h.store->fetch<Filter>(Query{"id = ?", {*filterCopy}, {}}).front();
    EXPECT_EQ(stored.tagName, QStringLiteral("Code copy"));
    stored.tagName = code.tagName;
    stored.id = code.id;
    stored.createdAt = code.createdAt;
    stored.updatedAt = code.updatedAt;
    EXPECT_EQ(stored, code);  // every rule, the rating, the project

    const auto projectCopy = window.editors().duplicate(h.s.home.id);
    ASSERT_TRUE(projectCopy);
    const auto* node = projectNode(window, *projectCopy);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->name, QStringLiteral("Home copy"));
    EXPECT_EQ(filterNames(*node), (QStringList{u"Cook"_qs}));
    const auto copies = h.store->fetch<Filter>(Query{"projectId = ?", {*projectCopy}, {}});
    ASSERT_EQ(copies.size(), 1u);
    EXPECT_EQ(copies.front().rating, h.s.cook.rating);
    EXPECT_NE(copies.front().id, h.s.cook.id);
}

TEST(SettingsViewTest, ReturnCommitsOnlyWholeNumbersInTheCLocale) {
    WindowHarness h;
    MainWindow& window = h.showWindow();
    SettingsView view(*h.settings, {}, AutostartEntry(h.home.path()),
                      QStringLiteral("/usr/bin/kivo"));
    EXPECT_EQ(view.timerIntervalField().text(), QStringLiteral("1.0"));
    EXPECT_EQ(view.maximumGapLengthField().text(), QStringLiteral("60.0"));

    struct Case {
        QString typed;
        double stored;
    };
    const Case cases[] = {
        {u"2.5"_qs, 2.5}, {u"0.5"_qs, 1.0},   {u"abc"_qs, 1.0}, {u" 3"_qs, 1.0},  {u""_qs, 1.0},
        {u"3 "_qs, 1.0},  {u"0x1p2"_qs, 4.0}, {u"inf"_qs, 4.0}, {u"1,5"_qs, 4.0}, {u"1e1"_qs, 10.0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.typed.toStdString());
        view.minimumDurationToRecordField().setText(c.typed);
        QTest::keyClick(&view.minimumDurationToRecordField(), Qt::Key_Return);
        EXPECT_EQ(h.settings->minimumDurationToRecord(), c.stored);
        EXPECT_EQ(view.minimumDurationToRecordField().text(), c.typed);  // left as typed
    }

    // Typing without Return stores nothing; a new interval waits for the timer's next start.
    view.maximumGapLengthField().setText(u"5"_qs);
    EXPECT_EQ(h.settings->maximumGapLength(), 60.0);
    view.timerIntervalField().setText(u"3"_qs);
    QTest::keyClick(&view.timerIntervalField(), Qt::Key_Return);
    EXPECT_EQ(h.settings->timerInterval(), 3.0);
    EXPECT_EQ(window.findChild<CaptureTimer*>()->interval(), std::chrono::milliseconds(1'000));

    EXPECT_EQ(settingText(1.0), u"1.0"_qs);
    EXPECT_EQ(settingText(2.5), u"2.5"_qs);
    EXPECT_EQ(settingText(0.1), u"0.1"_qs);
    EXPECT_EQ(settingText(300.0), u"300.0"_qs);
}

TEST(SettingsViewTest, LaunchAtLoginWritesAndRemovesTheAutostartEntry) {
    WindowHarness h;
    const AutostartEntry entry(h.home.path());
    SettingsView view(*h.settings, {}, entry, QStringLiteral("/opt/my apps/kivo"));
    EXPECT_FALSE(view.launchAtLoginToggle().isChecked());

    view.launchAtLoginToggle().setChecked(true);
    EXPECT_EQ(entry.filePath(), h.home.path() + u"/autostart/app.kivo.Kivo.desktop"_qs);
    QFile file(entry.filePath());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("\nExec=\"/opt/my apps/kivo\" --hidden\n"));
    EXPECT_TRUE(h.settings->isDetailUnified());

    view.launchAtLoginToggle().setChecked(false);
    EXPECT_FALSE(entry.exists());
    EXPECT_FALSE(h.settings->isDetailUnified());

    // The entry cannot be written (its folder is a file): nothing is stored.
    const QString blocked = h.home.path() + u"/blocked"_qs;
    ASSERT_TRUE(QDir().mkpath(blocked));
    QFile blocker(blocked + u"/autostart"_qs);
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    SettingsView failing(*h.settings, {}, AutostartEntry(blocked), QStringLiteral("/usr/bin/kivo"));
    failing.launchAtLoginToggle().setChecked(true);
    EXPECT_FALSE(h.settings->isDetailUnified());
    EXPECT_TRUE(failing.launchAtLoginToggle().isChecked());
}

TEST(AutostartEntryTest, ExecLineStartsTheExecutableHiddenWhateverItsPath) {
    struct Case {
        QString executable;
        QString execLine;
    };
    const Case cases[] = {
        {u"/usr/bin/kivo"_qs, u"Exec=/usr/bin/kivo --hidden"_qs},
        {u"/opt/my apps/kivo"_qs, u"Exec=\"/opt/my apps/kivo\" --hidden"_qs},
        {u"/home/a$b/100%/kivo"_qs, u"Exec=\"/home/a\\\\$b/100%%/kivo\" --hidden"_qs},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.executable.toStdString());
        const QStringList lines = autostartEntryText(c.executable).split(u'\n');
        EXPECT_EQ(lines.front(), u"[Desktop Entry]"_qs);
        EXPECT_TRUE(lines.contains(c.execLine)) << autostartEntryText(c.executable).toStdString();
    }
}

}  // namespace
}  // namespace kivo
