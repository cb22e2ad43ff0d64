#pragma once

#include <QIcon>
#include <QUuid>
#include <QWidget>
#include <optional>

#include "gui/editor_services.h"
#include "gui/editor_window.h"
#include "model/records.h"

QT_BEGIN_NAMESPACE
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
QT_END_NAMESPACE

namespace kivo {

// The window in which a filter (a tag) is created or edited: its application, name, matching
// rules, rating and pre-processing. Every expression is checked as matching would compile it,
// and Save is offered only while all of them compile and the tag has a name and an application.
// The unassigned filter opens for renaming only.
class FilterEditView : public EditorWindow {
    Q_OBJECT

public:
    // Edits the filter `filterId` when given; otherwise makes a new filter under `projectId`,
    // starting from `prefill`'s application and rules when given (the activity list's "create a
    // tag").
    FilterEditView(const EditorServices& services, const QUuid& projectId,
                   const std::optional<QUuid>& filterId, const std::optional<Filter>& prefill = {},
                   QWidget* parent = nullptr);

    bool isNewFilter() const { return !targetFilter_.has_value(); }
    bool isNameChangeOnly() const { return isNameChangeOnly_; }
    bool isValidRegexAll() const;
    bool canSave() const;
    // The application chosen in the chooser (or by a caller): name, ID and icon from the catalog.
    void selectApplication(const QString& bundleId);

    // Writes the filter and updates its tree node; then the window closes. False when nothing
    // could be saved (invalid form, store failure).
    bool save() override;

    QLineEdit& tagNameField() const { return *tagName_; }
    QLineEdit& titleField() const { return *title_; }
    QCheckBox& titleRegexSwitch() const { return *titleRegex_; }
    QLineEdit& urlField() const { return *url_; }
    QCheckBox& urlRegexSwitch() const { return *urlRegex_; }
    QComboBox& operatorPicker() const { return *operator_; }
    QComboBox& ratingPicker() const { return *rating_; }
    QCheckBox& preprocessTitleSwitch() const { return *preprocessTitleOn_; }
    QLineEdit& preprocessTitleField() const { return *preprocessTitle_; }
    QCheckBox& preprocessUrlSwitch() const { return *preprocessUrlOn_; }
    QLineEdit& preprocessUrlField() const { return *preprocessUrl_; }
    QLabel& titleWarning() const { return *titleWarning_; }
    QPushButton& saveButton() const { return *save_; }

Q_SIGNALS:
    // After a save, with the saved filter's id.
    void filterSaved(const QUuid& filterId);

private:
    void buildForm();
    void fill(const Filter& filter);
    void chooseApplication();
    void validate();
    void updatePlaceholders();
    Filter form() const;

    EditorServices services_;
    QUuid projectId_;
    std::optional<Filter> targetFilter_;
    bool isNameChangeOnly_ = false;
    QString appName_;
    QString appBundleId_;
    bool isValidRegexOfTitle_ = true;
    bool isValidRegexOfUrl_ = true;
    bool isValidRegexOfPreprocessTitle_ = true;
    bool isValidRegexOfPreprocessUrl_ = true;

    QLabel* appIcon_ = nullptr;
    QLabel* appNameLabel_ = nullptr;
    QLineEdit* tagName_ = nullptr;
    QLineEdit* title_ = nullptr;
    QCheckBox* titleRegex_ = nullptr;
    QLabel* titleWarning_ = nullptr;
    QComboBox* operator_ = nullptr;
    QLineEdit* url_ = nullptr;
    QCheckBox* urlRegex_ = nullptr;
    QLabel* urlWarning_ = nullptr;
    QComboBox* rating_ = nullptr;
    QCheckBox* preprocessTitleOn_ = nullptr;
    QLineEdit* preprocessTitle_ = nullptr;
    QLabel* preprocessTitleWarning_ = nullptr;
    QCheckBox* preprocessUrlOn_ = nullptr;
    QLineEdit* preprocessUrl_ = nullptr;
    QLabel* preprocessUrlWarning_ = nullptr;
    QPushButton* save_ = nullptr;
};

// "single keyword" while the regular-expression switch is off, "regular expression" while on.
QString matchPlaceholder(bool isRegexOn);

}  // namespace kivo
