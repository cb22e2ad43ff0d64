#include "gui/filter_edit_view.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "classify/regex_match.h"
#include "desktop/xdg/application_icon.h"
#include "gui/application_chooser.h"
#include "gui/editor_form.h"
#include "gui/icons.h"
#include "tree/tree_edits.h"

namespace kivo {

namespace {

constexpr int appIconSize = 32;

// Valid when the switch is off (the text is a plain keyword or unused) or when it compiles.
bool isValidWhen(bool isSwitchOn, const QString& pattern) {
    return !isSwitchOn || isValidRegex(pattern);
}

}  // namespace

QString matchPlaceholder(bool isRegexOn) {
    return isRegexOn ? QStringLiteral("regular expression") : QStringLiteral("single keyword");
}

FilterEditView::FilterEditView(const EditorServices& services, const QUuid& projectId,
                               const std::optional<QUuid>& filterId,
                               const std::optional<Filter>& prefill, QWidget* parent)
    : EditorWindow(parent), services_(services), projectId_(projectId) {
    setAccessibleName(QStringLiteral("FilterEditView"));
    if (filterId) {
        targetFilter_ = findFilter(services_.store, *filterId);
    }
    if (targetFilter_) {
        projectId_ = targetFilter_->projectId;
        isNameChangeOnly_ = targetFilter_->isNameChangeOnly;
    }
    buildForm();
    if (targetFilter_) {
        fill(*targetFilter_);
    } else if (prefill) {
        fill(*prefill);
    }
    validate();
    updatePlaceholders();
    tagName_->setFocus();
}

void FilterEditView::buildForm() {
    const auto connectValidation = [this](QLineEdit* field, QCheckBox* toggle) {
        connect(field, &QLineEdit::textChanged, this, &FilterEditView::validate);
        connect(toggle, &QCheckBox::toggled, this, &FilterEditView::validate);
    };
    const auto lineEdit = [](const QString& name) {
        auto* field = new QLineEdit;
        field->setAccessibleName(name);
        field->setClearButtonEnabled(true);
        return field;
    };

    // The application it applies to.
    appIcon_ = new QLabel;
    appIcon_->setFixedSize(appIconSize, appIconSize);
    appNameLabel_ = new QLabel;
    appNameLabel_->setAccessibleName(QStringLiteral("FilterApplicationName"));
    auto* chooseButton = new QPushButton(QStringLiteral("Select Application"));
    chooseButton->setAccessibleName(QStringLiteral("FilterSelectApplicationButton"));
    chooseButton->setAutoDefault(false);
    connect(chooseButton, &QPushButton::clicked, this, &FilterEditView::chooseApplication);
    auto* applicationRow = new QHBoxLayout;
    applicationRow->addWidget(appIcon_);
    applicationRow->addWidget(appNameLabel_);
    applicationRow->addWidget(requiredMark());
    applicationRow->addStretch(1);
    applicationRow->addWidget(chooseButton);

    tagName_ = lineEdit(QStringLiteral("FilterTagNameField"));
    connect(tagName_, &QLineEdit::textChanged, this, &FilterEditView::validate);

    title_ = lineEdit(QStringLiteral("FilterTitleField"));
    titleRegex_ = new QCheckBox(QStringLiteral("Regular expression"));
    titleRegex_->setAccessibleName(QStringLiteral("FilterTitleRegexToggle"));
    titleWarning_ = warningMark(QStringLiteral("FilterTitleWarning"));
    connectValidation(title_, titleRegex_);

    operator_ = new QComboBox;
    operator_->setAccessibleName(QStringLiteral("FilterOperatorPicker"));
    operator_->addItems({logicalOperatorText(0), logicalOperatorText(1)});

    url_ = lineEdit(QStringLiteral("FilterUrlField"));
    urlRegex_ = new QCheckBox(QStringLiteral("Regular expression"));
    urlRegex_->setAccessibleName(QStringLiteral("FilterUrlRegexToggle"));
    urlWarning_ = warningMark(QStringLiteral("FilterUrlWarning"));
    connectValidation(url_, urlRegex_);

    rating_ = new QComboBox;
    rating_->setAccessibleName(QStringLiteral("FilterRatingPicker"));
    for (int percent = 0; percent <= 100; percent += 10) {
        rating_->addItem(ratingText(percent), percent);
    }

    preprocessTitleOn_ = new QCheckBox(QStringLiteral("Title"));
    preprocessTitleOn_->setAccessibleName(QStringLiteral("FilterPreprocessTitleToggle"));
    preprocessTitle_ = lineEdit(QStringLiteral("FilterPreprocessTitleField"));
    preprocessTitle_->setPlaceholderText(QStringLiteral("regular expression"));
    preprocessTitleWarning_ = warningMark(QStringLiteral("FilterPreprocessTitleWarning"));
    connectValidation(preprocessTitle_, preprocessTitleOn_);

    preprocessUrlOn_ = new QCheckBox(QStringLiteral("URL"));
    preprocessUrlOn_->setAccessibleName(QStringLiteral("FilterPreprocessUrlToggle"));
    preprocessUrl_ = lineEdit(QStringLiteral("FilterPreprocessUrlField"));
    preprocessUrl_->setPlaceholderText(QStringLiteral("regular expression"));
    preprocessUrlWarning_ = warningMark(QStringLiteral("FilterPreprocessUrlWarning"));
    connectValidation(preprocessUrl_, preprocessUrlOn_);

    save_ = new QPushButton(QStringLiteral("Save"));
    save_->setAccessibleName(QStringLiteral("FilterSaveButton"));
    save_->setDefault(true);
    connect(save_, &QPushButton::clicked, this, &FilterEditView::save);

    auto* form = new QGridLayout;
    form->setColumnStretch(1, 1);
    int row = 0;
    auto* tagLabel = new QHBoxLayout;
    tagLabel->addWidget(new QLabel(QStringLiteral("Tag name")));
    tagLabel->addWidget(requiredMark());
    form->addLayout(tagLabel, row, 0);
    form->addWidget(tagName_, row++, 1, 1, 3);
    QWidget* rules = sectionHeading(QStringLiteral("Matching rules"));
    form->addWidget(rules, row++, 0, 1, 4);
    form->addWidget(new QLabel(QStringLiteral("Title")), row, 0);
    form->addWidget(title_, row, 1);
    form->addWidget(titleRegex_, row, 2);
    form->addWidget(titleWarning_, row++, 3);
    form->addWidget(new QLabel(QStringLiteral("Operator")), row, 0);
    form->addWidget(operator_, row++, 1, Qt::AlignLeft);
    form->addWidget(new QLabel(QStringLiteral("URL")), row, 0);
    form->addWidget(url_, row, 1);
    form->addWidget(urlRegex_, row, 2);
    form->addWidget(urlWarning_, row++, 3);
    QWidget* productivity = sectionHeading(QStringLiteral("Productivity"));
    form->addWidget(productivity, row++, 0, 1, 4);
    form->addWidget(new QLabel(QStringLiteral("Rating")), row, 0);
    form->addWidget(rating_, row++, 1, Qt::AlignLeft);
    QWidget* preprocessing =
        sectionHeading(QStringLiteral("Pre-processing"), QStringLiteral("(advanced options)"));
    form->addWidget(preprocessing, row++, 0, 1, 4);
    form->addWidget(preprocessTitleOn_, row, 0);
    form->addWidget(preprocessTitle_, row, 1, 1, 2);
    form->addWidget(preprocessTitleWarning_, row++, 3);
    form->addWidget(preprocessUrlOn_, row, 0);
    form->addWidget(preprocessUrl_, row, 1, 1, 2);
    form->addWidget(preprocessUrlWarning_, row++, 3);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(save_);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 14, 16, 14);
    layout->addLayout(applicationRow);
    layout->addSpacing(6);
    layout->addLayout(form);
    layout->addStretch(1);
    layout->addLayout(buttons);

