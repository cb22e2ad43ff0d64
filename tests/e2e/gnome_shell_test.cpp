// Kivo's GNOME Shell extension in a private headless GNOME Shell: installed and enabled by Kivo,
// loaded by the shell at its next start, read by Kivo's reader, and the store a recording leaves.
#include <gtest/gtest.h>

#include <QCoreApplication>

#include "desktop/gnome/extension_files.h"
#include "desktop/gnome/gnome_desktop.h"
#include "e2e/gnome_session.h"
#include "e2e/recorded_store.h"
#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo {
namespace {

using test::GnomeSession;
using test::ScopedProcess;

// A Qt window whose title the test changes through its standard input.
class TestWindow {
public:
    TestWindow(const GnomeSession& session, const QString& title, const QString& appId,
               const QProcessEnvironment& environment)
        : process_(
              session.startClient(QStringLiteral(KIVO_TEST_WINDOW), {title, appId}, environment)) {}
    TestWindow(const GnomeSession& session, const QString& title, const QString& appId)
        : TestWindow(session, title, appId, session.environment()) {}

    std::int64_t processId() const { return process_->process().processId(); }
    bool retitle(const QString& title) {
        return process_->process().write(title.toUtf8() + '\n') > 0 &&
               process_->process().waitForBytesWritten(10'000);
    }
    void close() { process_.reset(); }

private:
    std::unique_ptr<ScopedProcess> process_;
};

// Kivo's output, read as it comes.
class OutputWatch {
public:
    explicit OutputWatch(ScopedProcess& process) : process_(process) {}

