#pragma once

namespace kivo {

// Kivo with its window and tray item. When Kivo already runs in this session, brings that
// instance's window to the front instead and returns 0. `hidden` (the login autostart) starts
// with the tray item only and leaves a running instance as it is.
int runWindow(int argc, char* argv[], bool hidden = false);

}  // namespace kivo