    // Renaming the unassigned filter: only its name is offered.
    if (isNameChangeOnly_) {
        for (QLayout* part : {static_cast<QLayout*>(form), static_cast<QLayout*>(applicationRow)}) {
            for (int index = 0; index < part->count(); ++index) {
                QWidget* widget = part->itemAt(index)->widget();
                if (widget != nullptr && widget != tagName_) {
                    widget->hide();
                }
            }
        }
    }
    selectApplication(QString());
}

void FilterEditView::fill(const Filter& filter) {
    tagName_->setText(filter.tagName);
    if (!filter.appBundleId.isEmpty()) {
        selectApplication(filter.appBundleId);
        if (!filter.appName.isEmpty()) {
            appName_ = filter.appName;
            appNameLabel_->setText(appName_);
        }
    }
    title_->setText(filter.matchExpressionOfTitle);
    titleRegex_->setChecked(filter.isTitleRegexOn);
    url_->setText(filter.matchExpressionOfUrl);
    urlRegex_->setChecked(filter.isUrlRegexOn);
    operator_->setCurrentIndex(filter.logicalOperator == 0 ? 0 : 1);
    const int ratingIndex = rating_->findData(static_cast<int>(filter.rating));
    rating_->setCurrentIndex(ratingIndex < 0 ? 0 : ratingIndex);
    preprocessTitleOn_->setChecked(filter.isPreprocessTitleOn);
    preprocessTitle_->setText(filter.regexOfPreprocessTitle);
    preprocessUrlOn_->setChecked(filter.isPreprocessUrlOn);
    preprocessUrl_->setText(filter.regexOfPreprocessUrl);
}

