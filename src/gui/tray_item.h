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
class Productivity;

// The tray item: a gauge with today's score, the tooltip "<score>%", and the application's
// short menu. It follows the score as it changes.
class TrayItem : public QObject {
    Q_OBJECT

public:
    TrayItem(Productivity& productivity, ApplicationActions& actions, QObject* parent = nullptr);
    ~TrayItem() override;

    void show();
    QString toolTip() const;
    QMenu& menu() const { return *menu_; }

private:
    void showScore(std::int64_t score);

    QMenu* menu_ = nullptr;
    QSystemTrayIcon* icon_ = nullptr;
};

// The tooltip text of a score: "42%".
QString scoreText(std::int64_t score);

}  // namespace kivo
