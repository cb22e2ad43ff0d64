#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>

#include "model/record_store.h"
#include "support/temp_home.h"

namespace kivo {
namespace {

constexpr int activitiesPerBatch = 40;

// Writes batches for ever; after each commit it reports the batch number on `progress`.
[[noreturn]] void writeBatchesForever(const QString& storePath, int progress) {
    auto store = RecordStore::open(storePath);
    const Instant now = fromEpochSeconds(1'700'000'000.0);
    for (int batch = 0;; ++batch) {
        for (int i = 0; i < activitiesPerBatch; ++i) {
            auto activity = newRecord<Activity>(now);
            activity.title = QStringLiteral("batch %1").arg(batch);
            activity.duration = i;
            store->insert(activity);
        }
        auto usage = newRecord<TagUsage>(now);
        usage.duration = batch;
        store->insert(usage);
        store->save();
        const auto written = ::write(progress, &batch, sizeof batch);
        static_cast<void>(written);
    }
}

TEST(StoreCrash, KilledWriterLeavesWholeBatchesOnly) {
    test::TempHome home;
    home.openStore();  // create the store before the race starts

    int pipeEnds[2];
    ASSERT_EQ(::pipe(pipeEnds), 0);
    const pid_t writer = ::fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
        ::close(pipeEnds[0]);
        writeBatchesForever(home.storePath(), pipeEnds[1]);
    }
    ::close(pipeEnds[1]);

    // Let a number of batches land, then kill the writer in the middle of whatever it does.
    int lastReported = -1;
    while (lastReported < 25 && ::read(pipeEnds[0], &lastReported, sizeof lastReported) > 0) {
    }
    ::usleep(3000);
    ::kill(writer, SIGKILL);
    int status = 0;
    ::waitpid(writer, &status, 0);
    ::close(pipeEnds[0]);
    ASSERT_TRUE(WIFSIGNALED(status));

    {
        SQLite::Database db(home.storePath().toStdString(), SQLite::OPEN_READWRITE);
        EXPECT_EQ(db.execAndGet("PRAGMA integrity_check").getString(), "ok");
    }

    auto store = home.openStore();
    std::map<QString, int> perBatch;
    for (const auto& activity : store->fetch<Activity>()) {
        ++perBatch[activity.title];
    }
    const auto usages = store->fetch<TagUsage>();
    EXPECT_GE(static_cast<int>(perBatch.size()), lastReported + 1);
    EXPECT_EQ(perBatch.size(), usages.size());
    for (const auto& [title, count] : perBatch) {
        EXPECT_EQ(count, activitiesPerBatch) << title.toStdString();
    }
}

}  // namespace
}  // namespace kivo
