#pragma once

#include <QString>
#include <cstdint>
#include <optional>

namespace kivo {

// The focused window and the application in front that owns it, read together so that no part
// of one answer belongs to another moment.
struct FocusedWindow {
    std::int64_t processId = 0;  // 0 where the desktop names no process
    QString bundleId;            // the application's desktop-file ID
    QString name;                // the application's name in the user's language
    QString title;               // the window's title
};

// The desktop's answer to "what is in front?". Backends that are told of focus changes keep the
// latest state and answer from it; polling backends ask on each call. Called on the main thread
// once per tick; must not block for long.
class FocusedWindowSource {
public:
    virtual ~FocusedWindowSource() = default;

    // Nothing when no installed application's titled window has the focus, or the desktop cannot
    // tell which one has.
    virtual std::optional<FocusedWindow> focusedWindow() = 0;
};

}  // namespace kivo
