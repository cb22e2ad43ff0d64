#pragma once

#include <QHash>
#include <QString>
#include <optional>

#include "desktop/xdg/xdg_application_catalog.h"

namespace kivo {

// What a backend has already found out about a window's application. Resolution reads a few
// /proc files; remembering the answer per window keeps a tick cheap. Answers are forgotten when
// the catalog is scanned anew, and all at once past a bound that only matters for sessions that
// open thousands of windows.
class RememberedResolutions {
public:
    explicit RememberedResolutions(const XdgApplicationCatalog& catalog) : catalog_(catalog) {}

    // The remembered answer for `key`, or the one `resolve(index)` gives, remembered.
    template <class Resolve>
    std::optional<QString> find(const QString& key, Resolve resolve) {
        if (generation_ != catalog_.generation()) {
            answers_.clear();
            generation_ = catalog_.generation();
        }
        if (const auto known = answers_.constFind(key); known != answers_.cend()) {
            return *known;
        }
        if (answers_.size() >= bound) {
            answers_.clear();
        }
        const std::optional<QString> answer = resolve(catalog_.index());
        answers_.insert(key, answer);
        return answer;
    }

private:
    static constexpr qsizetype bound = 256;

    const XdgApplicationCatalog& catalog_;
    QHash<QString, std::optional<QString>> answers_;
    int generation_ = -1;  // the catalog scan the answers came from
};

}  // namespace kivo
