// The whole road of a sample: a real X server, window manager and terminals, the real `kivo`
// binary recording them, and the store it leaves behind.
#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <csignal>
#include <memory>
#include <numeric>

#include "e2e/scoped_process.h"
#include "e2e/xvfb_server.h"
#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo {
namespace {

using test::ScopedProcess;
using test::XvfbServer;

double secondsNow() {
    return toEpochSeconds(SystemClock().now());
}

// When a scripted change happened: some time between the command's start and its end.
struct Moment {
    double before = 0.0;
    double after = 0.0;
};

// A fresh home with its own store, settings and X session; everything started here ends with it.
class RecordingTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(home_.isValid());
        ASSERT_TRUE(server_.isReady());
        environment_ = server_.clientEnvironment();
        environment_.insert(QStringLiteral("HOME"), home_.path());
        environment_.insert(QStringLiteral("XDG_DATA_HOME"), dataHome());
        environment_.insert(QStringLiteral("XDG_CONFIG_HOME"),
                            home_.filePath(QStringLiteral("config")));
        // Where the xterm package puts debian-xterm.desktop.
        environment_.insert(QStringLiteral("XDG_DATA_DIRS"), QStringLiteral("/usr/share"));
    }

    QString dataHome() const { return home_.filePath(QStringLiteral("data")); }
    QString storePath() const { return dataHome() + QStringLiteral("/Kivo/kivo.sqlite"); }

    QString logFile() const { return home_.filePath(QStringLiteral("session.log")); }

    QByteArray log() const {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    void startWindowManager() {
        windowManager_ = std::make_unique<ScopedProcess>(
            QStringLiteral("openbox"), QStringList{QStringLiteral("--sm-disable")}, environment_,
            logFile());
        ASSERT_TRUE(windowManager_->isRunning());
        ASSERT_TRUE(test::waitForWindowManager(server_.displayName(), 20'000))
            << "openbox " << (windowManager_->isRunning() ? "runs" : "ended") << ":\n"
            << log().toStdString();
    }

    QByteArray run(const QString& program, const QStringList& arguments) {
        ScopedProcess command(program, arguments, environment_);
        const bool finished = command.process().waitForFinished(30'000);
        EXPECT_TRUE(finished && command.process().exitStatus() == QProcess::NormalExit &&
                    command.process().exitCode() == 0)
            << program.toStdString() << " " << arguments.join(u' ').toStdString() << ": "
            << command.process().readAllStandardError().toStdString();
        return command.process().readAllStandardOutput().trimmed();
    }

    // Opens an xterm titled `title` and returns its window.
    QString openTerminal(const QString& title) {
        terminals_.push_back(std::make_unique<ScopedProcess>(
            QStringLiteral("xterm"),
            QStringList{QStringLiteral("-T"), title, QStringLiteral("-e"), QStringLiteral("sleep"),
                        QStringLiteral("600")},
            environment_, logFile()));
        EXPECT_TRUE(terminals_.back()->isRunning());
        // Once it is visible, the window manager has mapped it and given it the focus it takes
        // from the windows before it.
        return QString::fromLatin1(
            run(QStringLiteral("xdotool"),
                {QStringLiteral("search"), QStringLiteral("--sync"),
                 QStringLiteral("--onlyvisible"), QStringLiteral("--name"), u'^' + title + u'$'}));
    }

    Moment activate(const QString& window) {
        return timed({QStringLiteral("windowactivate"), QStringLiteral("--sync"), window});
    }

    Moment rename(const QString& window, const QString& title) {
        return timed({QStringLiteral("set_window"), QStringLiteral("--name"), title, window});
    }

    QString activeWindow() {
        return QString::fromLatin1(
            run(QStringLiteral("xdotool"), {QStringLiteral("getactivewindow")}));
    }

    Moment timed(const QStringList& xdotoolArguments) {
        Moment moment;
        moment.before = secondsNow();
        run(QStringLiteral("xdotool"), xdotoolArguments);
        moment.after = secondsNow();
        return moment;
    }

    std::unique_ptr<ScopedProcess> startKivo() {
        auto kivo = std::make_unique<ScopedProcess>(QStringLiteral(KIVO_BINARY), QStringList(),
                                                    environment_);
        EXPECT_TRUE(kivo->isRunning());
        return kivo;
    }

    // Waits until Kivo has prepared its store, which it does just before it starts ticking.
    bool waitUntilKivoRecords() {
        const QDeadlineTimer deadline(30'000);
        while (!deadline.hasExpired()) {
            try {
                if (QFile::exists(storePath()) &&
                    !RecordStore::open(storePath(), RecordStore::Mode::ReadOnly)
                         ->fetch<Filter>()
                         .empty()) {
                    return true;
                }
            } catch (const StoreError&) {
                // Still being created; ask again.
            }
            QThread::msleep(100);
        }
        return false;
    }

    // Ends Kivo with `signal`, expects a clean exit and returns what Kivo printed.
    std::string stopKivo(ScopedProcess& kivo, int signal) {
        const int exitCode = kivo.stop(signal);
        const std::string output = kivo.process().readAllStandardOutput().toStdString() +
                                   kivo.process().readAllStandardError().toStdString();
        EXPECT_EQ(exitCode, 0) << output;
        return output;
    }

    QTemporaryDir home_;
    XvfbServer server_;
    QProcessEnvironment environment_;
    std::unique_ptr<ScopedProcess> windowManager_;
    std::vector<std::unique_ptr<ScopedProcess>> terminals_;
};

template <class Usage>
std::int64_t totalOf(const std::vector<Usage>& usages) {
    return std::accumulate(
        usages.begin(), usages.end(), std::int64_t{0},
        [](std::int64_t sum, const Usage& usage) { return sum + usage.duration; });
}

TEST_F(RecordingTest, RecordsWhatTheUserLookedAtAndForHowLong) {
    ASSERT_NO_FATAL_FAILURE(startWindowManager());
    const QString one = openTerminal(QStringLiteral("Kivo e2e one"));
    const QString two = openTerminal(QStringLiteral("Kivo e2e two"));
    ApplicationSettings::openFile(home_.filePath(QStringLiteral("config/Kivo/Kivo.conf")))
        ->setMaximumGapLength(2.0);

    activate(one);
    auto kivo = startKivo();
    ASSERT_TRUE(waitUntilKivoRecords());
    const double kivoReady = secondsNow();
    // The first tick may come before this poll has seen the store.
    const Moment started{kivoReady - 1.0, kivoReady};
    QThread::msleep(3'000);
    ASSERT_EQ(activeWindow(), one) << "the window manager moved the focus during the warm-up";
    const Moment switchedToTwo = activate(two);
    QThread::msleep(4'000);
    const Moment renamed = rename(two, QStringLiteral("Kivo e2e two renamed"));
    QThread::msleep(4'000);
    const Moment backToOne = activate(one);
    // Long enough for the renamed capture to be unseen for more than the gap of 2 s.
    QThread::msleep(4'500);
    const std::string kivoOutput = stopKivo(*kivo, SIGTERM);

    const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
    const auto projects = store->fetch<Project>();
    const auto filters = store->fetch<Filter>();
    ASSERT_EQ(projects.size(), 1u);
    ASSERT_EQ(filters.size(), 1u);
    EXPECT_EQ(projects[0].projectName, QStringLiteral("Others"));
    EXPECT_EQ(filters[0].tagName, QStringLiteral("Unassigned"));

    // The second stretch of "one" is still open when Kivo ends, and open captures are not kept.
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    QStringList titles;
    for (const Activity& activity : activities) {
        titles.append(activity.title);
    }
    ASSERT_EQ(activities.size(), 3u) << titles.join(QStringLiteral(", ")).toStdString() << "\n"
                                     << kivoOutput;
    struct Expected {
        const char* title;
        Moment from;
        Moment to;
    };
    const Expected expected[] = {{"Kivo e2e one", started, switchedToTwo},
                                 {"Kivo e2e two", switchedToTwo, renamed},
                                 {"Kivo e2e two renamed", renamed, backToOne}};
    // A tick comes once a second, so each edge is seen up to a tick late; the first stretch starts
    // a tick or so after the store is ready, and a busy machine adds a little everywhere.
    constexpr double tick = 1.0;
    constexpr double slack = 0.5;
    constexpr double startUp = 1.5;
    for (std::size_t i = 0; i < activities.size(); ++i) {
        const Activity& activity = activities[i];
        const Expected& stretch = expected[i];
        SCOPED_TRACE(stretch.title);
        EXPECT_EQ(activity.title, QString::fromUtf8(stretch.title));
        EXPECT_EQ(activity.appBundleId, QStringLiteral("debian-xterm"));
        EXPECT_EQ(activity.appName, QStringLiteral("XTerm"));
        EXPECT_EQ(activity.url, QString());
        EXPECT_EQ(activity.domainName, QString());
        EXPECT_EQ(activity.filterId, filters[0].id);
        EXPECT_EQ(activity.projectId, projects[0].id);

        const double startAt = toEpochSeconds(activity.startAt);
        const double endAt = toEpochSeconds(activity.endAt);
        EXPECT_GE(startAt, stretch.from.before);
        EXPECT_LE(startAt, stretch.from.after + tick + slack + (i == 0 ? startUp : 0.0));
        EXPECT_GE(endAt, stretch.to.before - tick - slack);
        EXPECT_LE(endAt, stretch.to.after);
        EXPECT_NEAR(static_cast<double>(activity.duration), endAt - startAt, tick);
        if (i > 0) {
            // The first tick of a stretch opens the capture; every later one adds a second.
            const double shown = (stretch.to.before + stretch.to.after) / 2 -
                                 (stretch.from.before + stretch.from.after) / 2;
            const double vagueness =
                (stretch.to.after - stretch.to.before + stretch.from.after - stretch.from.before) /
                2;
            EXPECT_NEAR(static_cast<double>(activity.duration), shown - tick,
                        tick + slack + vagueness);
        }
    }

    const std::int64_t recorded =
        std::accumulate(activities.begin(), activities.end(), std::int64_t{0},
                        [](std::int64_t sum, const Activity& a) { return sum + a.duration; });
    const auto appUsages = store->fetch<AppUsage>();
    const auto tagUsages = store->fetch<TagUsage>();
    const auto webUsages = store->fetch<WebUsage>();
    EXPECT_EQ(totalOf(appUsages), recorded);
    EXPECT_EQ(totalOf(tagUsages), recorded);
    EXPECT_EQ(totalOf(webUsages), recorded);
    for (const AppUsage& usage : appUsages) {
        EXPECT_EQ(usage.appBundleId, QStringLiteral("debian-xterm"));
        EXPECT_EQ(usage.filterId, filters[0].id);
    }
    for (const TagUsage& usage : tagUsages) {
        EXPECT_EQ(usage.projectId, projects[0].id);
        EXPECT_EQ(usage.filterId, filters[0].id);
    }
}

TEST_F(RecordingTest, InterruptEndsCleanlyAndRestartsAddNoSecondUnassignedEntries) {
    ASSERT_NO_FATAL_FAILURE(startWindowManager());
    for (int run = 0; run < 2; ++run) {
        auto kivo = startKivo();
        QThread::msleep(1'500);
        stopKivo(*kivo, SIGINT);
    }
    const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
    EXPECT_EQ(store->fetch<Project>().size(), 1u);
    EXPECT_EQ(store->fetch<Filter>().size(), 1u);
}

TEST_F(RecordingTest, WithoutWindowManagerSaysSoAndRecordsNothing) {
    auto kivo = startKivo();
    ASSERT_TRUE(kivo->process().waitForFinished(30'000));
    EXPECT_NE(kivo->process().exitCode(), 0);
    const QByteArray message = kivo->process().readAllStandardError();
    EXPECT_EQ(message.count('\n'), 1) << message.toStdString();
    EXPECT_TRUE(message.contains("window manager")) << message.toStdString();
    EXPECT_FALSE(QFile::exists(storePath()));
}

TEST_F(RecordingTest, WithoutDisplaySaysSo) {
    environment_.remove(QStringLiteral("DISPLAY"));
    auto kivo = startKivo();
    ASSERT_TRUE(kivo->process().waitForFinished(30'000));
    EXPECT_NE(kivo->process().exitCode(), 0);
    const QByteArray message = kivo->process().readAllStandardError();
    EXPECT_EQ(message.count('\n'), 1) << message.toStdString();
    EXPECT_TRUE(message.contains("DISPLAY")) << message.toStdString();
}

}  // namespace
}  // namespace kivo
