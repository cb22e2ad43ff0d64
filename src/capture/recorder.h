#pragma once

#include <QStringList>
#include <vector>

#include "capture/browser_tabs.h"
#include "capture/focused_window.h"
#include "capture/presence.h"
#include "model/application_settings.h"
#include "model/application_state.h"
#include "model/capture_data.h"
#include "model/instant.h"
#include "model/record_store.h"

namespace kivo {

// Turns the timer's ticks into recorded time: each tick samples the desktop, merges the sample
// into the pending captures and writes the captures that ended, in one transaction. When the
// store fails, the transaction is rolled back and the ended captures wait for the next tick.
class Recorder {
public:
    Recorder(FocusedWindowSource& desktop, BrowserTabs& browserTabs, RecordStore& store,
             const ApplicationSettings& settings, const Clock& clock);

    // Only these applications are sampled; the list is replaced as a whole.
    void setInstalledApplications(QStringList bundleIds);

    // From now on a tick asks `presence` first and, while the user is away, takes no sample;
    // `state` is told when that starts and ends. Both outlive the recorder. Without it, every
    // tick samples.
    void watchPresence(PresenceSource& presence, ApplicationState& state);

    void captureTick();

    // Open captures, in the order they were first seen, and ended ones still to be written.
    const std::vector<CaptureData>& pendingCaptures() const { return pending_; }

private:
    bool isUserAway();
    void captureStep();
    bool writeEndedCaptures();

    FocusedWindowSource& desktop_;
    BrowserTabs& browserTabs_;
    RecordStore& store_;
    const ApplicationSettings& settings_;
    const Clock& clock_;
    PresenceSource* presence_ = nullptr;
    ApplicationState* state_ = nullptr;
    QStringList installedBundleIds_;
    std::vector<CaptureData> pending_;
};

}  // namespace kivo
