#pragma once

#include <functional>
#include <memory>

#include "capture/focused_window.h"
#include "desktop/desktop_factory.h"
#include "model/instant.h"

namespace kivo {

// A desktop for a session where no backend could be chosen yet (a window manager that starts
// after Kivo, a display that comes later): it answers "nothing in front" and tries the choice
// again every `retryInterval`, then answers from the backend it found.
class RetryingDesktop final : public FocusedWindowSource {
public:
    using Chooser = std::function<DesktopChoice()>;

    RetryingDesktop(Chooser choose, const Clock& clock, Seconds retryInterval = Seconds{10.0});

    std::optional<FocusedWindow> focusedWindow() override;
    bool hasBackend() const { return backend_ != nullptr; }

private:
    Chooser choose_;
    const Clock& clock_;
    Seconds retryInterval_;
    Instant lastAttempt_;
    std::unique_ptr<FocusedWindowSource> backend_;
};

}  // namespace kivo
