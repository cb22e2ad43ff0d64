#include "desktop/wlroots/wlroots_desktop.h"

#include <unistd.h>

#include "desktop/wlroots/sway_ipc.h"
#include "desktop/xdg/application_resolver.h"

namespace kivo {

namespace {

// Resolution may read a few /proc files; the bound only matters for sessions that start
// thousands of processes.
constexpr qsizetype maximumRememberedOwners = 256;

}  // namespace

std::unique_ptr<WlrootsDesktop> WlrootsDesktop::connect(Options options, QString& failure) {
    auto toplevels = ForeignToplevels::connect(options.displayName, failure);
    if (!toplevels) {
        return nullptr;
    }
    return std::unique_ptr<WlrootsDesktop>(
        new WlrootsDesktop(std::move(options), std::move(toplevels)));
}

WlrootsDesktop::WlrootsDesktop(Options options, std::unique_ptr<ForeignToplevels> toplevels)
    : options_(std::move(options)), toplevels_(std::move(toplevels)) {}

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
    if (resolvedGeneration_ != options_.catalog->generation()) {
        resolvedIds_.clear();
        resolvedGeneration_ = options_.catalog->generation();
    }
    if (const auto known = resolvedIds_.constFind(key); known != resolvedIds_.cend()) {
        return *known;
    }
    if (resolvedIds_.size() >= maximumRememberedOwners) {
        resolvedIds_.clear();
    }
    const auto id = resolveToplevelApplicationId({processId, appId}, options_.procRoot,
                                                 options_.catalog->index());
    resolvedIds_.insert(key, id);
    return id;
}

}  // namespace kivo
