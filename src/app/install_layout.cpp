#include "app/install_layout.h"

#include <system_error>

namespace kivo {

std::filesystem::path companionExecutable(const std::filesystem::path& self,
                                          const std::filesystem::path& installedRelative) {
    const std::filesystem::path folder = self.parent_path();
    std::error_code error;
    const std::filesystem::path beside = folder / installedRelative.filename();
    if (std::filesystem::exists(beside, error)) {
        return beside;
    }
    return (folder / installedRelative).lexically_normal();
}

std::filesystem::path runningExecutable() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

std::filesystem::path windowApplicationExecutable() {
    return companionExecutable(runningExecutable(), KIVO_APP_FROM_LAUNCHER);
}

std::filesystem::path launcherExecutable() {
    return companionExecutable(runningExecutable(), KIVO_LAUNCHER_FROM_APP);
}

}  // namespace kivo
