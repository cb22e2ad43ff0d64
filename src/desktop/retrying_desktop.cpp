#include "desktop/retrying_desktop.h"

namespace kivo {

RetryingDesktop::RetryingDesktop(Chooser choose, const Clock& clock, Seconds retryInterval)
    : choose_(std::move(choose)),
      clock_(clock),
      retryInterval_(retryInterval),
      lastAttempt_(clock.now()) {}

std::optional<FocusedWindow> RetryingDesktop::focusedWindow() {
    if (!backend_) {
        const Instant now = clock_.now();
        if (now - lastAttempt_ < retryInterval_) {
            return std::nullopt;
        }
        lastAttempt_ = now;
        backend_ = choose_().focusedWindow;
        if (!backend_) {
            return std::nullopt;
        }
    }
    return backend_->focusedWindow();
}

}  // namespace kivo
