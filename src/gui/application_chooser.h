#pragma once

#include <QDialog>
#include <QString>
#include <optional>

QT_BEGIN_NAMESPACE
class QLineEdit;
class QTreeWidget;
QT_END_NAMESPACE

namespace kivo {

class ApplicationCatalog;

// The installed applications the recorder knows, searchable by name or desktop-file ID, with
// their icons. Accepting it answers the chosen ID.
class ApplicationChooser : public QDialog {
    Q_OBJECT

public:
    ApplicationChooser(const ApplicationCatalog& catalog, QWidget* parent = nullptr);

    std::optional<QString> chosenBundleId() const;
    QLineEdit& searchField() const { return *search_; }
    QTreeWidget& list() const { return *list_; }

private:
    void applySearch(const QString& text);

    QLineEdit* search_ = nullptr;
    QTreeWidget* list_ = nullptr;
};

// The name an application is shown with: its entry's name in the user's language, else the ID.
QString applicationDisplayName(const ApplicationCatalog& catalog, const QString& bundleId);

}  // namespace kivo
