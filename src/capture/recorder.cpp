#include "capture/recorder.h"

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
      clock_(clock) {}

void Recorder::setInstalledApplications(QStringList bundleIds) {
    installedBundleIds_ = std::move(bundleIds);
}

void Recorder::captureTick() {
    captureStep();
    if (writeEndedCaptures()) {
        std::erase_if(pending_, [](const CaptureData& capture) { return capture.isEnd; });
    }
}

void Recorder::captureStep() {
    if (const auto sample = takeSample(desktop_, browserTabs_, clock_, installedBundleIds_,
                                       desktopBrowserTable())) {
        mergeSample(pending_, *sample, settings_);
    }
}

bool Recorder::writeEndedCaptures() {
    try {
        recordCaptures(pending_, store_, settings_, clock_.now());
        store_.save();
        return true;
    } catch (const StoreError& error) {
        store_.rollback();
        printDiagnostic(
            QStringLiteral("Could not write the finished captures, trying again next tick: ") +
            QString::fromUtf8(error.what()));
        return false;
    }
}

}  // namespace kivo
