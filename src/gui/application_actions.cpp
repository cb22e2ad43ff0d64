#include "gui/application_actions.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace kivo {

ApplicationActions::ApplicationActions(QObject* parent) : QObject(parent) {
    reopenMainWindow_ = new QAction(QStringLiteral("Reopen Main Window"), this);
    reopenMainWindow_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_1));
    reopenMainWindow_->setShortcutContext(Qt::ApplicationShortcut);
    connect(reopenMainWindow_, &QAction::triggered, this, &ApplicationActions::mainWindowRequested);

    openWindow_ = new QAction(QStringLiteral("Open Window"), this);
    connect(openWindow_, &QAction::triggered, this, &ApplicationActions::mainWindowRequested);

    settings_ = new QAction(QStringLiteral("Settings..."), this);
    settings_->setShortcut(QKeySequence::Preferences);
    connect(settings_, &QAction::triggered, this, &ApplicationActions::settingsRequested);

    checkForUpdates_ = new QAction(QStringLiteral("Check for Updates…"), this);
    checkForUpdates_->setEnabled(false);
    checkForUpdates_->setToolTip(QStringLiteral("Kivo is updated by the package manager"));

    quit_ = new QAction(QStringLiteral("Quit Kivo"), this);
    quit_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit_->setShortcutContext(Qt::ApplicationShortcut);
    quit_->setMenuRole(QAction::QuitRole);
    connect(quit_, &QAction::triggered, this, &ApplicationActions::quitRequested);

    const std::pair<HelpPage, const char*> pages[] = {
        {HelpPage::website, "Kivo Website"},         {HelpPage::gettingStarted, "Getting Started"},
        {HelpPage::releaseNotes, "Release Notes"},   {HelpPage::contact, "Contact us"},
        {HelpPage::privacyPolicy, "Privacy Policy"},
    };
    for (const auto& [page, text] : pages) {
        auto* action = new QAction(QString::fromUtf8(text), this);
        connect(action, &QAction::triggered, this, [page] { openHelpPage(page); });
        helpPages_[page] = action;
    }
}

void ApplicationActions::fillMenuBar(QMenuBar& menuBar) const {
    QMenu* file = menuBar.addMenu(QStringLiteral("&File"));
    file->addAction(settings_);
    file->addAction(checkForUpdates_);
    file->addSeparator();
    file->addAction(quit_);

    QMenu* window = menuBar.addMenu(QStringLiteral("&Window"));
    window->addAction(reopenMainWindow_);

    QMenu* help = menuBar.addMenu(QStringLiteral("&Help"));
    for (const auto page : {HelpPage::website, HelpPage::gettingStarted, HelpPage::releaseNotes,
                            HelpPage::contact, HelpPage::privacyPolicy}) {
        help->addAction(helpPages_.at(page));
    }
}

}  // namespace kivo
