// The real `kivo` binary recording real terminals in a private X session, and the store it leaves.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <numeric>

#include "e2e/fake_window_manager.h"
#include "e2e/xvfb_server.h"
#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo {
namespace {

using test::ScopedProcess;

// When a scripted change happened: some time between the command's start and its end.
struct Moment {
    double before = 0.0;
    double after = 0.0;
};

template <class Record>
std::int64_t totalDuration(const std::vector<Record>& records) {
    return std::accumulate(records.begin(), records.end(), std::int64_t{0},
                           [](std::int64_t sum, const Record& r) { return sum + r.duration; });
}

// A fresh home with its own store, settings and X session; everything started here ends with it.
class RecordingTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(home_.isValid());
        ASSERT_TRUE(server_.isReady());
        environment_.remove(QStringLiteral("WAYLAND_DISPLAY"));
        environment_.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(server_.displayName()));
        environment_.insert(QStringLiteral("HOME"), home_.path());
        environment_.insert(QStringLiteral("XDG_DATA_HOME"),
                            home_.filePath(QStringLiteral("data")));
        environment_.insert(QStringLiteral("XDG_CONFIG_HOME"),
                            home_.filePath(QStringLiteral("config")));
        // Where the xterm package puts debian-xterm.desktop.
        environment_.insert(QStringLiteral("XDG_DATA_DIRS"), QStringLiteral("/usr/share"));
    }

    QString storePath() const { return home_.filePath(QStringLiteral("data/Kivo/kivo.sqlite")); }
    QString logFile() const { return home_.filePath(QStringLiteral("session.log")); }

    // Starts `command` (space-separated) with its output going to the session log.
    void start(const QString& command) {
        const QStringList words = command.split(u' ');
        started_.push_back(
            std::make_unique<ScopedProcess>(words[0], words.mid(1), environment_, logFile()));
        EXPECT_TRUE(started_.back()->isRunning()) << command.toStdString();
    }

    // Runs xdotool with space-separated `arguments`, notes when in `moment` and returns its output.
    QString xdotool(const QString& arguments, Moment* moment = nullptr) {
        const double before = toEpochSeconds(SystemClock().now());
        ScopedProcess command(QStringLiteral("xdotool"), arguments.split(u' '), environment_);
        QProcess& process = command.process();
        EXPECT_TRUE(process.waitForFinished(30'000) &&
                    process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
            << arguments.toStdString() << ": " << process.readAllStandardError().toStdString();
        if (moment != nullptr) {
            *moment = {before, toEpochSeconds(SystemClock().now())};
        }
        return QString::fromLatin1(process.readAllStandardOutput().trimmed());
    }

    // Opens an xterm titled `title`; returns its window once it is mapped and has the focus.
    QString openTerminal(const QString& title) {
        start(QStringLiteral("xterm -T %1 -e sleep 600").arg(title));
        return xdotool(QStringLiteral("search --sync --onlyvisible --name ^%1$").arg(title));
    }

    QTemporaryDir home_;
    test::XvfbServer server_;
    QProcessEnvironment environment_ = QProcessEnvironment::systemEnvironment();
    std::vector<std::unique_ptr<ScopedProcess>> started_;
};

TEST_F(RecordingTest, RecordsWhatTheUserLookedAtAndForHowLong) {
    start(QStringLiteral("openbox --sm-disable"));
    test::FakeWindowManager probe(server_.displayName());
    for (const QDeadlineTimer deadline(20'000); !probe.isManaged(); QThread::msleep(50)) {
        QFile log(logFile());
        ASSERT_FALSE(deadline.hasExpired())
            << "openbox " << (started_[0]->isRunning() ? "runs" : "ended") << ":\n"
            << (log.open(QIODevice::ReadOnly) ? log.readAll().toStdString() : "");
    }
    const QString one = openTerminal(QStringLiteral("kivo-e2e-one"));
    const QString two = openTerminal(QStringLiteral("kivo-e2e-two"));
    ApplicationSettings::openFile(home_.filePath(QStringLiteral("config/Kivo/Kivo.conf")))
        ->setMaximumGapLength(2.0);

    xdotool(QStringLiteral("windowactivate --sync ") + one);
    ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")}, environment_);
    // Kivo prepares its store just before it starts ticking; it may be half-created for a while.
    for (const QDeadlineTimer deadline(30'000);; QThread::msleep(100)) {
        try {
            if (QFile::exists(storePath()) &&
                !RecordStore::open(storePath(), RecordStore::Mode::ReadOnly)
                     ->fetch<Filter>()
                     .empty()) {
                break;
            }
        } catch (const StoreError&) {
        }
        ASSERT_FALSE(deadline.hasExpired()) << "Kivo prepared no store";
    }
    // The first tick may come before this poll has seen the store.
    const double ready = toEpochSeconds(SystemClock().now());
    const Moment started{ready - 1.0, ready};
    QThread::msleep(3'000);
    ASSERT_EQ(xdotool(QStringLiteral("getactivewindow")), one)
        << "the window manager moved the focus during the warm-up";
    Moment toTwo, renamed, backToOne;
    xdotool(QStringLiteral("windowactivate --sync ") + two, &toTwo);
    QThread::msleep(4'000);
    xdotool(QStringLiteral("set_window --name kivo-e2e-two-renamed ") + two, &renamed);
    QThread::msleep(4'000);
    xdotool(QStringLiteral("windowactivate --sync ") + one, &backToOne);
    // Long enough for the renamed capture to be unseen for more than the gap of 2 s.
    QThread::msleep(4'500);
    EXPECT_EQ(kivo.stop(SIGTERM), 0) << kivo.process().readAllStandardError().toStdString();

    // The second stretch of "one" is still open when Kivo ends, and open captures are not kept.
    const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    ASSERT_EQ(activities.size(), 3u);
    const struct {
        const char* title;
        Moment from;
        Moment to;
    } expected[] = {{"kivo-e2e-one", started, toTwo},
                    {"kivo-e2e-two", toTwo, renamed},
                    {"kivo-e2e-two-renamed", renamed, backToOne}};
    // A tick comes once a second, so each edge is seen up to a tick late; the first stretch starts
    // a tick or so after the store is ready, and a busy machine adds a little everywhere.
    constexpr double tick = 1.0;
    constexpr double slack = 0.5;
    for (std::size_t i = 0; i < activities.size(); ++i) {
        const Activity& activity = activities[i];
        const auto& [title, from, to] = expected[i];
        SCOPED_TRACE(title);
        EXPECT_EQ(activity.title, QString::fromLatin1(title));
        EXPECT_EQ(activity.appBundleId, QStringLiteral("debian-xterm"));
        EXPECT_EQ(activity.appName, QStringLiteral("XTerm"));
        const double startAt = toEpochSeconds(activity.startAt);
        const double endAt = toEpochSeconds(activity.endAt);
        EXPECT_GE(startAt, from.before);
        EXPECT_LE(startAt, from.after + tick + slack + (i == 0 ? 1.5 : 0.0));
        EXPECT_GE(endAt, to.before - tick - slack);
        EXPECT_LE(endAt, to.after);
        EXPECT_NEAR(static_cast<double>(activity.duration), endAt - startAt, tick);
        if (i > 0) {
            // The first tick of a stretch opens the capture; every later one adds a second.
            const double shown = (to.before + to.after - from.before - from.after) / 2;
            const double vagueness = (to.after - to.before + from.after - from.before) / 2;
            EXPECT_NEAR(static_cast<double>(activity.duration), shown - tick,
                        tick + slack + vagueness);
        }
    }

    // The daily totals add up to the activities.
    const std::int64_t recorded = totalDuration(activities);
    EXPECT_EQ(totalDuration(store->fetch<AppUsage>()), recorded);
    EXPECT_EQ(totalDuration(store->fetch<TagUsage>()), recorded);
    EXPECT_EQ(totalDuration(store->fetch<WebUsage>()), recorded);
}

TEST_F(RecordingTest, WithoutADesktopToRecordSaysSoInOneLineAndRecordsNothing) {
    // :39999 is above the fixture's display numbers; no window manager runs on server_.
    const std::pair<QString, const char*> cases[] = {
        {QString(), "DISPLAY"},
        {QStringLiteral(":39999"), "cannot connect"},
        {QString::fromLatin1(server_.displayName()), "no EWMH window manager"}};
    for (const auto& [display, message] : cases) {
        SCOPED_TRACE(message);
        environment_.insert(QStringLiteral("DISPLAY"), display);
        ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")}, environment_);
        ASSERT_TRUE(kivo.process().waitForFinished(30'000));
        EXPECT_NE(kivo.process().exitCode(), 0);
        const QByteArray error = kivo.process().readAllStandardError();
        EXPECT_EQ(error.count('\n'), 1) << error.toStdString();
        EXPECT_TRUE(error.contains(message)) << error.toStdString();
        EXPECT_FALSE(QFile::exists(storePath()));
    }
}

}  // namespace
}  // namespace kivo
