#include "model/application_settings.h"

#include <gtest/gtest.h>

#include <QSettings>
#include <QSignalSpy>

#include "model/application_state.h"
#include "support/temp_home.h"

namespace kivo {
namespace {

using test::TempHome;

void writeByHand(const TempHome& home, const QString& key, const QVariant& value) {
    QSettings raw(home.settingsPath(), QSettings::NativeFormat);
    raw.setValue(key, value);
}

TEST(ApplicationSettings, FreshAccountReadsTheDefaults) {
    TempHome home;
    const auto settings = home.openSettings();
    EXPECT_EQ(settings->timerInterval(), 1.0);
    EXPECT_EQ(settings->maximumGapLength(), 60.0);
    EXPECT_EQ(settings->minimumDurationToRecord(), 1.0);
    EXPECT_EQ(settings->minimumDurationToDisplay(), 1.0);
    EXPECT_FALSE(settings->isDetailUnified());
    EXPECT_FALSE(settings->isCompactColumns());
    EXPECT_FALSE(settings->savedProjectTree().has_value());
}

TEST(ApplicationSettings, SettersStoreNothingBelowOne) {
    TempHome home;
    auto settings = home.openSettings();
    settings->setTimerInterval(0.5);
    EXPECT_EQ(settings->timerInterval(), 1.0);
    settings->setTimerInterval(2.5);
    settings->setMaximumGapLength(-3.0);
    settings->setMinimumDurationToRecord(1.0);
    settings->setMinimumDurationToDisplay(std::numeric_limits<double>::quiet_NaN());

    const auto reopened = home.openSettings();
    EXPECT_EQ(reopened->timerInterval(), 2.5);
    EXPECT_EQ(reopened->maximumGapLength(), 1.0);
    EXPECT_EQ(reopened->minimumDurationToRecord(), 1.0);
    EXPECT_EQ(reopened->minimumDurationToDisplay(), 1.0);
}

TEST(ApplicationSettings, ReadersReplaceOnlyAZeroExceptTheDisplayMinimum) {
    TempHome home;
    writeByHand(home, QStringLiteral("maximumGapLength"), 0.2);
    writeByHand(home, QStringLiteral("minimumDurationToDisplay"), 0.2);
    writeByHand(home, QStringLiteral("minimumDurationToRecord"), 0.5);
    writeByHand(home, QStringLiteral("timerInterval"), 0.0);
    const auto settings = home.openSettings();
    EXPECT_EQ(settings->maximumGapLength(), 0.2);
    EXPECT_EQ(settings->minimumDurationToDisplay(), 1.0);
    EXPECT_EQ(settings->minimumDurationToRecord(), 0.5);
    EXPECT_EQ(settings->timerInterval(), 1.0);
}

TEST(ApplicationSettings, ValuesAreReadAtEachUse) {
    TempHome home;
    const auto settings = home.openSettings();
    auto writer = home.openSettings();
    EXPECT_EQ(settings->maximumGapLength(), 60.0);
    writer->setMaximumGapLength(5.0);
    EXPECT_EQ(settings->maximumGapLength(), 5.0);
}

TEST(ApplicationSettings, SavedTreeMustBeAByteArrayValue) {
    TempHome home;
    auto settings = home.openSettings();
    const QByteArray document = R"([{"id":"A"}])";
    settings->setSavedProjectTree(document);
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
    EXPECT_EQ(changes.count(), 2);
    EXPECT_EQ(changes.at(0).at(0).toString(), QStringLiteral("isDetailUnified"));
    const auto reopened = home.openSettings();
    EXPECT_TRUE(reopened->isDetailUnified());
    EXPECT_TRUE(reopened->isCompactColumns());
}

TEST(ApplicationState, AnnouncesOnlyRealChangesOfBackground) {
    ApplicationState state;
    QSignalSpy changes(&state, &ApplicationState::isBackgroundChanged);
    EXPECT_FALSE(state.isBackground());
    state.setIsBackground(true);
    state.setIsBackground(true);
    state.setIsBackground(false);
    ASSERT_EQ(changes.count(), 2);
    EXPECT_TRUE(changes.at(0).at(0).toBool());
    EXPECT_FALSE(changes.at(1).at(0).toBool());
}

}  // namespace
}  // namespace kivo
