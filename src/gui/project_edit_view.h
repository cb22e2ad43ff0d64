#pragma once

#include <QUuid>
#include <QWidget>
#include <optional>

#include "gui/editor_services.h"
#include "gui/editor_window.h"
#include "model/records.h"

QT_BEGIN_NAMESPACE
class QCheckBox;
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE

namespace kivo {

// The small window in which a project is created, renamed or archived. The unassigned project
// opens for renaming only. Save is offered while the name is not empty.
class ProjectEditView : public EditorWindow {
    Q_OBJECT

public:
    // Edits the project `projectId` when given, else creates one.
    ProjectEditView(const EditorServices& services, const std::optional<QUuid>& projectId,
                    QWidget* parent = nullptr);

    bool isNewProject() const { return !targetProject_.has_value(); }
    bool isNameChangeOnly() const { return isNameChangeOnly_; }
    // Writes the project and its tree node; then the window closes.
    bool save() override;

    QLineEdit& nameField() const { return *name_; }
    QCheckBox& archiveToggle() const { return *archive_; }
    QPushButton& saveButton() const { return *save_; }

Q_SIGNALS:
    void projectSaved(const QUuid& projectId);

private:
    EditorServices services_;
    std::optional<Project> targetProject_;
    bool isNameChangeOnly_ = false;
    QLineEdit* name_ = nullptr;
    QCheckBox* archive_ = nullptr;
    QPushButton* save_ = nullptr;
};

}  // namespace kivo
