#include "gui/editor_windows.h"

#include <QMenu>
#include <QMessageBox>

#include "gui/filter_edit_view.h"
#include "gui/project_edit_view.h"
#include "gui/secondary_window.h"
#include "tree/project_tree_view_model.h"
#include "tree/tree_edits.h"

namespace kivo {

namespace {

const QSize projectEditorSize(360, 180);
const QSize filterEditorSize(560, 470);

}  // namespace

QString deleteConfirmationText(const QString& name, bool isProject) {
    const QString what = isProject ? QStringLiteral("the project \"%1\" and its tags").arg(name)
                                   : QStringLiteral("the tag \"%1\"").arg(name);
    return QStringLiteral(
               "Delete %1?\n\nThe time recorded for it stays in the store, but it is "
               "no longer shown or counted in any report.")
        .arg(what);
}

EditorWindows::EditorWindows(const EditorServices& services, QWidget* owner)
    : QObject(owner), services_(services), owner_(owner) {}

EditorWindows::~EditorWindows() {
    closeEditors();
}

// One editor at a time: a second one would write over what the first is editing.
void EditorWindows::closeEditors() {
    for (QWidget* editor : {static_cast<QWidget*>(projectEditor_.data()),
                            static_cast<QWidget*>(filterEditor_.data())}) {
        if (editor != nullptr) {
            editor->disconnect(this);
            delete editor;
        }
    }
}

void EditorWindows::show(QWidget& editor, const QString& title, QSize size) {
    makeSecondaryWindow(editor, owner_, title, size);
    editor.setAttribute(Qt::WA_DeleteOnClose);
    placeAtPointer(editor);
    editor.show();
    editor.raise();
    editor.activateWindow();
}

void EditorWindows::editorClosed() {
    services_.tree.saveTree();
    Q_EMIT services_.tree.forceUpdateRequested();
}

ProjectEditView* EditorWindows::openProjectEditor(const std::optional<QUuid>& projectId) {
    closeEditors();
    auto* editor = new ProjectEditView(services_, projectId);
    projectEditor_ = editor;
    connect(editor, &ProjectEditView::closed, this, &EditorWindows::editorClosed);
    show(*editor,
         editor->isNewProject() ? QStringLiteral("New Project") : QStringLiteral("Edit Project"),
         projectEditorSize);
    return editor;
}

FilterEditView* EditorWindows::openFilterEditor(const QUuid& projectId,
                                                const std::optional<QUuid>& filterId,
                                                const std::optional<Filter>& prefill) {
    closeEditors();
    auto* editor = new FilterEditView(services_, projectId, filterId, prefill);
    filterEditor_ = editor;
    connect(editor, &FilterEditView::closed, this, &EditorWindows::editorClosed);
    connect(editor, &FilterEditView::filterSaved, this, &EditorWindows::filterSaved);
    show(*editor,
         editor->isNewFilter() ? QStringLiteral("New Filter") : QStringLiteral("Edit Filter"),
         editor->isNameChangeOnly() ? projectEditorSize : filterEditorSize);
    return editor;
}

FilterEditView* EditorWindows::openFilterEditor(const QUuid& filterId) {
    const auto filter = findFilter(services_.store, filterId);
    if (!filter) {
        return nullptr;
    }
    return openFilterEditor(filter->projectId, filterId);
}

void EditorWindows::fillTreeMenu(QMenu* menu, const QUuid& id, bool isProject, bool isFilter) {
    if (!isProject && !isFilter) {
        menu->addAction(QStringLiteral("New Project"), this, [this] { openProjectEditor({}); });
        return;
    }
    const bool isNameChangeOnly = isNameChangeOnlyEntry(services_.store, id);
    if (isProject) {
        menu->addAction(QStringLiteral("Edit Project"), this,
                        [this, id] { openProjectEditor(id); });
        menu->addAction(QStringLiteral("New Filter"), this,
                        [this, id] { openFilterEditor(id, std::nullopt); });
    } else {
        menu->addAction(QStringLiteral("Open Filter Editor"), this,
                        [this, id] { openFilterEditor(id); });
    }
    if (isNameChangeOnly) {
        return;
    }
    menu->addSeparator();
    menu->addAction(QStringLiteral("Duplicate"), this, [this, id] { duplicate(id); });
    menu->addAction(QStringLiteral("Delete…"), this, [this, id] { confirmAndDelete(id); });
}

std::optional<QUuid> EditorWindows::duplicate(const QUuid& id) {
    const auto copyId = duplicateEntry(services_.store, services_.tree, services_.clock.now(), id);
    if (copyId) {
        Q_EMIT services_.tree.forceUpdateRequested();
    }
    return copyId;
}

void EditorWindows::confirmAndDelete(const QUuid& id) {
    const auto project = findProject(services_.store, id);
    const auto filter = project ? std::nullopt : findFilter(services_.store, id);
    if (!project && !filter) {
        return;
    }
    const QString name = project ? project->projectName : filter->tagName;
    const auto answer = QMessageBox::question(
        owner_, project ? QStringLiteral("Delete Project") : QStringLiteral("Delete Tag"),
        deleteConfirmationText(name, project.has_value()), QMessageBox::Yes | QMessageBox::Cancel,
        QMessageBox::Cancel);
    if (answer == QMessageBox::Yes) {
        deleteWithoutAsking(id);
    }
}

bool EditorWindows::deleteWithoutAsking(const QUuid& id) {
    if (!deleteEntry(services_.store, services_.tree, services_.clock.now(), id)) {
        return false;
    }
    Q_EMIT services_.tree.forceUpdateRequested();
    return true;
}

}  // namespace kivo
