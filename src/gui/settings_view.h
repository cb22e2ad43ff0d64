#pragma once

#include <QString>
#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

#include "gui/autostart_entry.h"

QT_BEGIN_NAMESPACE
class QCheckBox;
class QGridLayout;
class QLineEdit;
QT_END_NAMESPACE

namespace kivo {

class ApplicationSettings;

// What the settings window tells about this session, read-only.
struct SessionFacts {
    QString desktopBackend;  // which desktop backend records
    QString desktopFailure;  // why it does not work, empty when it does
    QString storePath;
    QString settingsPath;
};

// The settings window: the numeric recording settings, each committed with Return, launch at
// login, and where this session records to. Its fields are filled when it opens.
class SettingsView : public QWidget {
    Q_OBJECT

public:
    // `executable` is what the autostart entry starts.
    SettingsView(ApplicationSettings& settings, SessionFacts facts, AutostartEntry autostart,
                 QString executable, QWidget* parent = nullptr);

    QLineEdit& timerIntervalField() const { return *fields_.at(0); }
    QLineEdit& maximumGapLengthField() const { return *fields_.at(1); }
    QLineEdit& minimumDurationToRecordField() const { return *fields_.at(2); }
    QLineEdit& minimumDurationToDisplayField() const { return *fields_.at(3); }
    QLineEdit& idleTimeoutField() const { return *fields_.at(4); }
    QCheckBox& launchAtLoginToggle() const { return *launchAtLogin_; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addNumberRow(QGridLayout& grid, const QString& caption, const QString& name, double value,
                      std::function<void(double)> store);
    void setLaunchAtLogin(bool isOn);

    ApplicationSettings& settings_;
    AutostartEntry autostart_;
    QString executable_;
    std::vector<QLineEdit*> fields_;
    QCheckBox* launchAtLogin_ = nullptr;
};

// A setting's text: the shortest form that reads back as the same double, with a ".0" on whole
// numbers (1 shows as 1.0, 2.5 as 2.5).
QString settingText(double value);
// The number in a committed field, read in the C locale: nothing for empty text, text that
// begins with white space, text that is not wholly a decimal or hexadecimal floating-point
// number, or a number that is not finite.
std::optional<double> parseSettingText(const QString& text);

// Which desktop backend the session's environment selects, in words.
QString sessionDesktopBackend();

}  // namespace kivo
