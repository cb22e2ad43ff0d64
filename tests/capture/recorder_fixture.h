#pragma once

#include <gtest/gtest.h>

#include <QSettings>
#include <functional>

#include "capture/recorder.h"
#include "model/unassigned_entries.h"
#include "support/captured_diagnostics.h"
#include "support/fake_desktop.h"
#include "support/manual_clock.h"
#include "support/temp_home.h"

namespace kivo::test {

inline const QString editorId = QStringLiteral("org.gnome.TextEditor");
inline const QString chromeId = QStringLiteral("com.google.Chrome");
inline const QString terminalId = QStringLiteral("org.gnome.Terminal");

// A recorder on a fresh store and settings, with a scripted desktop and a clock the test moves.
class RecorderTest : public testing::Test {
protected:
    RecorderTest() { recorder.setInstalledApplications({editorId, chromeId, terminalId}); }

    void tickAfter(double seconds) {
        clock.advance(seconds);
        recorder.captureTick();
    }

    void tickEverySecond(int count) {
        for (int tick = 0; tick < count; ++tick) {
            tickAfter(1.0);
        }
    }

    // The editor shows `title` for `seconds`, sampled once a second; the first sample opens it.
    void useEditor(const QString& title, int seconds) {
        desktop.show(editorId, QStringLiteral("Text Editor"), title);
        tickEverySecond(seconds + 1);
    }

    void useBrowser(const QString& title, const QString& address, int seconds) {
        desktop.showTab(chromeId, QStringLiteral("Google Chrome"), title, address);
        tickEverySecond(seconds + 1);
    }

    // Moves to a terminal for longer than the default gap, so that earlier captures are written.
    void leaveForLongerThanTheGap() {
        desktop.show(terminalId, QStringLiteral("Terminal"), QStringLiteral("~"));
        tickAfter(61.0);
    }

    // Writes a setting as a hand-edited file would, past the setters' floor of 1.0.
    void writeSetting(const QString& key, double value) {
        QSettings(home.settingsPath(), QSettings::NativeFormat).setValue(key, value);
    }

    Filter insertFilter(const QString& bundleId, std::function<void(Filter&)> configure = {}) {
        auto filter = newRecord<Filter>(clock.now());
        filter.projectId = QUuid::createUuid();
        filter.appBundleId = bundleId;
        filter.appName = QStringLiteral("filtered ") + bundleId;
        if (configure) {
            configure(filter);
        }
        store->insert(filter);
        store->save();
        return filter;
    }

    Filter unassignedFilter() {
        ensureUnassignedEntries(*store, clock.now());
        return store->fetch<Filter>(live()).front();
    }

    std::vector<Activity> activities() { return store->fetch<Activity>(live()); }

    template <class Total>
    std::vector<Total> totalsOf(QDate date) {
        return store->fetch<Total>(liveCreatedWithin(localDay(date)));
    }

    TempHome home;
    std::unique_ptr<RecordStore> store = home.openStore();
    std::unique_ptr<ApplicationSettings> settings = home.openSettings();
    ManualClock clock;
    FakeDesktop desktop;
    Recorder recorder{desktop, *store, *settings, clock};
};

}  // namespace kivo::test
