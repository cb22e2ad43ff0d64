#include "gui/settings_view.h"

#include <locale.h>

#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>

#include "gui/editor_form.h"
#include "model/application_settings.h"

namespace kivo {

namespace {

// strtod in the C locale, whatever the user's LC_NUMERIC says.
locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

QLabel* factLabel(const QString& text, const QString& name) {
    auto* label = new QLabel(text);
    label->setAccessibleName(name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setWordWrap(true);
    return label;
}

}  // namespace

QString settingText(double value) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    QString text = QString::fromLatin1(buffer, result.ptr - buffer);
    if (std::isfinite(value) && !text.contains(u'.') && !text.contains(u'e')) {
        text += QStringLiteral(".0");
    }
    return text;
}

std::optional<double> parseSettingText(const QString& text) {
    if (text.isEmpty() || text.front().isSpace()) {
        return std::nullopt;
    }
    const QByteArray bytes = text.toUtf8();
    char* end = nullptr;
    const double value = strtod_l(bytes.constData(), &end, cLocale());
    if (end != bytes.constData() + bytes.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

QString sessionDesktopBackend() {
    const QString wayland = qEnvironmentVariable("WAYLAND_DISPLAY");
    const QString x11 = qEnvironmentVariable("DISPLAY");
    if (!wayland.isEmpty()) {
        const QString desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
        return QStringLiteral("Wayland (%1%2)")
            .arg(wayland, desktop.isEmpty() ? QString() : QStringLiteral(", ") + desktop);
    }
    if (!x11.isEmpty()) {
        return QStringLiteral("X11 (display %1)").arg(x11);
    }
    return QStringLiteral("No graphical session");
}

SettingsView::SettingsView(ApplicationSettings& settings, SessionFacts facts,
                           AutostartEntry autostart, QString executable, QWidget* parent)
    : QWidget(parent),
      settings_(settings),
      autostart_(std::move(autostart)),
      executable_(std::move(executable)) {
    setAccessibleName(QStringLiteral("SettingsView"));
    setWindowTitle(QStringLiteral("Settings"));

    auto* grid = new QGridLayout;
    grid->setColumnStretch(0, 1);
    grid->setHorizontalSpacing(16);
    addNumberRow(*grid,
                 QStringLiteral("Interval for tracking active applications. Application restart "
                                "required"),
                 QStringLiteral("SettingsTimerIntervalField"), settings_.timerInterval(),
                 [this](double value) { settings_.setTimerInterval(value); });
    addNumberRow(*grid,
                 QStringLiteral("Seconds until tracking stops after an application becomes "
                                "inactive"),
                 QStringLiteral("SettingsMaximumGapLengthField"), settings_.maximumGapLength(),
                 [this](double value) { settings_.setMaximumGapLength(value); });
    addNumberRow(*grid, QStringLiteral("Minimum duration to record tracking data"),
                 QStringLiteral("SettingsMinimumDurationToRecordField"),
                 settings_.minimumDurationToRecord(),
                 [this](double value) { settings_.setMinimumDurationToRecord(value); });
    addNumberRow(*grid, QStringLiteral("Minimum duration to display tracking data"),
                 QStringLiteral("SettingsMinimumDurationToDisplayField"),
                 settings_.minimumDurationToDisplay(),
                 [this](double value) { settings_.setMinimumDurationToDisplay(value); });
    addNumberRow(*grid, QStringLiteral("Seconds without input until tracking pauses"),
                 QStringLiteral("SettingsIdleTimeoutField"), settings_.idleTimeout(),
                 [this](double value) { settings_.setIdleTimeout(value); });

    launchAtLogin_ = new QCheckBox(QStringLiteral("Launch at login"));
    launchAtLogin_->setAccessibleName(QStringLiteral("SettingsLaunchAtLoginToggle"));
    launchAtLogin_->setChecked(settings_.isDetailUnified());
    connect(launchAtLogin_, &QCheckBox::toggled, this, &SettingsView::setLaunchAtLogin);

    auto* session = new QFormLayout;
    session->setLabelAlignment(Qt::AlignLeft);
    const QString backendState = facts.desktopFailure.isEmpty()
                                     ? QStringLiteral("%1: recording").arg(facts.desktopBackend)
                                     : QStringLiteral("%1: not recording (%2)")
                                           .arg(facts.desktopBackend, facts.desktopFailure);
    session->addRow(QStringLiteral("Desktop"),
                    factLabel(backendState, QStringLiteral("SettingsDesktopBackend")));
    session->addRow(QStringLiteral("Records"),
                    factLabel(facts.storePath, QStringLiteral("SettingsStorePath")));
    session->addRow(QStringLiteral("Settings"),
                    factLabel(facts.settingsPath, QStringLiteral("SettingsFilePath")));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 16, 20, 16);
    layout->addWidget(sectionHeading(QStringLiteral("General")));
    layout->addLayout(grid);
    layout->addWidget(launchAtLogin_);
    layout->addWidget(sectionHeading(QStringLiteral("This session")));
    layout->addLayout(session);
    layout->addStretch(1);
    fields_.front()->setFocus();
}

void SettingsView::addNumberRow(QGridLayout& grid, const QString& caption, const QString& name,
                                double value, std::function<void(double)> store) {
    auto* label = new QLabel(caption);
    label->setWordWrap(true);
    auto* field = new QLineEdit(settingText(value));
    field->setAccessibleName(name);
    field->setAlignment(Qt::AlignRight);
    field->setFixedWidth(90);
    label->setBuddy(field);
    // Only Return commits; text that is no number is left as typed and stores nothing.
    connect(field, &QLineEdit::returnPressed, this, [field, store = std::move(store)] {
        if (const auto number = parseSettingText(field->text())) {
            store(*number);
        }
    });
    const int row = static_cast<int>(fields_.size());
    grid.addWidget(label, row, 0);
    grid.addWidget(field, row, 1, Qt::AlignRight | Qt::AlignVCenter);
    fields_.push_back(field);
}

void SettingsView::setLaunchAtLogin(bool isOn) {
    const bool isDone = isOn ? autostart_.enable(executable_) : autostart_.disable();
    if (isDone) {
        settings_.setIsDetailUnified(isOn);
    }
}

void SettingsView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

}  // namespace kivo
