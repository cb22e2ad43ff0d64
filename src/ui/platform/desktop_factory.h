#pragma once

#include <QString>
#include <memory>

#include "capture/desktop.h"

namespace kivo {

struct DesktopChoice {
    std::unique_ptr<Desktop> desktop;  // null when no backend can serve this session
    QString failure;                   // why not, in one line
};

// The desktop backend for this session, chosen from the process environment. Today that is the
// X server named by DISPLAY when an EWMH window manager runs there.
DesktopChoice chooseDesktop();

}  // namespace kivo
