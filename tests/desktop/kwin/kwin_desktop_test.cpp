#include "desktop/kwin/kwin_desktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <cmath>

#include "desktop/kwin/fake_kwin.h"
#include "desktop/xdg/desktop_fixtures.h"
#include "e2e/private_bus.h"

namespace kivo {
namespace {

using test::FakeKWin;

TEST(KWinWindowTest, AReportWithoutCaptionIsNoWindowAndAPidThatIsNoProcessIsNone) {
    // No window, or no caption: nothing. A process id that is none: 0.
    EXPECT_FALSE(kwinWindowFromReport({}));
    EXPECT_FALSE(kwinWindowFromReport({{QStringLiteral("pid"), 12}}));
    EXPECT_FALSE(kwinWindowFromReport({{QStringLiteral("caption"), 12}}));
    const QVariant notProcesses[] = {-3.0,      0.0, 1.5, std::nan(""), 1e12, QStringLiteral("12"),
                                     QVariant()};
    for (const QVariant& pid : notProcesses) {
        SCOPED_TRACE(pid.toString().toStdString());
        const auto window = kwinWindowFromReport(
            {{QStringLiteral("caption"), QStringLiteral("t")}, {QStringLiteral("pid"), pid}});
        ASSERT_TRUE(window);
        EXPECT_EQ(window->processId, 0);
    }
}

// The backend against a fake KWin on a private bus, with fixture desktop entries and an empty
// process folder.
class KWinDesktopTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(bus_.isReady());
        const QString applications = root_.filePath(QStringLiteral("data/applications/"));
        test::writeFixtureFile(applications + QStringLiteral("org.example.Editor.desktop"),
                               test::applicationEntry("Editor"));
        test::writeFixtureFile(applications + QStringLiteral("debian-xterm.desktop"),
                               test::applicationEntry("XTerm", "StartupWMClass=XTerm\n"));
        test::writeFixtureFile(script_, "// the script\n");
        catalog_.rescan();
    }

    void TearDown() override { QDBusConnection::disconnectFromBus(kivoConnection().name()); }

    QDBusConnection kivoConnection() const {
        return QDBusConnection::connectToBus(bus_.address(), QStringLiteral("kivo"));
    }

    std::unique_ptr<KWinDesktop> connect(QString& failure) {
        return KWinDesktop::connect(
            {kivoConnection(), script_, &catalog_, root_.filePath(QStringLiteral("proc"))},
            failure);
    }

    // Lets the reports in, then samples.
    static std::optional<FocusedWindow> sample(KWinDesktop& desktop) {
        for (const QDeadlineTimer deadline(300); !deadline.hasExpired();) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        }
        return desktop.focusedWindow();
    }

    test::PrivateBus bus_;
    QTemporaryDir root_;
    const QString script_ = root_.filePath(QStringLiteral("share/kivo/kwin/reporter.js"));
    XdgApplicationCatalog catalog_{{QString(), root_.filePath(QStringLiteral("data")),
                                    root_.filePath(QStringLiteral("no-system-data")),
                                    QStringLiteral("C")}};
};

TEST_F(KWinDesktopTest, UnloadsAnEarlierCopyThenLoadsAndRunsTheScriptWhereEachPlasmaPutsIt) {
    const struct {
        FakeKWin::Plasma plasma;
        const char* scriptObject;
    } cases[] = {{FakeKWin::Plasma::five, "/3"}, {FakeKWin::Plasma::six, "/Scripting/Script3"}};
    for (const auto& [plasma, scriptObject] : cases) {
        SCOPED_TRACE(scriptObject);
        FakeKWin kwin(bus_.address(), QStringLiteral("kwin"), plasma);
        QString failure;
        auto desktop = connect(failure);
        ASSERT_NE(desktop, nullptr) << failure.toStdString();
        const QString unload = QStringLiteral("unload kivo-active-window");
        EXPECT_EQ(
            kwin.calls(),
            QStringList(
                {unload, QStringLiteral("load ") + script_ + QStringLiteral(" kivo-active-window"),
                 QStringLiteral("run ") + QLatin1String(scriptObject), QStringLiteral("start")}));
        desktop.reset();
        EXPECT_EQ(kwin.calls().size(), 5);
        EXPECT_EQ(kwin.calls().last(), unload) << "a Kivo that ends takes its script along";
    }
}

TEST_F(KWinDesktopTest, WhenTheScriptCannotStartTheFailureSaysWhatToDo) {
    QString failure;
    EXPECT_EQ(connect(failure), nullptr);
    EXPECT_TRUE(failure.contains(QLatin1String("KWin is not on the session bus")));
    EXPECT_TRUE(failure.contains(QLatin1String("start Kivo from within the Plasma session")));

    {
        FakeKWin refusing(bus_.address(), QStringLiteral("kwin"), FakeKWin::Plasma::five, true);
        EXPECT_EQ(connect(failure), nullptr);
        EXPECT_TRUE(failure.contains(QLatin1String("KWin did not load the script")))
            << failure.toStdString();
        EXPECT_TRUE(failure.contains(QLatin1String("log out and back in")));
    }

    FakeKWin kwin(bus_.address(), QStringLiteral("kwin"), FakeKWin::Plasma::six);
    {
        const auto first = connect(failure);
        ASSERT_NE(first, nullptr) << failure.toStdString();
        EXPECT_EQ(connect(failure), nullptr);
        EXPECT_TRUE(failure.contains(QLatin1String("quit the other Kivo")))
            << failure.toStdString();
    }
    ASSERT_TRUE(QFile::remove(script_));
    EXPECT_EQ(connect(failure), nullptr);
    EXPECT_TRUE(failure.contains(QLatin1String("reinstall Kivo"))) << failure.toStdString();
    EXPECT_EQ(kwin.calls().size(), 5) << "only the first Kivo's script came and went";
    EXPECT_FALSE(failure.contains(u'\n'));
}