    QByteArray seen() {
        process_.process().waitForReadyRead(100);
        seen_ += process_.process().readAllStandardOutput();
        return seen_;
    }
    qsizetype count(const QByteArray& line) { return seen().count(QByteArray(line + '\n')); }

private:
    ScopedProcess& process_;
    QByteArray seen_;
};

// A session with three applications, where Kivo has installed and enabled its extension before
// the shell started, as at a user's next login.
class GnomeShellTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(session_.isPrepared()) << "see " << session_.logFile().toStdString();
        for (const auto& [id, name] :
             {std::pair{"kivo-e2e-one", "Kivo One"}, std::pair{"kivo-e2e-two", "Kivo Two"},
              std::pair{"kivo-e2e-x", "Kivo X"}}) {
            ASSERT_TRUE(
                session_.addApplication(QString::fromLatin1(id), QString::fromLatin1(name)));
        }
        ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")},
                           session_.environment());
        ASSERT_TRUE(kivo.process().waitForFinished(30'000));
        firstRunExitCode_ = kivo.process().exitCode();
        firstRunError_ = kivo.process().readAllStandardError();
        firstRunOutput_ = kivo.process().readAllStandardOutput();
    }

    QString installedExtension() const {
        return session_.home() + QStringLiteral("/.local/share/gnome-shell/extensions/") +
               gnomeExtensionUuid;
    }

    GnomeSession session_;
    int firstRunExitCode_ = 0;
    QByteArray firstRunError_;
    QByteArray firstRunOutput_;
};

// Samples until the sample's title is `title` (nothing: until there is no sample); the last one.
std::optional<FocusedWindow> sampleUntil(GnomeDesktop& desktop,
                                         const std::optional<QString>& title) {
    std::optional<FocusedWindow> sample;
    for (const QDeadlineTimer deadline(20'000); !deadline.hasExpired(); QThread::msleep(50)) {
        QCoreApplication::processEvents();
        sample = desktop.focusedWindow();
        if ((sample ? std::optional(sample->title) : std::nullopt) == title) {
            break;
        }
    }
    return sample;
}

TEST_F(GnomeShellTest, KivosExtensionReportsEveryFocusAndTitleChange) {
    // Before the shell knows the extension, Kivo cannot record and says the one step to take.
    EXPECT_NE(firstRunExitCode_, 0);
    EXPECT_EQ(firstRunError_.count('\n'), 1) << firstRunError_.toStdString();
    EXPECT_TRUE(firstRunError_.contains("log out and in once")) << firstRunError_.toStdString();
    EXPECT_TRUE(firstRunOutput_.contains("Installed Kivo's GNOME Shell extension"))
        << firstRunOutput_.toStdString();
    ASSERT_TRUE(session_.startShell()) << "see " << session_.logFile().toStdString();

    XdgApplicationCatalog catalog({QString(), session_.home() + QStringLiteral("/.local/share"),
                                   session_.home() + QStringLiteral("/no-system-data"),
                                   QStringLiteral("C")});
    catalog.rescan();
    QString failure;
    auto desktop = GnomeDesktop::open({session_.bus(), &catalog, QStringLiteral("/proc")}, failure);
    ASSERT_TRUE(desktop) << failure.toStdString();
    EXPECT_EQ(desktop->extensionVersion(), extensionVersionIn(installedExtension()));
    const auto expectSample = [&](const QString& title, const char* bundleId, const char* name,
                                  std::int64_t processId) {
        const auto sample = sampleUntil(*desktop, title);
        ASSERT_TRUE(sample) << title.toStdString();
        EXPECT_EQ(sample->title, title);
        EXPECT_EQ(sample->bundleId, QString::fromLatin1(bundleId));
        EXPECT_EQ(sample->name, QString::fromLatin1(name));
        EXPECT_EQ(sample->processId, processId);
    };

    // The shell starts in the overview, where a new window gets no focus until one is activated.
    TestWindow one(session_, QStringLiteral("kivo-e2e-one"), QStringLiteral("kivo-e2e-one"));
    ASSERT_TRUE(session_.activate(QStringLiteral("kivo-e2e-one")));
    expectSample(QStringLiteral("kivo-e2e-one"), "kivo-e2e-one", "Kivo One", one.processId());

    TestWindow two(session_, QStringLiteral("kivo-e2e-two"), QStringLiteral("kivo-e2e-two"));
    ASSERT_TRUE(session_.waitForFocus(QStringLiteral("kivo-e2e-two")));
    expectSample(QStringLiteral("kivo-e2e-two"), "kivo-e2e-two", "Kivo Two", two.processId());

    ASSERT_TRUE(two.retitle(QStringLiteral("kivo-e2e-two renamed")));
    expectSample(QStringLiteral("kivo-e2e-two renamed"), "kivo-e2e-two", "Kivo Two",
                 two.processId());

    ASSERT_TRUE(session_.activate(QStringLiteral("kivo-e2e-one")));
    expectSample(QStringLiteral("kivo-e2e-one"), "kivo-e2e-one", "Kivo One", one.processId());

    // Closing the focused window: the shell's next choice, never the closed window.
    one.close();
    const auto hasMovedOn = [&] {
        const auto title = session_.focusedTitle();
        return title && !title->isEmpty() && *title != QStringLiteral("kivo-e2e-one");
    };
    for (const QDeadlineTimer deadline(20'000); !hasMovedOn() && !deadline.hasExpired();) {
        QThread::msleep(50);
    }
    const auto next = session_.focusedTitle();
    ASSERT_TRUE(next);
    EXPECT_NE(*next, QStringLiteral("kivo-e2e-one"));
    const auto afterClose = sampleUntil(*desktop, next->isEmpty() ? std::nullopt : next);
    EXPECT_EQ(afterClose ? afterClose->title : QString(), *next);

    // An X client on the shell's XWayland.
    const auto x11 = session_.x11Environment();
    ASSERT_TRUE(x11) << "no XWayland display in " << session_.logFile().toStdString();
    TestWindow xWindow(session_, QStringLiteral("kivo-e2e-x"), QStringLiteral("kivo-e2e-x"), *x11);
    ASSERT_TRUE(session_.waitForFocus(QStringLiteral("kivo-e2e-x")));
    expectSample(QStringLiteral("kivo-e2e-x"), "kivo-e2e-x", "Kivo X", xWindow.processId());
}

using test::expectActivities;
using test::ExpectedActivity;
using test::Moment;
using test::now;
using test::totalDuration;
using test::waitForStore;

TEST_F(GnomeShellTest, RecordsWhatTheUserLookedAtUpdatesItsExtensionAndIdleTimeAddsNothing) {
    // An extension of another version, as after an upgrade of Kivo: the shell runs it, and Kivo
    // replaces its files and says so.
    QFile metadata(installedExtension() + QStringLiteral("/metadata.json"));
    ASSERT_TRUE(metadata.open(QIODevice::ReadWrite));
    const QByteArray older = metadata.readAll().replace("\"version\": ", "\"version\": 9");
    ASSERT_TRUE(metadata.resize(0) && metadata.write(older) == older.size());
    metadata.close();
    ASSERT_EQ(extensionVersionIn(installedExtension()), 91);
    ASSERT_TRUE(session_.startShell()) << "see " << session_.logFile().toStdString();

    TestWindow one(session_, QStringLiteral("kivo-e2e-one"), QStringLiteral("kivo-e2e-one"));
    ASSERT_TRUE(session_.activate(QStringLiteral("kivo-e2e-one")));
    TestWindow two(session_, QStringLiteral("kivo-e2e-two"), QStringLiteral("kivo-e2e-two"));
    ASSERT_TRUE(session_.waitForFocus(QStringLiteral("kivo-e2e-two")));
    ASSERT_TRUE(session_.activate(QStringLiteral("kivo-e2e-one")));

    const QString home = session_.home();
    const auto settings =
        ApplicationSettings::openFile(home + QStringLiteral("/.config/Kivo/Kivo.conf"));
    settings->setMaximumGapLength(2.0);
    // Long enough that a slow pointer move on a busy machine never looks like idleness.
    settings->setIdleTimeout(5.0);
    // The shell's virtual pointer keeps its idle time short.
    const auto nudge = [&] {
        EXPECT_TRUE(session_.drive(QStringLiteral("MovePointer")));
        QThread::msleep(300);
    };
    const auto nudgeFor = [&](int ms) {
        for (const QDeadlineTimer deadline(ms); !deadline.hasExpired();) {
            nudge();
        }
    };
    const auto switchTo = [&](const QString& title, Moment& moment) {
        moment.before = now();
        EXPECT_TRUE(session_.activate(title));
        moment.after = now();
    };
    nudge();

    const QString storePath = home + QStringLiteral("/.local/share/Kivo/kivo.sqlite");
    ScopedProcess kivo(QStringLiteral(KIVO_BINARY), {QStringLiteral("record")},
                       session_.environment());
    OutputWatch output(kivo);
    ASSERT_TRUE(waitForStore(storePath, nudge));
    const double ready = now();
    const auto waitFor = [&](const char* line, bool isNudging) {
        for (const QDeadlineTimer deadline(30'000); output.count(line) < 1;) {
            if (deadline.hasExpired()) {
                return false;
            }
            isNudging ? nudge() : QThread::msleep(100);
        }
        return true;
    };
    nudgeFor(3'000);
    Moment toTwo, renamed, backToOne, toRenamed;
    switchTo(QStringLiteral("kivo-e2e-two"), toTwo);
    nudgeFor(3'000);
    renamed.before = now();
    ASSERT_TRUE(two.retitle(QStringLiteral("kivo-e2e-two renamed")));
    ASSERT_TRUE(session_.waitForFocus(QStringLiteral("kivo-e2e-two renamed")));
    renamed.after = now();
    nudgeFor(3'000);
    switchTo(QStringLiteral("kivo-e2e-one"), backToOne);
    nudgeFor(2'000);

    // Idle past the timeout, then three seconds more; the pointer brings the user back.
    ASSERT_EQ(output.count("Paused: away"), 0) << "away although the pointer kept moving";
    ASSERT_TRUE(waitFor("Paused: away", false));
    const double idlePaused = now();
    QThread::msleep(3'000);
    const double idleBack = now();
    ASSERT_TRUE(waitFor("Recording again", true));
    nudgeFor(2'000);
    switchTo(QStringLiteral("kivo-e2e-two renamed"), toRenamed);
    // Long enough for the first window's capture to be unseen for more than the gap of 2 s.
    nudgeFor(4'000);
    Moment stopped;
    stopped.before = now();
    EXPECT_EQ(kivo.stop(SIGTERM), 0) << kivo.process().readAllStandardError().toStdString();
    stopped.after = now();

    EXPECT_TRUE(output.seen().contains(
        "Updated Kivo's GNOME Shell extension focus@kivo.app from version 91 to "))
        << output.seen().toStdString();
    EXPECT_NE(extensionVersionIn(installedExtension()), 91);

    const auto store = RecordStore::open(storePath, RecordStore::Mode::ReadOnly);
    const auto activities = store->fetch<Activity>({"", {}, "startAt"});
    const std::vector<ExpectedActivity> expected{
        {"kivo-e2e-one", "kivo-e2e-one", "Kivo One", {ready - 1.0, ready}, toTwo},
        {"kivo-e2e-two", "kivo-e2e-two", "Kivo Two", toTwo, renamed},
        {"kivo-e2e-two renamed", "kivo-e2e-two", "Kivo Two", renamed, backToOne},
        {"kivo-e2e-one", "kivo-e2e-one", "Kivo One", backToOne, toRenamed},
        {"kivo-e2e-two renamed", "kivo-e2e-two", "Kivo Two", toRenamed, stopped},
    };
    // Each edge is seen up to a tick (1 s) late; a busy machine adds a little everywhere.
    constexpr double lateness = 2.0;
    expectActivities(activities, expected, lateness);
    ASSERT_EQ(activities.size(), expected.size());
    // The idle stretch continued the same capture with one period for the whole absence; how
    // much longer it was than seen here depends on when the pause was seen, hence the slack.
    const Activity& idled = activities[3];
    const double span = toEpochSeconds(idled.endAt) - toEpochSeconds(idled.startAt);
    const double away = idleBack - idlePaused;
    const double duration = static_cast<double>(idled.duration);
    EXPECT_LE(duration, span - away + 1.0 + 1.0) << "span " << span << ", away " << away;
    EXPECT_GE(duration, span - away - 3.0 - 1.0) << "span " << span << ", away " << away;
    EXPECT_EQ(totalDuration(store->fetch<AppUsage>()), totalDuration(activities));
}

}  // namespace
}  // namespace kivo
