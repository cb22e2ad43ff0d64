#include "desktop/wlroots/wlroots_desktop.h"

#include <unistd.h>

#include "desktop/wlroots/sway_ipc.h"
#include "desktop/xdg/application_resolver.h"

namespace kivo {

std::unique_ptr<WlrootsDesktop> WlrootsDesktop::connect(Options options, QString& failure) {
    auto toplevels = ForeignToplevels::connect(options.displayName, failure);
    if (!toplevels) {
        return nullptr;
    }
    return std::unique_ptr<WlrootsDesktop>(
        new WlrootsDesktop(std::move(options), std::move(toplevels)));
}

WlrootsDesktop::WlrootsDesktop(Options options, std::unique_ptr<ForeignToplevels> toplevels)
    : options_(std::move(options)),
      toplevels_(std::move(toplevels)),
      resolutions_(*options_.catalog) {}

ForeignToplevels* WlrootsDesktop::liveToplevels() {
    if (toplevels_ && !toplevels_->update()) {
        toplevels_.reset();
    }
    if (!toplevels_) {
        QString ignoredFailure;
        toplevels_ = ForeignToplevels::connect(options_.displayName, ignoredFailure);
        processActivation_ = 0;
    }
    return toplevels_.get();
}

std::optional<FocusedWindow> WlrootsDesktop::focusedWindow() {
    ForeignToplevels* toplevels = liveToplevels();
    const ForeignToplevels::Toplevel* front = toplevels ? toplevels->activated() : nullptr;
    if (front == nullptr || !front->current.title) {
        return std::nullopt;
    }
    const std::int64_t processId = processIdOf(*front);
    if (processId == ::getpid()) {
        return std::nullopt;
    }
    auto id = applicationIdOf(front->current.appId, processId);
    if (!id) {
        return std::nullopt;
    }
    auto name = options_.catalog->displayName(*id);
    return FocusedWindow{processId, *std::move(id), name.value_or(QString()),
                         *front->current.title};
}

std::int64_t WlrootsDesktop::processIdOf(const ForeignToplevels::Toplevel& toplevel) {
    if (options_.swaySocket.isEmpty()) {
        return 0;
    }
    if (processActivation_ != toplevel.activation) {
        processActivation_ = toplevel.activation;
        processId_ = swayFocusedProcessId(options_.swaySocket, toplevel.current.appId).value_or(0);
    }
    return processId_;
}

std::optional<QString> WlrootsDesktop::applicationIdOf(const QString& appId,
                                                       std::int64_t processId) {
    const QString key = QString::number(processId) % u':' % appId;
    return resolutions_.find(key, [&](const ApplicationIndex& index) {
        return resolveToplevelApplicationId({processId, appId}, options_.procRoot, index);
    });
}

}  // namespace kivo
