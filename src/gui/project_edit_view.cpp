#include "gui/project_edit_view.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "tree/tree_edits.h"

namespace kivo {

ProjectEditView::ProjectEditView(const EditorServices& services,
                                 const std::optional<QUuid>& projectId, QWidget* parent)
    : EditorWindow(parent), services_(services) {
    setAccessibleName(QStringLiteral("ProjectEditView"));
    if (projectId) {
        targetProject_ = findProject(services_.store, *projectId);
    }
    isNameChangeOnly_ = targetProject_ && targetProject_->isNameChangeOnly;

    name_ = new QLineEdit;
    name_->setAccessibleName(QStringLiteral("ProjectNameField"));
    name_->setPlaceholderText(QStringLiteral("Project name"));
    name_->setClearButtonEnabled(true);

    archive_ = new QCheckBox(QStringLiteral("Archive"));
    archive_->setAccessibleName(QStringLiteral("ProjectArchiveToggle"));
    archive_->setVisible(!isNameChangeOnly_);

    save_ = new QPushButton(QStringLiteral("Save"));
    save_->setAccessibleName(QStringLiteral("ProjectSaveButton"));
    save_->setDefault(true);
    connect(save_, &QPushButton::clicked, this, &ProjectEditView::save);
    connect(name_, &QLineEdit::textChanged, this,
            [this](const QString& text) { save_->setEnabled(!text.trimmed().isEmpty()); });

    if (targetProject_) {
        name_->setText(targetProject_->projectName);
        archive_->setChecked(targetProject_->isArchived);
    }
    save_->setEnabled(!name_->text().trimmed().isEmpty());

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(save_);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 14, 16, 14);
    layout->addWidget(name_);
    layout->addWidget(archive_);
    layout->addStretch(1);
    layout->addLayout(buttons);
    name_->setFocus();
}

bool ProjectEditView::save() {
    const QString projectName = name_->text().trimmed();
    if (projectName.isEmpty()) {
        return false;
    }
    const bool isArchived = !isNameChangeOnly_ && archive_->isChecked();
    const auto savedId = saveProject(services_.store, services_.tree, services_.clock.now(),
                                     targetProject_, projectName, isArchived);
    if (!savedId) {
        return false;
    }
    Q_EMIT projectSaved(*savedId);
    close();
    return true;
}

}  // namespace kivo
