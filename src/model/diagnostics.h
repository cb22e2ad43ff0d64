#pragma once

#include <QString>
#include <functional>

namespace kivo {

// Diagnostics are single lines for whoever watches standard output; they are never shown to the
// user, and the operation that prints one degrades and carries on.
void printDiagnostic(const QString& line);

using DiagnosticSink = std::function<void(const QString& line)>;

// Sends diagnostics to `sink` instead of standard output while the object lives, so that tests
// can read the exact lines.
class ScopedDiagnosticSink {
public:
    explicit ScopedDiagnosticSink(DiagnosticSink sink);
    ~ScopedDiagnosticSink();
    ScopedDiagnosticSink(const ScopedDiagnosticSink&) = delete;
    ScopedDiagnosticSink& operator=(const ScopedDiagnosticSink&) = delete;

private:
    DiagnosticSink previous_;
};

}  // namespace kivo
