// Renders Kivo's windows over a fixture store into PNG files, for looking at them as a user does:
//   kivo_screenshots OUTPUT_FOLDER light|dark WIDTHxHEIGHT
// Run it through render.sh, which gives it a private X server.
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QScreen>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeView>
#include <cstdio>
#include <random>

#include "capture/daily_totals.h"
#include "capture/recorder.h"
#include "gui/activity_list_view.h"
#include "gui/application_actions.h"
#include "gui/application_chooser.h"
#include "gui/date_picker_window.h"
#include "gui/editor_windows.h"
#include "gui/filter_edit_view.h"
#include "gui/main_window.h"
#include "gui/missing_backend_dialog.h"
#include "gui/project_edit_view.h"
#include "gui/rule_preview_dialog.h"
#include "gui/settings_view.h"
#include "gui/sidebar_view.h"
#include "gui/tray_item.h"
#include "model/application_state.h"
#include "model/local_day.h"
#include "model/unassigned_entries.h"
#include "reports/productivity.h"
#include "support/fake_desktop.h"

namespace kivo {
namespace {

const QDate today(2026, 3, 11);

class FixedClock final : public Clock {
public:
    Instant now() const override {
        return fromEpochSeconds(
                   static_cast<double>(QDateTime(today, QTime(17, 30)).toSecsSinceEpoch())) +
               movedOn_;
    }
    // For a capture that has been open a while.
    void moveOn(Seconds seconds) { movedOn_ += seconds; }

private:
    Seconds movedOn_{0};
};

struct App {
    const char* id;
    const char* name;
    const char* icon;
};
const App apps[] = {
    {"org.gnome.TextEditor", "Text Editor", "accessories-text-editor"},
    {"org.kde.konsole", "Konsole", "utilities-terminal"},
    {"firefox-esr", "Firefox ESR", "firefox-esr"},
    {"org.gnome.Evolution", "Evolution", "evolution"},
    {"org.telegram.desktop", "Telegram", "telegram"},
    {"libreoffice-writer", "LibreOffice Writer", "libreoffice-writer"},
    {"org.kde.okular", "Okular", "okular"},
};

struct Tag {
    const char* project;
    const char* name;
    int app;
    int rating;
    int weight;  // share of a day, in parts
    const char* domain;
};
const Tag tags[] = {
    {"Kivo", "Coding", 0, 100, 30, nullptr},
    {"Kivo", "Terminal", 1, 90, 12, nullptr},
    {"Kivo", "Qt documentation", 2, 80, 9, "doc.qt.io"},
    {"Writing", "Articles", 5, 100, 10, nullptr},
    {"Writing", "Research", 2, 70, 6, "en.wikipedia.org"},
    {"Email & Chat", "Mail", 3, 40, 8, nullptr},
    {"Email & Chat", "Chat", 4, 20, 5, nullptr},
    {"Reading", "Papers", 6, 60, 4, nullptr},
    {"Reading", "News", 2, 0, 3, "lwn.net"},
    {"Old Project", "Archive", 0, 50, 2, nullptr},
};

// Three window titles per tag, in the order of `tags`.
const char* const titles[][3] = {
    {"main_window.cpp - kivo", "activity_list.cpp - kivo", "CMakeLists.txt - kivo"},
    {"~/src/kivo: ninja", "~/src/kivo: ctest", "~: htop"},
    {"QAbstractItemModel Class | Qt Core", "Qt Charts Overview", "QTreeView Class | Qt Widgets"},
    {"Notes on time.odt", "Outline.odt", "Review.odt"},
    {"Time tracking - Wikipedia", "Pomodoro Technique - Wikipedia", "Flow - Wikipedia"},
    {"Inbox - Evolution", "Re: release plan", "Drafts"},
    {"Team chat", "Family", "Saved messages"},
    {"attention.pdf", "habits.pdf", "focus.pdf"},
    {"LWN.net Weekly Edition", "Kernel release status", "A look at Qt 6.8"},
    {"old_notes.txt", "todo.txt", "archive.txt"},
};

Instant at(QDate day, int hour, int minute) {
    return fromEpochSeconds(
        static_cast<double>(QDateTime(day, QTime(hour, minute)).toSecsSinceEpoch()));
}

Activity activityOf(const Filter& filter, const QString& title, const QString& domain,
                    std::int64_t seconds, Instant startAt) {
    auto activity = newRecord<Activity>(startAt);
    activity.projectId = filter.projectId;
    activity.filterId = filter.id;
    activity.appName = filter.appName;
    activity.appBundleId = filter.appBundleId;
    activity.title = title;
    if (!domain.isEmpty()) {
        activity.domainName = domain;
        activity.url = u"https://" + domain + u"/" + QString::number(qHash(title) % 1000);
    }
    activity.duration = seconds;
    activity.startAt = startAt;
    activity.endAt = startAt + Seconds(static_cast<double>(seconds));
    return activity;
}

// Browsing and terminal time that no tag claimed, with its totals.
void fillUnassigned(RecordStore& store, const Clock& clock, QDate day) {
    ensureUnassignedEntries(store, clock.now());
    Filter unassigned;
    for (const Filter& filter : store.fetch<Filter>(live())) {
        if (filter.isNameChangeOnly) {
            unassigned = filter;
        }
    }
    struct Loose {
        int app;
        const char* title;
        const char* domain;
        int seconds;
        int hour;
    };
    const Loose loose[] = {
        {2, "LWN.net: Security updates", "lwn.net", 540, 8},
        {2, "Hacker News", "news.ycombinator.com", 420, 13},
        {1, "man bash", nullptr, 300, 16},
    };
    for (const Loose& entry : loose) {
        unassigned.appBundleId = QString::fromUtf8(apps[entry.app].id);
        unassigned.appName = QString::fromUtf8(apps[entry.app].name);
        const auto activity =
            activityOf(unassigned, QString::fromUtf8(entry.title),
                       entry.domain ? QString::fromUtf8(entry.domain) : QString(),
                       entry.seconds + day.day() * 7, at(day, entry.hour, day.day() % 50));
        store.insert(activity);
        addToDailyTotals(store, activity, clock.now());
    }
}

// Projects, tags and a week of activities and daily totals as recording leaves them.
void fillStore(RecordStore& store, const Clock& clock) {
    std::map<QString, Project> projects;
    std::vector<Filter> filters;
    for (const Tag& tag : tags) {
        const QString projectName = QString::fromUtf8(tag.project);
        if (!projects.contains(projectName)) {
            auto project = newRecord<Project>(clock.now());
            project.projectName = projectName;
            project.isArchived = projectName == u"Old Project";
            store.insert(project);
            projects[projectName] = project;
        }
        auto filter = newRecord<Filter>(clock.now());
        filter.projectId = projects[projectName].id;
        filter.tagName = QString::fromUtf8(tag.name);
        filter.appBundleId = QString::fromUtf8(apps[tag.app].id);
        filter.appName = QString::fromUtf8(apps[tag.app].name);
        filter.rating = tag.rating;
        store.insert(filter);
        filters.push_back(filter);
    }
    std::mt19937 random(7);
    std::uniform_real_distribution<double> jitter(0.4, 1.6);
    for (int daysBack = 6; daysBack >= 0; --daysBack) {
        const QDate day = today.addDays(-daysBack);
        const Instant noon =
            fromEpochSeconds(static_cast<double>(QDateTime(day, QTime(12, 0)).toSecsSinceEpoch()));
        const double dayLength = day.dayOfWeek() >= 6 ? 2.5 * 3600 : 7.0 * 3600;
        for (std::size_t i = 0; i < filters.size(); ++i) {
            const Tag& tag = tags[i];
            const auto seconds =
                static_cast<std::int64_t>(dayLength * tag.weight / 89.0 * jitter(random));
            auto tagUsage = newRecord<TagUsage>(noon);
            tagUsage.projectId = filters[i].projectId;
            tagUsage.filterId = filters[i].id;
            tagUsage.duration = seconds;
            store.insert(tagUsage);
            auto appUsage = newRecord<AppUsage>(noon);
            appUsage.filterId = filters[i].id;
            appUsage.appBundleId = filters[i].appBundleId;
            appUsage.appName = filters[i].appName;
            appUsage.duration = seconds;
            store.insert(appUsage);
            auto webUsage = newRecord<WebUsage>(noon);
            webUsage.filterId = filters[i].id;
            webUsage.domainName = tag.domain ? QString::fromUtf8(tag.domain) : QString();
            webUsage.duration = seconds;
            store.insert(webUsage);
            // The same seconds as a few activities spread over the working day.
            std::int64_t left = seconds;
            for (int k = 0; k < 3; ++k) {
                const std::int64_t part = k == 2 ? left : seconds * (5 - 2 * k) / 10;
                left -= part;
                const int hour = 9 + static_cast<int>(i * 2 + k * 3) % 9;
                store.insert(activityOf(filters[i], QString::fromUtf8(titles[i][k]),
                                        webUsage.domainName, part,
                                        at(day, hour, static_cast<int>(i * 7 + k * 11) % 60)));
            }
        }
        fillUnassigned(store, clock, day);
    }
    store.save();
}

QPalette darkPalette() {
    QPalette palette;
    const QColor window(0x2b, 0x2e, 0x31), base(0x1f, 0x22, 0x24), text(0xe6, 0xe8, 0xea);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, QColor(0x27, 0x2a, 0x2d));
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::Button, QColor(0x35, 0x39, 0x3c));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, QColor(0x9a, 0xa0, 0xa6));
    palette.setColor(QPalette::Highlight, QColor(0x1f, 0x8f, 0x88));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x5f, 0xd0, 0xc0));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(0x6e, 0x74, 0x7a));
    }
    return palette;
}

