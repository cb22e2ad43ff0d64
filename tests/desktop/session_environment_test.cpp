#include "desktop/session_environment.h"

#include <gtest/gtest.h>

namespace kivo {
namespace {

TEST(SessionEnvironmentTest, SessionTypeDecidesAndWaylandIsNeverReadThroughXWayland) {
    const struct {
        SessionEnvironment environment;
        SessionKind kind;
        const char* failureWords;  // nullptr: no failure
    } cases[] = {
        {{"", ":0", "x11", "GNOME", "", "", ""}, SessionKind::X11, nullptr},
        {{"", ":0", "", "", "", "", ""}, SessionKind::X11, nullptr},
        {{"", "", "tty", "", "", "", ""}, SessionKind::X11, nullptr},
        // A Wayland compositor nested in an X11 session: the session stays X11.
        {{"wayland-1", ":0", "x11", "sway", "", "", ""}, SessionKind::X11, nullptr},
        // Without a session type, WAYLAND_DISPLAY means Wayland, even with XWayland's DISPLAY.
        {{"wayland-1", ":1", "", "sway", "/run/user/1000/sway-ipc.sock", "", ""},
         SessionKind::Wlroots,
         nullptr},
        {{"wayland-0", ":0", "wayland", "", "", "", ""}, SessionKind::Wlroots, nullptr},
        {{"wayland-0", "", "Wayland", "labwc:wlroots", "", "", ""}, SessionKind::Wlroots, nullptr},
        {{"", ":0", "wayland", "sway", "", "", ""},
         SessionKind::Wlroots,
         "WAYLAND_DISPLAY is not set"},
        {{"wayland-0", ":0", "wayland", "ubuntu:GNOME", "", "", ""}, SessionKind::Gnome, nullptr},
        {{"wayland-0", ":0", "wayland", "gnome", "", "", ""}, SessionKind::Gnome, nullptr},
        {{"wayland-0", ":0", "wayland", "KDE", "", "", ""}, SessionKind::Plasma, nullptr},
        {{"wayland-1", ":0", "", "Hyprland", "", "/run/user/1000", "v0.40_1718"},
         SessionKind::Hyprland,
         nullptr},
        {{"wayland-1", ":0", "", "Hyprland", "", "/run/user/1000", ""},
         SessionKind::Hyprland,
         "HYPRLAND_INSTANCE_SIGNATURE"},
    };
    for (const auto& [environment, kind, failureWords] : cases) {
        SCOPED_TRACE(QByteArray(environment.waylandDisplay + '|' + environment.x11Display + '|' +
                                environment.sessionType + '|' + environment.currentDesktop)
                         .toStdString());
        const SessionVerdict verdict = classifySession(environment);
        EXPECT_EQ(verdict.kind, kind);
        if (failureWords == nullptr) {
            EXPECT_TRUE(verdict.failure.isEmpty()) << verdict.failure.toStdString();
        } else {
            EXPECT_TRUE(verdict.failure.contains(QLatin1String(failureWords)))
                << verdict.failure.toStdString();
            EXPECT_FALSE(verdict.failure.contains(u'\n'));
        }
    }
}

}  // namespace
}  // namespace kivo
