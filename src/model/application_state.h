#pragma once

#include <QObject>

namespace kivo {

// What the running application is doing, for views and the capture loop to consult.
class ApplicationState : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isBackground READ isBackground WRITE setIsBackground NOTIFY isBackgroundChanged)

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

Q_SIGNALS:
    void isBackgroundChanged(bool isBackground);

private:
    bool isBackground_ = false;
};

}  // namespace kivo
