#pragma once

#include <QObject>
#include <QPointer>
#include <QUuid>
#include <optional>

#include "gui/editor_services.h"
#include "gui/filter_edit_view.h"
#include "gui/project_edit_view.h"
#include "model/records.h"

QT_BEGIN_NAMESPACE
class QMenu;
class QWidget;
QT_END_NAMESPACE

namespace kivo {

// Opens the project and filter editors in windows of their own next to the pointer, and runs the
// tree's context-menu commands (new, edit, duplicate, delete). Closing an editor saves the tree
// and makes every view recompute.
class EditorWindows : public QObject {
    Q_OBJECT

public:
    EditorWindows(const EditorServices& services, QWidget* owner);
    ~EditorWindows() override;

    // "New Project" without an id, "Edit Project" with one.
    ProjectEditView* openProjectEditor(const std::optional<QUuid>& projectId);
    // "New Filter" under `projectId`, or "Open Filter Editor" for `filterId`; a new filter may
    // start from `prefill` (application and rules).
    FilterEditView* openFilterEditor(const QUuid& projectId, const std::optional<QUuid>& filterId,
                                     const std::optional<Filter>& prefill = {});
    FilterEditView* openFilterEditor(const QUuid& filterId);

    // The commands for the tree row `id` (the root's id: only "New Project").
    void fillTreeMenu(QMenu* menu, const QUuid& id, bool isProject, bool isFilter);
    std::optional<QUuid> duplicate(const QUuid& id);
    // Asks first; the record stays in the store, only the tree and the reports lose it.
    void confirmAndDelete(const QUuid& id);
    bool deleteWithoutAsking(const QUuid& id);

    ProjectEditView* projectEditor() const { return projectEditor_; }
    FilterEditView* filterEditor() const { return filterEditor_; }

Q_SIGNALS:
    // A filter was saved in an editor opened here.
    void filterSaved(const QUuid& filterId);

private:
    void closeEditors();
    void editorClosed();
    void show(QWidget& editor, const QString& title, QSize size);

    EditorServices services_;
    QWidget* owner_;
    QPointer<ProjectEditView> projectEditor_;
    QPointer<FilterEditView> filterEditor_;
};

// The question asked before deleting a project or tag named `name`.
QString deleteConfirmationText(const QString& name, bool isProject);

}  // namespace kivo
