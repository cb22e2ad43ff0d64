#pragma once

struct wl_display;

namespace kivo {

// Reads and applies whatever the compositor has sent on `display` without waiting for more, so
// that a tick never blocks on the compositor; reading stops after a bounded number of socket
// reads, so that a flood cannot hold a tick either. Pending requests are sent first. False once
// the connection has failed.
bool dispatchWithoutWaiting(wl_display* display);

}  // namespace kivo
