#pragma once

#include <QObject>
#include <cstdint>

QT_BEGIN_NAMESPACE
class QAction;
class QMenu;
class QSystemTrayIcon;
QT_END_NAMESPACE

namespace kivo {

class ApplicationActions;
class ApplicationState;
class Productivity;

// The tray item: a gauge with today's score, the tooltip "<score>%" ("Paused: away" while the
// user is away, so that it is clear why nothing counts), and the application's short menu. It
// follows the score and the presence as they change.
class TrayItem : public QObject {
    Q_OBJECT

public:
    TrayItem(Productivity& productivity, const ApplicationState& state, ApplicationActions& actions,
             QObject* parent = nullptr);
    ~TrayItem() override;

    void show();
    QString toolTip() const;
    QMenu& menu() const { return *menu_; }

private:
    void showState();

    Productivity& productivity_;
    const ApplicationState& state_;

    QMenu* menu_ = nullptr;
    QSystemTrayIcon* icon_ = nullptr;
};

// The tooltip text of a score: "42%".
QString scoreText(std::int64_t score);

}  // namespace kivo
