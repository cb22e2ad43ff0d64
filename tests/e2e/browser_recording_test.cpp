// The real `kivo` binary recording Debian's Chromium in a private X session: with the extension
// loaded the front tab's title and address, without it the window title.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <functional>
#include <map>

#include "e2e/fake_window_manager.h"
#include "e2e/firefox_profile.h"
#include "e2e/page_server.h"
#include "e2e/recorded_store.h"
#include "e2e/xvfb_server.h"
#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo {
namespace {

using namespace Qt::StringLiterals;
using test::ScopedProcess;

const QString chromiumManifest = u"NativeMessagingHosts/app.kivo.browser_host.json"_s;

class BrowserRecordingTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(home_.isValid());
        ASSERT_TRUE(server_.isReady());
        ASSERT_TRUE(QDir(home_.path()).mkpath(u"run"_s));
        ::chmod(QFile::encodeName(home_.filePath(u"run"_s)).constData(), 0700);
        environment_.remove(u"WAYLAND_DISPLAY"_s);
        environment_.insert(u"DISPLAY"_s, QString::fromLatin1(server_.displayName()));
        environment_.insert(u"HOME"_s, home_.path());
        environment_.insert(u"XDG_DATA_HOME"_s, home_.filePath(u"data"_s));
        environment_.insert(u"XDG_CONFIG_HOME"_s, home_.filePath(u"config"_s));
        environment_.insert(u"XDG_RUNTIME_DIR"_s, home_.filePath(u"run"_s));
        // Where the chromium and xterm packages put their desktop files.
        environment_.insert(u"XDG_DATA_DIRS"_s, u"/usr/share"_s);
    }

    QString storePath() const { return home_.filePath(u"data/Kivo/kivo.sqlite"_s); }
    QString logFile() const { return home_.filePath(u"session.log"_s); }
    QString log() const {
        QFile file(logFile());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll().right(4'000))
                                              : QString();
    }

    ScopedProcess& start(const QString& program, const QStringList& arguments) {
        started_.push_back(
            std::make_unique<ScopedProcess>(program, arguments, environment_, logFile()));
        EXPECT_TRUE(started_.back()->isRunning()) << program.toStdString();
        return *started_.back();
    }

    // Runs xdotool with `arguments` and returns its output; nothing when it fails.
    std::optional<QString> xdotool(const QStringList& arguments) {
        ScopedProcess command(u"xdotool"_s, arguments, environment_);
        QProcess& process = command.process();
        if (!process.waitForFinished(30'000) || process.exitCode() != 0) {
            return std::nullopt;
        }
        return QString::fromLatin1(process.readAllStandardOutput().trimmed());
    }

    // Chromium on `page` with a profile of its own in the configuration folder, where Kivo
    // registered its host at start; the extension is loaded when asked for.
    ScopedProcess& startChromium(const QString& profile, const QString& page, bool withExtension) {
        QStringList arguments{u"--no-sandbox"_s,
                              u"--disable-gpu"_s,
                              u"--no-first-run"_s,
                              u"--disable-background-networking"_s,
                              u"--disable-component-update"_s,
                              u"--disable-sync"_s,
                              u"--password-store=basic"_s,
                              u"--remote-debugging-port=0"_s,
                              u"--user-data-dir="_s + profileFolder(profile)};
        if (withExtension) {
            arguments.append(u"--load-extension=" KIVO_EXTENSION_DIR ""_s);
        }
        arguments.append(page);
        return start(u"chromium"_s, arguments);
    }
    QString profileFolder(const QString& profile) const {
        return home_.filePath(u"config/"_s + profile);
    }

    // Sends one request to Chromium's DevTools endpoint and returns the body of its answer.
    QByteArray devTools(const QString& profile, const QByteArray& method, const QByteArray& path) {
        QFile portFile(profileFolder(profile) + u"/DevToolsActivePort"_s);
        for (const QDeadlineTimer deadline(60'000); !portFile.exists() && !deadline.hasExpired();
             QThread::msleep(100)) {
        }
        EXPECT_TRUE(portFile.open(QIODevice::ReadOnly)) << log().toStdString();
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, portFile.readLine().trimmed().toUShort());
        EXPECT_TRUE(socket.waitForConnected(10'000));
        socket.write(method + ' ' + path +
                     " HTTP/1.1\r\nHost: 127.0.0.1\r\n"
                     "Connection: close\r\n\r\n");
        // The endpoint keeps the connection open: the answer ends where its length says.
        QByteArray response;
        for (qsizetype end = -1; end < 0 || response.size() < end;) {
            if (!socket.waitForReadyRead(30'000)) {
                break;
            }
            response += socket.readAll();
            if (const qsizetype headerEnd = response.indexOf("\r\n\r\n"); headerEnd >= 0) {
                const auto length = QRegularExpression(u"(?i)content-length: *(\\d+)"_s)
                                        .match(QString::fromLatin1(response.first(headerEnd)));
                end = headerEnd + 4 + (length.hasMatch() ? length.captured(1).toLongLong() : 0);
            }
        }
        return response.mid(response.indexOf("\r\n\r\n") + 4);
    }

    // Waits until a window titled exactly `title` is shown and gives it the focus; false when
    // none comes. Polls: a search fails while windows of another browser are being destroyed.
    [[nodiscard]] bool focusWindow(const QString& title) {
        for (const QDeadlineTimer deadline(60'000); !deadline.hasExpired(); QThread::msleep(200)) {
            const auto window =
                xdotool({u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^"_s + title + u"$"_s});
            if (window && !window->isEmpty() &&
                xdotool({u"windowactivate"_s, u"--sync"_s, window->section(u'\n', 0, 0)})) {
                return true;
            }
        }
        return false;
    }

    // Whether the browser started our host for the extension (its child process).
    static bool runsHost(ScopedProcess& browser) {
        for (const QDeadlineTimer deadline(60'000); !deadline.hasExpired(); QThread::msleep(200)) {
            for (const QString& pid : QDir(u"/proc"_s).entryList({u"[0-9]*"_s}, QDir::Dirs)) {
                QFile stat(u"/proc/"_s + pid + u"/stat"_s);
                if (!stat.open(QIODevice::ReadOnly)) {
                    continue;
                }
                const QByteArray fields = stat.readAll();
                const QList<QByteArray> afterName =
                    fields.mid(fields.lastIndexOf(')') + 2).split(' ');
                if (fields.contains("(kivo-browser-ho") &&
                    afterName.value(1).toLongLong() == browser.process().processId()) {
                    return true;
                }
            }
        }
        return false;
    }

    // A window manager, a terminal in front, the gap of 2 s, and Kivo running with its host
    // registered in the browser's `folder` (under the home), where it writes `manifest`.
    ScopedProcess& startSessionAndKivo(const QString& folder, const QString& manifest) {
        start(u"openbox"_s, {u"--sm-disable"_s});
        test::FakeWindowManager probe(server_.displayName());
        for (const QDeadlineTimer deadline(30'000); !probe.isManaged(); QThread::msleep(50)) {
            if (deadline.hasExpired()) {
                ADD_FAILURE() << "no window manager: " << log().toStdString();
                break;
            }
        }
        start(u"xterm"_s, {u"-T"_s, u"kivo-e2e-elsewhere"_s, u"-e"_s, u"sleep"_s, u"600"_s});
        EXPECT_TRUE(focusWindow(u"kivo-e2e-elsewhere"_s)) << log().toStdString();
        ApplicationSettings::openFile(home_.filePath(u"config/Kivo/Kivo.conf"_s))
            ->setMaximumGapLength(2.0);
        EXPECT_TRUE(QDir().mkpath(home_.filePath(folder)));
        ScopedProcess& kivo = start(QStringLiteral(KIVO_BINARY), {});
        for (const QDeadlineTimer deadline(30'000);
             !QFile::exists(home_.filePath(folder + u'/' + manifest)); QThread::msleep(100)) {
            if (deadline.hasExpired()) {
                ADD_FAILURE() << "no host manifest: " << log().toStdString();
                break;
            }
        }
        return kivo;
    }

    // Brings the window titled `windowTitle` to the front, after `first` (a tab switch) when
    // given; the recorded activity is `title` of the application `bundleId` named `name`.
    test::Stretch stretch(const char* title, const char* bundleId, const char* name,
                          const QString& windowTitle, int dwellMs,
                          std::function<void()> first = {}) {
        return {title, bundleId, name,
                [this, windowTitle, first] {
                    if (first) {
                        first();
                    }
                    return focusWindow(windowTitle);
                },
                dwellMs};
    }
    test::Stretch elsewhere(int dwellMs) {
        return stretch("kivo-e2e-elsewhere", "debian-xterm", "XTerm", u"kivo-e2e-elsewhere"_s,
                       dwellMs);
    }

    // Runs `stretches`, stops Kivo and checks the activities that began with the first stretch.
    void expectScheduleRecorded(ScopedProcess& kivo, const std::vector<test::Stretch>& stretches) {
        // The browser stays in front past the gap first, so that the terminal's first stretch is
        // a capture of its own, not the one before the browser started.
        QThread::msleep(3'000);
        auto expected = test::runSchedule(stretches);
        // The last stretch ends with the signal; Kivo's exit after it is no time in front.
        const double signalled = test::now();
        EXPECT_EQ(kivo.stop(SIGTERM), 0) << log().toStdString();
        expected.back().to = {signalled, signalled};

        const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
        std::vector<Activity> scheduled;
        for (const Activity& activity : store->fetch<Activity>({"", {}, "startAt"})) {
            if (toEpochSeconds(activity.startAt) >= expected.front().from.before) {
                scheduled.push_back(activity);
            }
        }
        // A tab's edge is seen up to a tick late, and the browser's answer adds a little.
        test::expectActivities(scheduled, expected, 2.0);
        test::expectTimeInFront(scheduled, expected);

        // Each page with its address; the day's web totals hold the pages' time under their
        // domain.
        for (const Activity& activity : scheduled) {
            if (activity.title.startsWith(u"Page "_s)) {
                EXPECT_EQ(activity.domainName, u"127.0.0.1"_s) << activity.url.toStdString();
            }
        }
        std::int64_t onPages = 0;
        for (const Activity& activity : store->fetch<Activity>()) {
            onPages += activity.domainName == u"127.0.0.1"_s ? activity.duration : 0;
        }
        std::int64_t webTotal = 0;
        for (const WebUsage& usage : store->fetch<WebUsage>()) {
            webTotal += usage.domainName == u"127.0.0.1"_s ? usage.duration : 0;
        }
        EXPECT_EQ(webTotal, onPages);
        EXPECT_GT(onPages, 0);
    }

    QTemporaryDir home_;
    test::XvfbServer server_;
    QProcessEnvironment environment_ = QProcessEnvironment::systemEnvironment();
    std::vector<std::unique_ptr<ScopedProcess>> started_;
};

TEST_F(BrowserRecordingTest, WithoutTheExtensionABrowserIsRecordedByItsWindowTitle) {
    ScopedProcess& kivo = startSessionAndKivo(u"config/chromium"_s, chromiumManifest);
    test::PageServer pages;
    startChromium(u"plain"_s, pages.address(u"three"_s), false);
    ASSERT_TRUE(focusWindow(u"Page three - Chromium"_s)) << log().toStdString();
    QThread::msleep(3'000);
    ASSERT_TRUE(focusWindow(u"kivo-e2e-elsewhere"_s)) << log().toStdString();
    // Long enough for the browser's capture to be unseen for more than the gap of 2 s.
    QThread::msleep(3'500);
    EXPECT_EQ(kivo.stop(SIGTERM), 0) << log().toStdString();

    const auto store = RecordStore::open(storePath(), RecordStore::Mode::ReadOnly);
    const auto activities = store->fetch<Activity>();
    const auto page = std::ranges::find(activities, u"Page three - Chromium"_s, &Activity::title);
    ASSERT_NE(page, activities.end());
    EXPECT_EQ(page->appBundleId, u"chromium"_s);
    EXPECT_EQ(page->url, u""_s);
    EXPECT_EQ(page->domainName, u""_s);
    EXPECT_GE(page->duration, 2);
}

// A schedule of tabs and windows, each in front for 3 to 12 s; every second is the front tab's.
TEST_F(BrowserRecordingTest, EveryTabAndWindowInFrontOfChromiumIsRecordedOnce) {
    ScopedProcess& kivo = startSessionAndKivo(u"config/chromium"_s, chromiumManifest);
    test::PageServer pages;
    ScopedProcess& chromium = startChromium(u"chromium"_s, pages.address(u"one"_s), true);
    ASSERT_TRUE(focusWindow(u"Page one - Chromium"_s)) << log().toStdString();
    ASSERT_TRUE(runsHost(chromium)) << log().toStdString();
    devTools(u"chromium"_s, "PUT", "/json/new?" + pages.address(u"two"_s).toLatin1());
    ASSERT_TRUE(focusWindow(u"Page two - Chromium"_s)) << log().toStdString();
    std::map<QString, QByteArray> tabs;
    for (const QJsonValue target :
         QJsonDocument::fromJson(devTools(u"chromium"_s, "GET", "/json/list")).array()) {
        tabs[target[u"url"_s].toString()] = target[u"id"_s].toString().toLatin1();
    }
    const auto page = [&](const char* title, const QString& name, int dwellMs, bool isTabSwitch) {
        std::function<void()> activate;
        if (isTabSwitch) {
            activate = [this, id = tabs[pages.address(name)]] {
                devTools(u"chromium"_s, "GET", "/json/activate/" + id);
            };
        }
        return stretch(title, "chromium", "Chromium Web Browser",
                       QString::fromLatin1(title) + u" - Chromium"_s, dwellMs, activate);
    };
    expectScheduleRecorded(
        kivo, {elsewhere(4'000), page("Page two", u"two"_s, 6'000, false),
               page("Page one", u"one"_s, 4'000, true), elsewhere(5'000),
               page("Page one", u"one"_s, 8'000, false), page("Page two", u"two"_s, 5'000, true),
               page("Page one", u"one"_s, 3'000, true), elsewhere(7'000),
               page("Page one", u"one"_s, 10'000, false), page("Page two", u"two"_s, 12'000, true),
               elsewhere(3'000)});
}

// The same with Firefox ESR, whose extension answers a moment after the window changes.
TEST_F(BrowserRecordingTest, EveryTabAndWindowInFrontOfFirefoxIsRecordedOnce) {
    if (QStandardPaths::findExecutable(u"firefox-esr"_s).isEmpty()) {
        GTEST_SKIP() << "Firefox ESR is not installed";
    }
    const QString profile = home_.filePath(u"profile"_s);
    ASSERT_TRUE(test::writeFirefoxProfile(profile));
    ScopedProcess& kivo =
        startSessionAndKivo(u".mozilla"_s, u"native-messaging-hosts/app.kivo.browser_host.json"_s);
    test::PageServer pages;
    ScopedProcess& firefox =
        start(u"firefox-esr"_s, {u"--no-remote"_s, u"--profile"_s, profile, pages.address(u"one"_s),
                                 pages.address(u"two"_s)});
    // The first page's tab is the one in front.
    ASSERT_TRUE(focusWindow(u"Page one — Mozilla Firefox"_s)) << log().toStdString();
    ASSERT_TRUE(runsHost(firefox)) << log().toStdString();
    // Tabs switch with the keyboard, in the window in front: two tabs, so the next is the other.
    const auto page = [&](const char* title, int dwellMs, bool isTabSwitch) {
        std::function<void()> activate;
        if (isTabSwitch) {
            activate = [this] { xdotool({u"key"_s, u"ctrl+Page_Down"_s}); };
        }
        return stretch(title, "firefox-esr", "Firefox ESR",
                       QString::fromLatin1(title) + u" — Mozilla Firefox"_s, dwellMs, activate);
    };
    expectScheduleRecorded(
        kivo, {elsewhere(4'000), page("Page one", 6'000, false), page("Page two", 4'000, true),
               elsewhere(5'000), page("Page two", 8'000, false), page("Page one", 5'000, true),
               page("Page two", 3'000, true), elsewhere(7'000), page("Page two", 10'000, false),
               page("Page one", 12'000, true), elsewhere(3'000)});
}

}  // namespace
}  // namespace kivo
