#pragma once

#include <QStringList>

#include "model/diagnostics.h"

namespace kivo::test {

// Collects the diagnostic lines printed while the object lives, instead of printing them.
struct CapturedDiagnostics {
    QStringList lines;
    ScopedDiagnosticSink sink{[this](const QString& line) { lines.append(line); }};
};

}  // namespace kivo::test
