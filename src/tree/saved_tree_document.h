#pragma once

#include <QByteArray>
#include <optional>
#include <vector>

#include "tree/tree_items.h"

namespace kivo {

// The tree layout kept under "savedProjectTree": a compact JSON array with one object per
// project ("id", "name", "duration", "isExpanded", "isArchived", "isToggled", "filters") and one
// per filter ("id", "name", "duration", "isToggled"); ids upper-case without braces.
QByteArray encodeSavedTree(const std::vector<ProjectTreeItem>& projects);

// Nothing unless the whole document is well formed: a missing key, a value of the wrong kind, a
// duration that is no exact 64-bit integer, or an id named twice anywhere rejects it. Keys it
// does not know are ignored.
std::optional<std::vector<ProjectTreeItem>> decodeSavedTree(const QByteArray& document);

}  // namespace kivo
