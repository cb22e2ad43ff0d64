#pragma once

namespace kivo {

// The window application behind `kivo`: no arguments open the window and tray item, `--hidden`
// starts in the tray only, `record` records without a window.
int runApplication(int argc, char* argv[]);

}  // namespace kivo
