#pragma once

#include <QObject>

namespace kivo {

// What the running application is doing, for views and the capture loop to consult.
class ApplicationState : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isBackground READ isBackground WRITE setIsBackground NOTIFY isBackgroundChanged)
    Q_PROPERTY(bool isAway READ isAway WRITE setIsAway NOTIFY isAwayChanged)

public:
    using QObject::QObject;

    // True while Kivo is not the active application.
    bool isBackground() const { return isBackground_; }
    void setIsBackground(bool value) {
        if (value != isBackground_) {
            isBackground_ = value;
            Q_EMIT isBackgroundChanged(value);
        }
    }

    // True while recording pauses because the user is away (screen locked, session in the
    // background, idle past the timeout); the tray and the window say "Paused: away".
    bool isAway() const { return isAway_; }
    void setIsAway(bool value) {
        if (value != isAway_) {
            isAway_ = value;
            Q_EMIT isAwayChanged(value);
        }
    }

Q_SIGNALS:
    void isBackgroundChanged(bool isBackground);
    void isAwayChanged(bool isAway);

private:
    bool isBackground_ = false;
    bool isAway_ = false;
};

}  // namespace kivo
