#pragma once

#include <QStringList>

#include "model/diagnostics.h"

namespace kivo::test {

// Collects the diagnostic lines printed while the object lives, instead of printing them.
class CapturedDiagnostics {
public:
    CapturedDiagnostics() : sink_([this](const QString& line) { lines_.append(line); }) {}

    const QStringList& lines() const { return lines_; }
    void clear() { lines_.clear(); }

private:
    QStringList lines_;
    ScopedDiagnosticSink sink_;
};

}  // namespace kivo::test
