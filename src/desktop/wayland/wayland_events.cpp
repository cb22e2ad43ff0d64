#include "desktop/wayland/wayland_events.h"

#include <poll.h>
#include <wayland-client.h>

#include <cerrno>

namespace kivo {

namespace {

constexpr int maximumReadsPerDispatch = 16;

}  // namespace

bool dispatchWithoutWaiting(wl_display* display) {
    for (int read = 0; read < maximumReadsPerDispatch; ++read) {
        while (wl_display_prepare_read(display) != 0) {
            if (wl_display_dispatch_pending(display) < 0) {
                return false;
            }
        }
        if (wl_display_flush(display) < 0 && errno != EAGAIN) {
            wl_display_cancel_read(display);
            return false;
        }
        pollfd socket{wl_display_get_fd(display), POLLIN, 0};
        const int ready = ::poll(&socket, 1, 0);
        if (ready <= 0) {
            wl_display_cancel_read(display);
            if (ready < 0 && errno != EINTR) {
                return false;
            }
            break;
        }
        if (wl_display_read_events(display) < 0) {
            return false;
        }
    }
    return wl_display_dispatch_pending(display) >= 0;
}

}  // namespace kivo
