#include "model/diagnostics.h"

#include <cstdio>
#include <utility>

namespace kivo {

namespace {

void printOnStandardOutput(const QString& line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
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
