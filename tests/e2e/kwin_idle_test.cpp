// KWin 5.27 offers ext_idle_notifier_v1 (sway 1.7 only the older KDE protocol): the notifier
// against a private KWin, with no input at all, says idle once the timeout has passed.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>

#include "desktop/wayland/wayland_idle_notifier.h"
#include "e2e/kwin_session.h"

namespace kivo {
namespace {

using test::KWinSession;

TEST(KWinIdleTest, NotifiesIdleOnceTheTimeoutHasPassedWithoutInput) {
    KWinSession session;
    ASSERT_TRUE(session.isReady());
    QString failure;
    const auto notifier = WaylandIdleNotifier::connect(session.displayPath(), failure);
    ASSERT_NE(notifier, nullptr) << failure.toStdString();

    std::vector<IdleNotifier::Change> changes;
    QElapsedTimer sinceAsked;
    sinceAsked.start();
    notifier->notifyAfter(std::chrono::milliseconds(1'500),
                          [&changes](IdleNotifier::Change change) { changes.push_back(change); });
    qint64 idledAfter = -1;
    for (const QDeadlineTimer deadline(30'000); !deadline.hasExpired() && changes.empty();
         QThread::msleep(50)) {
        QCoreApplication::processEvents();
        ASSERT_TRUE(notifier->update());
        idledAfter = sinceAsked.elapsed();
    }
    ASSERT_EQ(changes, std::vector{IdleNotifier::Change::idled});
    EXPECT_GE(idledAfter, 1'400) << "not before the timeout";
}

}  // namespace
}  // namespace kivo
