#pragma once

namespace kivo {

// Kivo with its window and tray item. When Kivo already runs in this session, brings that
// instance's window to the front instead and returns 0.
int runWindow(int argc, char* argv[]);

}  // namespace kivo