TEST_F(KWinDesktopTest, TheFocusedWindowIsTheLastReportedOneNamedByItsDesktopEntry) {
    FakeKWin kwin(bus_.address(), QStringLiteral("kwin"), FakeKWin::Plasma::six);
    QString failure;
    auto desktop = connect(failure);
    ASSERT_NE(desktop, nullptr) << failure.toStdString();

    const auto window = [](const char* caption, const char* resourceClass,
                           const char* desktopFileName, QVariant pid) {
        return QVariantMap{{QStringLiteral("caption"), QString::fromUtf8(caption)},
                           {QStringLiteral("resourceClass"), QByteArray(resourceClass)},
                           {QStringLiteral("resourceName"), QByteArray(resourceClass)},
                           {QStringLiteral("desktopFileName"), QString::fromUtf8(desktopFileName)},
                           {QStringLiteral("pid"), pid},
                           {QStringLiteral("internalId"), QString::fromUtf8(caption)}};
    };
    const struct {
        QVariantMap report;
        const char* bundleId;  // nullptr: no sample
        const char* title;
        std::int64_t processId;
    } steps[] = {
        // A Wayland window names its app_id; an X client only its lower-cased WM_CLASS.
        {window("notes.txt", "org.example.editor", "org.example.Editor", 77.0),
         "org.example.Editor", "notes.txt", 77},
        {window("~: make", "xterm", "", 78), "debian-xterm", "~: make", 78},
        // KWin's null activation before the next one: nothing in front for that moment.
        {{}, nullptr, nullptr, 0},
        {window("todo.txt", "org.example.editor", "org.example.Editor.desktop", 79.0),
         "org.example.Editor", "todo.txt", 79},
        {window("Unknown", "org.example.unknown", "org.example.Unknown", 80.0), nullptr, nullptr,
         0},
        {window("Kivo", "kivo", "org.example.Editor", double(::getpid())), nullptr, nullptr, 0},
    };
    for (const auto& [report, bundleId, title, processId] : steps) {
        SCOPED_TRACE(report.value(QStringLiteral("caption")).toString().toStdString());
        kwin.report(report);
        const auto sampled = sample(*desktop);
        ASSERT_EQ(sampled.has_value(), bundleId != nullptr);
        if (sampled) {
            EXPECT_EQ(sampled->bundleId, QString::fromUtf8(bundleId));
            EXPECT_EQ(sampled->title, QString::fromUtf8(title));
            EXPECT_EQ(sampled->processId, processId);
            EXPECT_EQ(sampled->name, bundleId == QByteArray("debian-xterm")
                                         ? QStringLiteral("XTerm")
                                         : QStringLiteral("Editor"));
        }
    }

    // Only KWin speaks for the desktop: another program's report changes nothing.
    kwin.report(window("notes.txt", "org.example.editor", "org.example.Editor", 77.0));
    ASSERT_TRUE(sample(*desktop));
    const QDBusConnection other =
        QDBusConnection::connectToBus(bus_.address(), QStringLiteral("other"));
    FakeKWin::reportFrom(other, {});
    FakeKWin::reportFrom(other, window("forged", "xterm", "", 5.0));
    const auto afterForgery = sample(*desktop);
    ASSERT_TRUE(afterForgery);
    EXPECT_EQ(afterForgery->title, QStringLiteral("notes.txt"));
    QDBusConnection::disconnectFromBus(other.name());
}

TEST_F(KWinDesktopTest, AKWinThatRestartsGetsTheScriptAgainAndOnlyItIsHeard) {
    auto kwin =
        std::make_unique<FakeKWin>(bus_.address(), QStringLiteral("kwin"), FakeKWin::Plasma::five);
    QString failure;
    auto desktop = connect(failure);
    ASSERT_NE(desktop, nullptr) << failure.toStdString();
    const QVariantMap editor{
        {QStringLiteral("caption"), QStringLiteral("notes.txt")},
        {QStringLiteral("desktopFileName"), QStringLiteral("org.example.Editor")}};
    kwin->report(editor);
    ASSERT_TRUE(sample(*desktop));

    kwin.reset();
    EXPECT_FALSE(sample(*desktop)) << "the old KWin's window is gone with it";
    FakeKWin restarted(bus_.address(), QStringLiteral("kwin-again"), FakeKWin::Plasma::five);
    EXPECT_FALSE(sample(*desktop));
    EXPECT_EQ(restarted.calls().size(), 4) << restarted.calls().join(u',').toStdString();
    EXPECT_TRUE(restarted.calls().contains(QLatin1String("run /3")));
    restarted.report(editor);
    const auto window = sample(*desktop);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->title, QStringLiteral("notes.txt"));
}

}  // namespace
}  // namespace kivo