void settle() {
    for (int i = 0; i < 5; ++i) {
        QApplication::processEvents();
    }
}

void save(QWidget& widget, const QString& path) {
    settle();
    if (!widget.grab().save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qUtf8Printable(path));
    }
}

struct Session {
    Session(const QString& folder, bool withData)
        : store(RecordStore::open(folder + u"/kivo.sqlite")),
          settings(ApplicationSettings::openFile(folder + u"/Kivo.conf")) {
        for (const App& app : apps) {
            catalog.entries.push_back({QString::fromUtf8(app.id), QString::fromUtf8(app.name),
                                       QString::fromUtf8(app.icon)});
        }
        if (withData) {
            fillStore(*store, clock);
        }
        recorder =
            std::make_unique<Recorder>(desktop.focus, desktop.tabs, *store, *settings, clock);
        window = std::make_unique<MainWindow>(
            WindowServices{*store, *settings, productivity, *recorder, catalog, clock});
        actions.fillMenuBar(*window->menuBar());
    }

    FixedClock clock;
    std::unique_ptr<RecordStore> store;
    std::unique_ptr<ApplicationSettings> settings;
    test::FakeDesktop desktop;
    test::FakeApplicationCatalog catalog;
    Productivity productivity;
    ApplicationActions actions;
    std::unique_ptr<Recorder> recorder;
    std::unique_ptr<MainWindow> window;
};

