// The whole road of a sample: a real X server, window manager and terminals, the real `kivo`
// binary recording them, and the store it leaves behind.
#include <gtest/gtest.h>

#include <QDir>
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

    void startWindowManager() {
        windowManager_ = std::make_unique<ScopedProcess>(
            QStringLiteral("openbox"), QStringList{QStringLiteral("--sm-disable")}, environment_);
        ASSERT_TRUE(windowManager_->isRunning());
        ASSERT_TRUE(test::waitForWindowManager(server_.displayName(), 20'000));
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
            environment_));
        EXPECT_TRUE(terminals_.back()->isRunning());
        return QString::fromLatin1(
            run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--sync"),
                                            QStringLiteral("--name"), u'^' + title + u'$'}));
    }

    void activate(const QString& window) {
        run(QStringLiteral("xdotool"),
            {QStringLiteral("windowactivate"), QStringLiteral("--sync"), window});
    }

    void rename(const QString& window, const QString& title) {
        run(QStringLiteral("xdotool"),
            {QStringLiteral("set_window"), QStringLiteral("--name"), title, window});
    }

    std::unique_ptr<ScopedProcess> startKivo() {
        auto kivo = std::make_unique<ScopedProcess>(QStringLiteral(KIVO_BINARY), QStringList(),
                                                    environment_);
        EXPECT_TRUE(kivo->isRunning());
        return kivo;
    }

    // Ends Kivo with `signal` and expects a clean exit.
    void stopKivo(ScopedProcess& kivo, int signal) {
        EXPECT_EQ(kivo.stop(signal), 0) << kivo.process().readAllStandardOutput().toStdString()
                                        << kivo.process().readAllStandardError().toStdString();
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
    startWindowManager();
    const QString one = openTerminal(QStringLiteral("Kivo e2e one"));
    const QString two = openTerminal(QStringLiteral("Kivo e2e two"));
    ApplicationSettings::openFile(home_.filePath(QStringLiteral("config/Kivo/Kivo.conf")))
        ->setMaximumGapLength(2.0);

    activate(one);
    const double started = secondsNow();
    auto kivo = startKivo();
    QThread::msleep(3'500);

    const double switchedToTwo = secondsNow();
    activate(two);
    QThread::msleep(4'000);
    const double renamed = secondsNow();
    rename(two, QStringLiteral("Kivo e2e two renamed"));
    QThread::msleep(4'000);
    const double backToOne = secondsNow();
    activate(one);
    // Long enough for the renamed capture to be unseen for more than the gap of 2 s.
    QThread::msleep(4'000);
    stopKivo(*kivo, SIGTERM);

    const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
    const auto projects = store->fetch<Project>();
    const auto filters = store->fetch<Filter>();
    ASSERT_EQ(projects.size(), 1u);
    ASSERT_EQ(filters.size(), 1u);
    EXPECT_EQ(projects[0].projectName, QStringLiteral("Others"));
    EXPECT_EQ(filters[0].tagName, QStringLiteral("Unassigned"));

    // The second stretch of "one" is still open when Kivo ends, and open captures are not kept.
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    ASSERT_EQ(activities.size(), 3u);
    struct Expected {
        const char* title;
        double from;
        double to;
    };
    const Expected expected[] = {{"Kivo e2e one", started, switchedToTwo},
                                 {"Kivo e2e two", switchedToTwo, renamed},
                                 {"Kivo e2e two renamed", renamed, backToOne}};
    // A tick comes once a second, so each edge lands up to a tick late; starting a process and
    // xdotool's round trips add a little.
    constexpr double tick = 1.0;
    constexpr double slack = 0.5;
    for (std::size_t i = 0; i < activities.size(); ++i) {
        const Activity& activity = activities[i];
        SCOPED_TRACE(expected[i].title);
        EXPECT_EQ(activity.title, QString::fromUtf8(expected[i].title));
        EXPECT_EQ(activity.appBundleId, QStringLiteral("debian-xterm"));
        EXPECT_EQ(activity.appName, QStringLiteral("XTerm"));
        EXPECT_EQ(activity.url, QString());
        EXPECT_EQ(activity.domainName, QString());
        EXPECT_EQ(activity.filterId, filters[0].id);
        EXPECT_EQ(activity.projectId, projects[0].id);

        const double startAt = toEpochSeconds(activity.startAt);
        const double endAt = toEpochSeconds(activity.endAt);
        EXPECT_GE(startAt, expected[i].from - slack);
        EXPECT_LE(startAt, expected[i].from + tick + slack + (i == 0 ? 1.0 : 0.0));
        EXPECT_GE(endAt, expected[i].to - tick - slack);
        EXPECT_LE(endAt, expected[i].to + slack);
        EXPECT_NEAR(static_cast<double>(activity.duration), endAt - startAt, tick);
    }
    // Kivo's own start-up makes the first stretch's beginning vague; the later ones are exact to
    // a tick: the first tick of a stretch opens the capture, every later one adds a second.
    for (std::size_t i = 1; i < activities.size(); ++i) {
        const double shown = expected[i].to - expected[i].from;
        EXPECT_NEAR(static_cast<double>(activities[i].duration), shown - tick, tick + slack)
            << expected[i].title;
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
    startWindowManager();
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
