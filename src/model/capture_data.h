#pragma once

#include <QString>
#include <optional>

#include "model/instant.h"

namespace kivo {

// One open capture: a stretch of use of one application, title and address, merged from
// consecutive samples. Recording extends it in place; matching may cut its title and address.
struct CaptureData {
    double duration = 0.0;  // seconds accumulated so far
    QString name;           // the application's display name
    QString bundleId;       // the application's identifier (an XDG desktop-file ID on Linux)
    std::optional<QString> title;
    // "" for applications that are not browsers; none while a browser has not yet said which tab
    // is in front
    std::optional<QString> url;
    bool isEnd = false;
    Instant createdAt{};
    Instant updatedAt{};
    // The last sample showed it: the time until the next sample is its own.
    bool isInFront = false;

    friend bool operator==(const CaptureData&, const CaptureData&) = default;
};

}  // namespace kivo
