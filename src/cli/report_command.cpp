#include "cli/report_command.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include "cli/report_arguments.h"
#include "cli/report_contents.h"
#include "cli/report_json.h"
#include "cli/report_text.h"
#include "model/application_settings.h"
#include "model/instant.h"
#include "model/local_day.h"
#include "model/record_store.h"

namespace kivo {

namespace {

QStringList optionsOf(int argc, char* argv[]) {
    QStringList options;
    for (int i = 2; i < argc; ++i) {
        options.append(QString::fromLocal8Bit(argv[i]));
    }
    return options;
}

// The user's store, read-only. Before the tracker has ever run there is none; the report is
// then drawn from an empty store in a scratch folder, which goes away with `scratch`. Throws
// StoreError when the store cannot be opened.
std::unique_ptr<RecordStore> openStoreForReading(std::optional<QTemporaryDir>& scratch) {
    const QString path = RecordStore::defaultPath();
    if (QFileInfo::exists(path)) {
        return RecordStore::open(path, RecordStore::Mode::ReadOnly);
    }
    scratch.emplace();
    return RecordStore::open(scratch->filePath(QStringLiteral("kivo.sqlite")));
}

}  // namespace

int runReportCommand(int argc, char* argv[]) {
    std::optional<QCoreApplication> application;
    if (QCoreApplication::instance() == nullptr) {
        application.emplace(argc, argv);
    }
    const SystemClock clock;
    const auto arguments = parseReportArguments(optionsOf(argc, argv), localDateOf(clock.now()));
    if (!arguments) {
        std::fputs(reportUsage, stderr);
        return 2;
    }
    if (arguments->isHelp) {
        std::fputs(reportUsage, stdout);
        return 0;
    }

    // Errors go to standard error, so that standard output is the report or nothing.
    std::optional<QTemporaryDir> scratch;
    std::unique_ptr<RecordStore> store;
    try {
        store = openStoreForReading(scratch);
    } catch (const StoreError& error) {
        std::fprintf(stderr, "Could not create ModelContainer: %s\n", error.what());
        return EXIT_FAILURE;
    }
    const auto settings = ApplicationSettings::openDefault();
    QByteArray output;
    try {
        const ReportContents contents = collectReport(*store, *settings, clock, *arguments);
        output = arguments->isJson ? reportJson(contents) : reportText(contents).toUtf8();
    } catch (const StoreError& error) {
        std::fprintf(stderr, "Could not read the store: %s\n", error.what());
        return EXIT_FAILURE;
    }
    std::fwrite(output.constData(), 1, static_cast<std::size_t>(output.size()), stdout);
    std::fflush(stdout);
    return 0;
}

}  // namespace kivo