// The editors, the application chooser and the settings window.
void renderEditors(Session& session, const QString& prefix) {
    EditorWindows& editors = session.window->editors();
    const auto& projects = session.window->treeModel().projects();
    const Project project = session.store->fetch<Project>(live()).front();
    ProjectEditView* projectEditor = editors.openProjectEditor(project.id);
    save(*projectEditor, prefix + u"project-editor.png");
    projectEditor->close();

    const QUuid filterId = projects.front().filters.front().id;
    FilterEditView* filterEditor = editors.openFilterEditor(filterId);
    save(*filterEditor, prefix + u"filter-editor.png");
    filterEditor->close();

    // A new tag with an expression that does not compile.
    filterEditor = editors.openFilterEditor(projects.front().id, std::nullopt);
    filterEditor->selectApplication(QStringLiteral("firefox-esr"));
    filterEditor->tagNameField().setText(QStringLiteral("Reading"));
    filterEditor->titleRegexSwitch().setChecked(true);
    filterEditor->titleField().setText(QStringLiteral("[Docs"));
    save(*filterEditor, prefix + u"filter-editor-invalid.png");

    ApplicationChooser chooser(session.catalog);
    chooser.show();
    chooser.searchField().setText(QStringLiteral("te"));
    save(chooser, prefix + u"application-chooser.png");
    chooser.close();
    filterEditor->close();

    SettingsView settings(*session.settings,
                          SessionFacts{QStringLiteral("X11 (display :0)"), QString(),
                                       QStringLiteral("/home/user/.local/share/Kivo/kivo.sqlite"),
                                       session.settings->filePath()},
                          AutostartEntry(QDir::tempPath()), QStringLiteral("/usr/bin/kivo"));
    settings.resize(620, 400);
    settings.show();
    save(settings, prefix + u"settings.png");
    settings.close();
}

// Today's applications with a document open in front for 25 minutes, none of it written yet.
void renderOpenCapture(const QString& folder, QSize size, const QString& prefix) {
    QDir().mkpath(folder);
    Session session(folder, true);
    MainWindow& window = *session.window;
    window.resize(size);
    window.show();
    window.stopRecording();  // the ticks below stand for the 25 minutes
    const App& reader = apps[6];
    session.desktop.show(QString::fromUtf8(reader.id), QString::fromUtf8(reader.name),
                         QStringLiteral("manual.pdf"));
    session.recorder->captureTick();
    for (int second = 0; second < 25 * 60; ++second) {
        session.clock.moveOn(Seconds{1});
        session.recorder->captureTick();
    }
    window.forceUpdate();
    window.selectSection(MenuType::applications);
    save(window, prefix + u"open-capture.png");
    window.hide();
}

