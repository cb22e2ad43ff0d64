#include "gui/application_chooser.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "capture/application_catalog.h"
#include "desktop/xdg/application_icon.h"
#include "gui/icons.h"

namespace kivo {

QString applicationDisplayName(const ApplicationCatalog& catalog, const QString& bundleId) {
    const auto name = catalog.displayName(bundleId);
    return name && !name->isEmpty() ? *name : bundleId;
}

ApplicationChooser::ApplicationChooser(const ApplicationCatalog& catalog, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(QStringLiteral("Select Application"));
    resize(460, 420);

    search_ = new QLineEdit;
    search_->setAccessibleName(QStringLiteral("ApplicationSearchField"));
    search_->setPlaceholderText(QStringLiteral("Search applications"));
    search_->setClearButtonEnabled(true);

    list_ = new QTreeWidget;
    list_->setAccessibleName(QStringLiteral("ApplicationList"));
    list_->setColumnCount(2);
    list_->setHeaderLabels({QStringLiteral("Application"), QStringLiteral("Desktop file ID")});
    list_->setRootIsDecorated(false);
    list_->setIconSize(QSize(22, 22));
    list_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    list_->header()->setStretchLastSection(false);

    QStringList ids = catalog.installedBundleIds();
    std::sort(ids.begin(), ids.end(), [&](const QString& left, const QString& right) {
        return applicationDisplayName(catalog, left)
                   .compare(applicationDisplayName(catalog, right), Qt::CaseInsensitive) < 0;
    });
    const QIcon placeholder = glyphIcon(QStringLiteral("application-x-executable"),
                                        QStringLiteral("application-unknown"));
    for (const QString& id : ids) {
        auto* row = new QTreeWidgetItem(list_, {applicationDisplayName(catalog, id), id});
        const QIcon icon = applicationIcon(catalog, id);
        row->setIcon(0, icon.isNull() ? placeholder : icon);
    }

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QPushButton* select = buttons->button(QDialogButtonBox::Ok);
    select->setText(QStringLiteral("Select"));
    select->setEnabled(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list_, &QTreeWidget::currentItemChanged, this,
            [select](QTreeWidgetItem* current) { select->setEnabled(current != nullptr); });
    connect(list_, &QTreeWidget::itemActivated, this, &QDialog::accept);
    connect(search_, &QLineEdit::textChanged, this, &ApplicationChooser::applySearch);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(search_);
    layout->addWidget(list_, 1);
    layout->addWidget(buttons);
    search_->setFocus();
}

void ApplicationChooser::applySearch(const QString& text) {
    QTreeWidgetItem* firstShown = nullptr;
    for (int row = 0; row < list_->topLevelItemCount(); ++row) {
        QTreeWidgetItem* item = list_->topLevelItem(row);
        const bool isShown = item->text(0).contains(text, Qt::CaseInsensitive) ||
                             item->text(1).contains(text, Qt::CaseInsensitive);
        item->setHidden(!isShown);
        if (isShown && firstShown == nullptr) {
            firstShown = item;
        }
    }
    if (list_->currentItem() == nullptr || list_->currentItem()->isHidden()) {
        list_->setCurrentItem(firstShown);
    }
}

std::optional<QString> ApplicationChooser::chosenBundleId() const {
    const QTreeWidgetItem* current = list_->currentItem();
    if (current == nullptr || current->isHidden()) {
        return std::nullopt;
    }
    return current->text(1);
}

}  // namespace kivo
