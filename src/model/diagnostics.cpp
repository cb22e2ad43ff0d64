#include "model/diagnostics.h"

#include <cstdio>
#include <utility>

namespace kivo {

namespace {

// A line that cannot be written (a reader that has gone, a full disk) is dropped: nobody would
// read it, and the recording matters more. The error flag is cleared so that the next line tries
// again.
void printOnStandardOutput(const QString& line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
    std::clearerr(stdout);
}

DiagnosticSink& currentSink() {
    static DiagnosticSink sink = printOnStandardOutput;
    return sink;
}

}  // namespace

void printDiagnostic(const QString& line) {
    currentSink()(line);
}

ScopedDiagnosticSink::ScopedDiagnosticSink(DiagnosticSink sink)
    : previous_(std::exchange(currentSink(), std::move(sink))) {}

ScopedDiagnosticSink::~ScopedDiagnosticSink() {
    currentSink() = std::move(previous_);
}

}  // namespace kivo