void FilterEditView::selectApplication(const QString& bundleId) {
    appBundleId_ = bundleId;
    QIcon icon;
    if (bundleId.isEmpty()) {
        appName_.clear();
        appNameLabel_->setText(QStringLiteral("No application"));
        appNameLabel_->setForegroundRole(QPalette::PlaceholderText);
    } else {
        appName_ = applicationDisplayName(services_.catalog, bundleId);
        appNameLabel_->setText(appName_);
        appNameLabel_->setForegroundRole(QPalette::WindowText);
        appNameLabel_->setToolTip(bundleId);
        icon = applicationIcon(services_.catalog, bundleId);
    }
    if (icon.isNull()) {
        icon = glyphIcon(QStringLiteral("application-x-executable"),
                         QStringLiteral("application-unknown"));
    }
    appIcon_->setPixmap(icon.pixmap(appIconSize, appIconSize));
    validate();
}

void FilterEditView::chooseApplication() {
    ApplicationChooser chooser(services_.catalog, this);
    if (chooser.exec() != QDialog::Accepted) {
        return;
    }
    if (const auto bundleId = chooser.chosenBundleId()) {
        selectApplication(*bundleId);
    }
}

void FilterEditView::validate() {
    if (save_ == nullptr) {
        return;
    }
    isValidRegexOfTitle_ = isValidWhen(titleRegex_->isChecked(), title_->text());
    isValidRegexOfUrl_ = isValidWhen(urlRegex_->isChecked(), url_->text());
    isValidRegexOfPreprocessTitle_ =
        isValidWhen(preprocessTitleOn_->isChecked(), preprocessTitle_->text());
    isValidRegexOfPreprocessUrl_ =
        isValidWhen(preprocessUrlOn_->isChecked(), preprocessUrl_->text());
    if (!isNameChangeOnly_) {
        titleWarning_->setVisible(!isValidRegexOfTitle_);
        urlWarning_->setVisible(!isValidRegexOfUrl_);
        preprocessTitleWarning_->setVisible(!isValidRegexOfPreprocessTitle_);
        preprocessUrlWarning_->setVisible(!isValidRegexOfPreprocessUrl_);
    }
    updatePlaceholders();
    save_->setEnabled(canSave());
}

void FilterEditView::updatePlaceholders() {
    title_->setPlaceholderText(matchPlaceholder(titleRegex_->isChecked()));
    url_->setPlaceholderText(matchPlaceholder(urlRegex_->isChecked()));
}

bool FilterEditView::isValidRegexAll() const {
    return isValidRegexOfTitle_ && isValidRegexOfUrl_ && isValidRegexOfPreprocessTitle_ &&
           isValidRegexOfPreprocessUrl_;
}

bool FilterEditView::canSave() const {
    if (tagName_->text().trimmed().isEmpty()) {
        return false;
    }
    // The unassigned filter names no application; every other one applies to exactly one.
    return isNameChangeOnly_ || (isValidRegexAll() && !appBundleId_.isEmpty());
}

Filter FilterEditView::form() const {
    Filter filter = targetFilter_ ? *targetFilter_ : Filter{};
    filter.tagName = tagName_->text().trimmed();
    if (isNameChangeOnly_) {
        return filter;
    }
    filter.appName = appName_;
    filter.appBundleId = appBundleId_;
    filter.matchExpressionOfTitle = title_->text();
    filter.isTitleRegexOn = titleRegex_->isChecked();
    filter.matchExpressionOfUrl = url_->text();
    filter.isUrlRegexOn = urlRegex_->isChecked();
    filter.logicalOperator = operator_->currentIndex();
    filter.rating = rating_->currentData().toInt();
    filter.isPreprocessTitleOn = preprocessTitleOn_->isChecked();
    filter.regexOfPreprocessTitle = preprocessTitle_->text();
    filter.isPreprocessUrlOn = preprocessUrlOn_->isChecked();
    filter.regexOfPreprocessUrl = preprocessUrl_->text();
    return filter;
}

bool FilterEditView::save() {
    if (!canSave()) {
        return false;
    }
    const auto savedId = saveFilter(services_.store, services_.tree, services_.clock.now(),
                                    targetFilter_, projectId_, form());
    if (!savedId) {
        return false;
    }
    Q_EMIT filterSaved(*savedId);
    close();
    return true;
}

}  // namespace kivo
