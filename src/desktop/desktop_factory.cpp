#include "desktop/desktop_factory.h"

#include "desktop/x11/x11_desktop.h"

namespace kivo {

DesktopChoice chooseDesktop(const XdgApplicationCatalog& catalog) {
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty()) {
        return {nullptr, QStringLiteral("no X11 display to record (DISPLAY is not set)")};
    }
    DesktopChoice choice;
    choice.focusedWindow =
        X11Desktop::connect({display, &catalog, QStringLiteral("/proc")}, choice.failure);
    return choice;
}

}  // namespace kivo