int render(const QString& output, const QString& theme, QSize size) {
    QDir().mkpath(output);
    const QString prefix =
        QStringLiteral("%1/%2-%3x%4-").arg(output, theme).arg(size.width()).arg(size.height());
    QTemporaryDir scratch;
    QDir().mkpath(scratch.filePath(QStringLiteral("data")));
    QDir().mkpath(scratch.filePath(QStringLiteral("empty")));

    Session session(scratch.filePath(QStringLiteral("data")), true);
    MainWindow& window = *session.window;
    window.resize(size);
    window.show();
    window.setSelectedRange(today.addDays(-6), today);
    const std::pair<MenuType, const char*> sections[] = {
        {MenuType::projects, "projects"},
        {MenuType::tags, "tags"},
        {MenuType::applications, "applications"},
        {MenuType::websites, "websites"},
        {MenuType::stats, "stats"},
    };
    for (const auto& [type, name] : sections) {
        window.selectSection(type);
        save(window, prefix + QString::fromLatin1(name) + u".png");
    }
    window.selectSection(MenuType::applications);
    window.setIsShowPieChart(false);
    save(window, prefix + u"applications-bars.png");
    window.setIsCompactColumns(true);
    window.selectSection(MenuType::tags);
    save(window, prefix + u"tags-compact-bars.png");
    window.setIsCompactColumns(false);
    window.setIsShowPieChart(true);

    // One day, archived projects shown, one project selected in the tree.
    window.setSelectedRange(today, today);
    window.treeModel().setIsShowArchivedProject(true);
    window.selectSection(MenuType::projects);
    auto& tree = window.sidebar().treeView();
    tree.setCurrentIndex(tree.model()->index(0, 0, tree.model()->index(0, 0)));
    save(window, prefix + u"today-archived-selected.png");

    // The activity list of the week: grouped, with time entries, alone in the detail area, and
    // the preview of the News tag's rules over the unassigned time.
    window.setSelectedRange(today.addDays(-6), today);
    window.selectSection(MenuType::tags);
    save(window, prefix + u"activities.png");
    window.activityList().setIsShowTimeEntries(true);
    window.setIsDetailUnified(true);
    save(window, prefix + u"activities-entries-unified.png");
    window.activityList().setIsShowTimeEntries(false);
    window.setIsDetailUnified(false);
    for (const Filter& filter : session.store->fetch<Filter>(live())) {
        if (filter.tagName == u"News") {
            window.activityList().previewRule(filter.id);
        }
    }
    if (auto* preview = window.findChild<RulePreviewDialog*>()) {
        save(*preview, prefix + u"apply-to-past-time.png");
        preview->close();
    }
    window.setSelectedRange(today, today);

    window.openDatePicker();
    save(*window.datePicker(), prefix + u"date-picker.png");
    window.datePicker()->close();

    const ApplicationState state;
    TrayItem tray(session.productivity, state, session.actions);
    tray.menu().popup(window.geometry().center());
    save(tray.menu(), prefix + u"tray-menu.png");
    tray.menu().hide();

    QMessageBox* warning = showMissingBackendWarning(
        &window, QStringLiteral("no X11 display to record (DISPLAY is not set)"));
    save(*warning, prefix + u"missing-backend.png");
    warning->close();

    renderEditors(session, prefix);
    window.hide();

    renderOpenCapture(scratch.filePath(QStringLiteral("open")), size, prefix);

    Session empty(scratch.filePath(QStringLiteral("empty")), false);
    empty.window->resize(size);
    empty.window->show();
    save(*empty.window, prefix + u"empty.png");
    return 0;
}

}  // namespace
}  // namespace kivo

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 4 || !arguments[3].contains(u'x')) {
        std::fprintf(stderr, "usage: kivo_screenshots OUTPUT_FOLDER light|dark WIDTHxHEIGHT\n");
        return 2;
    }
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    if (arguments[2] == u"dark") {
        QApplication::setPalette(kivo::darkPalette());
    }
    const QStringList size = arguments[3].split(u'x');
    return kivo::render(arguments[1], arguments[2], QSize(size[0].toInt(), size[1].toInt()));
}
