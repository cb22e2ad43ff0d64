#include "model/application_settings.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QSignalSpy>
#include <array>

#include "model/application_state.h"
#include "support/temp_home.h"

namespace kivo {
namespace {

using test::TempHome;

void writeByHand(const TempHome& home, const QString& key, const QVariant& value) {
    QSettings(home.settingsPath(), QSettings::NativeFormat).setValue(key, value);
}

TEST(ApplicationSettings, DefaultsAndTheSettersFloorOfOne) {
    TempHome home;
    auto settings = home.openSettings();
    EXPECT_EQ(settings->timerInterval(), 1.0);
    EXPECT_EQ(settings->maximumGapLength(), 60.0);
    EXPECT_EQ(settings->minimumDurationToRecord(), 1.0);
    EXPECT_EQ(settings->minimumDurationToDisplay(), 1.0);
    EXPECT_FALSE(settings->savedProjectTree().has_value());

    settings->setTimerInterval(0.5);
    EXPECT_EQ(settings->timerInterval(), 1.0);
    settings->setTimerInterval(2.5);
    settings->setMaximumGapLength(-3.0);
    settings->setMinimumDurationToDisplay(std::numeric_limits<double>::quiet_NaN());
    const auto reopened = home.openSettings();
    EXPECT_EQ(reopened->timerInterval(), 2.5);
    EXPECT_EQ(reopened->maximumGapLength(), 1.0);
    EXPECT_EQ(reopened->minimumDurationToDisplay(), 1.0);
}

TEST(ApplicationSettings, ReadersReplaceOnlyAZeroExceptTheDisplayMinimum) {
    TempHome home;
    const auto settings = home.openSettings();
    writeByHand(home, QStringLiteral("maximumGapLength"), 0.2);
    writeByHand(home, QStringLiteral("minimumDurationToDisplay"), 0.2);
    writeByHand(home, QStringLiteral("minimumDurationToRecord"), 0.5);
    writeByHand(home, QStringLiteral("timerInterval"), 0.0);
    // Read at each use: the values written after opening are the ones answered.
    EXPECT_EQ(settings->maximumGapLength(), 0.2);
    EXPECT_EQ(settings->minimumDurationToDisplay(), 1.0);
    EXPECT_EQ(settings->minimumDurationToRecord(), 0.5);
    EXPECT_EQ(settings->timerInterval(), 1.0);
}

TEST(ApplicationSettings, HandWrittenValuesThatAreNoUsableDurationReadAsDefaults) {
    // The text after "=" in a settings file written by hand, and what the four readers answer:
    // timer interval, gap, minimum to record, minimum to display.
    const std::pair<const char*, std::array<double, 4>> cases[] = {
        {"-1", {1, 60, 1, 1}},         {"-100", {1, 60, 1, 1}},
        {"nan", {1, 60, 1, 1}},        {"inf", {1, 60, 1, 1}},
        {"-inf", {1, 60, 1, 1}},       {"1e308", {1, 60, 1, 1}},
        {"-1e308", {1, 60, 1, 1}},     {"eleven", {1, 60, 1, 1}},
        {"86401", {1, 60, 1, 1}},      {"0", {1, 60, 1, 1}},
        {"0.2", {0.2, 0.2, 0.2, 1}},   {"86400", {86400, 86400, 86400, 86400}},
        {"2.5", {2.5, 2.5, 2.5, 2.5}},
    };
    for (const auto& [text, expected] : cases) {
        TempHome home;
        QDir().mkpath(QFileInfo(home.settingsPath()).path());
        QFile file(home.settingsPath());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("[General]\n"));
        for (const char* key : {"timerInterval", "maximumGapLength", "minimumDurationToRecord",
                                "minimumDurationToDisplay"}) {
            file.write(QByteArray(key) + '=' + text + '\n');
        }
        file.close();
        const auto settings = home.openSettings();
        const std::array<double, 4> read{settings->timerInterval(), settings->maximumGapLength(),
                                         settings->minimumDurationToRecord(),
                                         settings->minimumDurationToDisplay()};
        EXPECT_EQ(read, expected) << text;
    }
}

TEST(ApplicationSettings, IdleTimeoutDefaultsTo300AndZeroTurnsItOff) {
    TempHome home;
    const auto settings = home.openSettings();
    EXPECT_EQ(settings->idleTimeout(), 300.0);
    // What the setter is given, and what is read back.
    const std::pair<double, double> cases[] = {{0.0, 0.0}, {-5.0, 0.0}, {0.5, 1.0}, {600.0, 600.0}};
    for (const auto& [given, read] : cases) {
        settings->setIdleTimeout(given);
        EXPECT_EQ(home.openSettings()->idleTimeout(), read) << "given " << given;
    }
    writeByHand(home, QStringLiteral("idleTimeout"), QStringLiteral("soon"));
    EXPECT_EQ(settings->idleTimeout(), 300.0) << "no number reads as unset";
    for (const char* unusable : {"nan", "-inf", "-3"}) {
        writeByHand(home, QStringLiteral("idleTimeout"), QString::fromLatin1(unusable));
        EXPECT_EQ(settings->idleTimeout(), 300.0) << unusable;
    }
    writeByHand(home, QStringLiteral("idleTimeout"), 0.2);
    EXPECT_EQ(settings->idleTimeout(), 0.2);
}

TEST(ApplicationSettings, SavedTreeMustBeAByteArrayValue) {
    TempHome home;
    const QByteArray document = R"([{"id":"A"}])";
    home.openSettings()->setSavedProjectTree(document);
    EXPECT_EQ(home.openSettings()->savedProjectTree(), document);

    writeByHand(home, QStringLiteral("savedProjectTree"), QStringLiteral("[]"));
    EXPECT_FALSE(home.openSettings()->savedProjectTree().has_value());
}

TEST(ApplicationSettings, TogglesPersistAndAnnounceChanges) {
    TempHome home;
    auto settings = home.openSettings();
    QSignalSpy changes(settings.get(), &ApplicationSettings::settingChanged);
    settings->setIsDetailUnified(true);
    settings->setIsCompactColumns(true);
    ASSERT_EQ(changes.count(), 2);
    EXPECT_EQ(changes.at(0).at(0).toString(), QStringLiteral("isDetailUnified"));
    EXPECT_TRUE(home.openSettings()->isDetailUnified());
    EXPECT_TRUE(home.openSettings()->isCompactColumns());
}

TEST(ApplicationState, AnnouncesOnlyRealChangesOfBackgroundAndAway) {
    ApplicationState state;
    QSignalSpy changes(&state, &ApplicationState::isBackgroundChanged);
    EXPECT_FALSE(state.isBackground());
    state.setIsBackground(true);
    state.setIsBackground(true);
    state.setIsBackground(false);
    EXPECT_EQ(changes.count(), 2);

    QSignalSpy awayChanges(&state, &ApplicationState::isAwayChanged);
    state.setIsAway(true);
    state.setIsAway(true);
    EXPECT_TRUE(state.isAway());
    EXPECT_EQ(awayChanges.count(), 1);
}

}  // namespace
}  // namespace kivo
