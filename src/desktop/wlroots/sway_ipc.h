#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>

namespace kivo {

// The process behind sway's focused window, asked over sway's IPC socket (SWAYSOCK), provided
// that window's app_id is `appId`: the foreign-toplevel protocol names no process, and the check
// keeps an answer about a window that took the focus meanwhile from being pinned on another.
// Nothing when sway cannot be asked within a short wait or the window is another one.
std::optional<std::int64_t> swayFocusedProcessId(const QByteArray& socketPath,
                                                 const QString& appId);

// The process of the focused node in a get_tree reply, if its app_id (an XWayland window's:
// its class) is `appId`.
std::optional<std::int64_t> focusedProcessIdInTree(const QByteArray& treeJson,
                                                   const QString& appId);

}  // namespace kivo
