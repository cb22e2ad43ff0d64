#pragma once

#include <QString>

namespace kivo {

// Kivo's entry in the XDG autostart folder ($XDG_CONFIG_HOME/autostart, by default
// ~/.config/autostart): while it exists the desktop starts Kivo at login with its window hidden.
class AutostartEntry {
public:
    // The entry under `configHome`; empty: $XDG_CONFIG_HOME, else ~/.config.
    explicit AutostartEntry(QString configHome = {});

    QString filePath() const;
    bool exists() const;
    // Writes an entry that starts `executable` with --hidden. A failure is printed and answered
    // with false.
    bool enable(const QString& executable) const;
    // Removes the entry; an absent entry counts as removed.
    bool disable() const;

private:
    QString configHome_;
};

// The entry's text for `executable`.
QString autostartEntryText(const QString& executable);

}  // namespace kivo
