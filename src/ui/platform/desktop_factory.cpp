#include "ui/platform/desktop_factory.h"

#include "ui/platform/x11_desktop.h"

namespace kivo {

DesktopChoice chooseDesktop() {
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty()) {
        return {nullptr, QStringLiteral("no X11 display to record (DISPLAY is not set)")};
    }
    DesktopChoice choice;
    choice.desktop = X11Desktop::connect(
        {display, XdgEnvironment::fromProcess(), QStringLiteral("/proc")}, choice.failure);
    return choice;
}

}  // namespace kivo
