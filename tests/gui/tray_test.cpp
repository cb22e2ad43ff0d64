// The tray item follows today's score.
#include <gtest/gtest.h>

#include <QAction>
#include <QMenu>

#include "gui/application_actions.h"
#include "gui/gauge_icon.h"
#include "gui/tray_item.h"
#include "model/application_state.h"
#include "reports/productivity.h"

namespace kivo {
namespace {

TEST(TrayItemTest, TooltipAndGaugeFollowTheScore) {
    Productivity productivity;
    ApplicationActions actions;
    ApplicationState state;
    TrayItem tray(productivity, state, actions);
    EXPECT_EQ(tray.toolTip(), QStringLiteral("100%"));
    for (const std::int64_t score : {42, 0, -25, 100}) {
        productivity.setValue(score);
        EXPECT_EQ(tray.toolTip(), QString::number(score) + u'%');
    }
    state.setIsAway(true);
    EXPECT_EQ(tray.toolTip(), QStringLiteral("Paused: away"));
    productivity.setValue(7);
    EXPECT_EQ(tray.toolTip(), QStringLiteral("Paused: away")) << "a new score while away";
    state.setIsAway(false);
    EXPECT_EQ(tray.toolTip(), QStringLiteral("7%"));
    // The needle and the figure differ between scores.
    EXPECT_NE(gaugeImage(42, 32), gaugeImage(87, 32));
    EXPECT_EQ(gaugeImage(42, 32), gaugeImage(42, 32));
}

TEST(TrayItemTest, MenuEntriesInOrderWithUpdatesDisabled) {
    Productivity productivity;
    ApplicationState state;
    ApplicationActions actions;
    TrayItem tray(productivity, state, actions);
    QStringList texts;
    for (const QAction* action : tray.menu().actions()) {
        texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    }
    EXPECT_EQ(texts,
              (QStringList{u"Open Window"_qs, u"-"_qs, u"Getting Started"_qs, u"Settings..."_qs,
                           u"Check for Updates…"_qs, u"-"_qs, u"Quit Kivo"_qs}));
    EXPECT_FALSE(actions.checkForUpdates()->isEnabled());

    int requests = 0;
    QObject::connect(&actions, &ApplicationActions::mainWindowRequested, [&] { ++requests; });
    actions.openWindow()->trigger();
    actions.reopenMainWindow()->trigger();
    EXPECT_EQ(requests, 2);
    EXPECT_EQ(actions.reopenMainWindow()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_1));

    int settingsRequests = 0;
    QObject::connect(&actions, &ApplicationActions::settingsRequested, [&] { ++settingsRequests; });
    ASSERT_TRUE(actions.settings()->isEnabled());
    actions.settings()->trigger();
    EXPECT_EQ(settingsRequests, 1);
}

}  // namespace
}  // namespace kivo
