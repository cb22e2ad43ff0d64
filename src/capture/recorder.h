#pragma once

#include <QStringList>
#include <chrono>
#include <optional>
#include <vector>

#include "capture/browser_tabs.h"
#include "capture/focused_window.h"
#include "capture/presence.h"
#include "classify/match_budget.h"
#include "model/application_settings.h"
#include "model/application_state.h"
#include "model/capture_data.h"
#include "model/instant.h"
#include "model/record_store.h"

namespace kivo {

// Turns the timer's ticks into recorded time: each tick samples the desktop, merges the sample
// into the pending captures and writes the captures that ended, in one transaction. When the
// store fails (another program's lock, a full disk), the transaction is rolled back and the ended
// captures wait for the next tick; from then on that backlog is written one capture per
// transaction, so that what fits is written.
class Recorder {
public:
    // A tick never waits longer than this for another program's write lock; the captures wait
    // in memory instead.
    static constexpr std::chrono::milliseconds storeBusyTimeout{200};
    // At the end there is no next tick, so the last write waits a little longer.
    static constexpr std::chrono::milliseconds finishBusyTimeout{2000};

    // Sets the store's busy timeout to storeBusyTimeout.
    Recorder(FocusedWindowSource& desktop, BrowserTabs& browserTabs, RecordStore& store,
             const ApplicationSettings& settings, const Clock& clock);

    // Only these applications are sampled; the list is replaced as a whole.
    void setInstalledApplications(QStringList bundleIds);

    // From now on a tick asks `presence` first and, while the user is away, takes no sample;
    // `state` is told when that starts and ends. Both outlive the recorder. Without it, every
    // tick samples.
    void watchPresence(PresenceSource& presence, ApplicationState& state);

    void captureTick();

    // The clean end (a termination signal, quitting, logging out): the capture in front gets its
    // time up to now, every pending capture is closed as if its gap had passed, and those long
    // enough are recorded through the same rules in one transaction. Call it once the timer has
    // stopped.
    void finish();

    // Open captures, in the order they were first seen, and ended ones still to be written.
    const std::vector<CaptureData>& pendingCaptures() const { return pending_; }
    // The pending captures as `finish` would write them at `now`, for showing what is not yet
    // written; nothing is changed.
    std::vector<CaptureData> capturesEndedAt(Instant now) const;

private:
    bool isUserAway();
    void captureStep();
    void writeEndedCaptures();
    // Records the ended ones of `captures` in one transaction; the store's error when it fails.
    std::optional<QString> write(const std::vector<CaptureData>& captures,
                                 const MatchBudget& budget);

    FocusedWindowSource& desktop_;
    BrowserTabs& browserTabs_;
    RecordStore& store_;
    const ApplicationSettings& settings_;
    const Clock& clock_;
    PresenceSource* presence_ = nullptr;
    ApplicationState* state_ = nullptr;
    QStringList installedBundleIds_;
    std::vector<CaptureData> pending_;
    bool isCatchingUp_ = false;  // a write failed and its captures are still pending
};

}  // namespace kivo
