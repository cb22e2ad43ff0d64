#pragma once

#include "capture/application_catalog.h"
#include "desktop/xdg/application_index.h"
#include "desktop/xdg/xdg_environment.h"

namespace kivo {

// The installed applications as the desktop entries of the XDG applications folders describe
// them. Every backend resolves windows against the same scan.
class XdgApplicationCatalog final : public ApplicationCatalog {
public:
    explicit XdgApplicationCatalog(XdgEnvironment environment);

    void rescan() override;
    QStringList installedBundleIds() const override { return index_.installedIds(); }
    std::optional<QString> displayName(const QString& bundleId) const override;
    std::optional<QString> iconName(const QString& bundleId) const override;

    const ApplicationIndex& index() const { return index_; }

    // Rises with every rescan, so that callers that remember resolutions know when to forget.
    int generation() const { return generation_; }

private:
    XdgEnvironment environment_;
    ApplicationIndex index_;
    int generation_ = 0;
};

}  // namespace kivo
