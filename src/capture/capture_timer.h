#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>

#include "capture/recorder.h"
#include "model/application_settings.h"

namespace kivo {

// The repeating timer that drives the recorder on the main thread. The interval is read from the
// settings when the timer starts; a changed interval applies from the next start.
class CaptureTimer : public QObject {
    Q_OBJECT

public:
    CaptureTimer(Recorder& recorder, const ApplicationSettings& settings,
                 QObject* parent = nullptr);

    // Starts ticking; a running timer is left as it is.
    void start();
    void stop();
    bool isRunning() const;
    std::chrono::milliseconds interval() const;

private:
    const ApplicationSettings& settings_;
    QTimer timer_;
};

}  // namespace kivo
