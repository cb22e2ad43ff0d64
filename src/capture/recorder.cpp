#include "capture/recorder.h"

#include <algorithm>

#include "capture/browser_table.h"
#include "capture/capture_merging.h"
#include "capture/capture_recording.h"
#include "capture/sampling.h"
#include "model/diagnostics.h"

namespace kivo {

Recorder::Recorder(FocusedWindowSource& desktop, BrowserTabs& browserTabs, RecordStore& store,
                   const ApplicationSettings& settings, const Clock& clock)
    : desktop_(desktop),
      browserTabs_(browserTabs),
      store_(store),
      settings_(settings),
      clock_(clock) {
    store_.setBusyTimeout(storeBusyTimeout);
}

void Recorder::setInstalledApplications(QStringList bundleIds) {
    installedBundleIds_ = std::move(bundleIds);
}

void Recorder::watchPresence(PresenceSource& presence, ApplicationState& state) {
    presence_ = &presence;
    state_ = &state;
}

void Recorder::captureTick() {
    // Away, the tick is one without a sample: nothing is added and nothing closes early, so the
    // capture in front when the user left gets one period for the whole absence.
    if (!isUserAway()) {
        captureStep();
    }
    writeEndedCaptures();
}

bool Recorder::isUserAway() {
    if (presence_ == nullptr) {
        return false;
    }
    const bool isAway = currentPresence(*presence_, settings_.idleTimeout()) != Presence::present;
    state_->setIsAway(isAway);
    return isAway;
}

void Recorder::captureStep() {
    if (const auto sample = takeSample(desktop_, browserTabs_, clock_, installedBundleIds_,
                                       desktopBrowserTable())) {
        mergeSample(pending_, *sample, settings_);
    }
}

void Recorder::writeEndedCaptures() {
    const auto isEnded = [](const CaptureData& capture) { return capture.isEnd; };
    if (std::none_of(pending_.begin(), pending_.end(), isEnded)) {
        return;
    }
    const MatchBudget budget;
    if (!isCatchingUp_) {
        if (const auto error = write(pending_, budget)) {
            isCatchingUp_ = true;
            printDiagnostic(
                QStringLiteral("Could not write the finished captures, trying again next tick: ") +
                *error);
        } else {
            std::erase_if(pending_, isEnded);
        }
        return;
    }
    for (auto capture = pending_.begin(); capture != pending_.end();) {
        if (!capture->isEnd) {
            ++capture;
        } else if (write({*capture}, budget)) {
            return;  // still failing; the rest waits with it
        } else {
            capture = pending_.erase(capture);
        }
    }
    isCatchingUp_ = false;
}

void Recorder::finish() {
    endCaptures(pending_, clock_.now(), settings_);
    store_.setBusyTimeout(finishBusyTimeout);
    if (const auto error = write(pending_, MatchBudget())) {
        printDiagnostic(QStringLiteral("Could not write the captures open at the end: ") + *error);
    }
    pending_.clear();
    store_.setBusyTimeout(storeBusyTimeout);
}

std::vector<CaptureData> Recorder::capturesEndedAt(Instant now) const {
    std::vector<CaptureData> captures = pending_;
    endCaptures(captures, now, settings_);
    return captures;
}

std::optional<QString> Recorder::write(const std::vector<CaptureData>& captures,
                                       const MatchBudget& budget) {
    try {
        recordCaptures(captures, store_, settings_, clock_.now(), budget);
        store_.save();
        return std::nullopt;
    } catch (const StoreError& error) {
        store_.rollback();
        return QString::fromUtf8(error.what());
    }
}

}  // namespace kivo
