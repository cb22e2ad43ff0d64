#pragma once

#include <filesystem>

namespace kivo {

// Kivo is two executables: `kivo`, the command users and desktop entries run, which prints
// reports itself and starts the window application for everything else; and `kivo-app`, the
// window and the recorder, which alone loads the graphical libraries. Installed, the second lives
// in libexec; in a build tree both lie side by side.

// Where an executable that is installed at `installedRelative` from `self`'s folder is found:
// beside `self` when it is there, else at its installed place.
std::filesystem::path companionExecutable(const std::filesystem::path& self,
                                          const std::filesystem::path& installedRelative);

// The running executable's own path.
std::filesystem::path runningExecutable();

// `kivo-app`, seen from `kivo`.
std::filesystem::path windowApplicationExecutable();

// `kivo`, seen from `kivo-app`: what the login autostart entry runs.
std::filesystem::path launcherExecutable();

}  // namespace kivo
