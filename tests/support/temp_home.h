#pragma once

#include <QString>
#include <QTemporaryDir>
#include <memory>

#include "model/application_settings.h"
#include "model/record_store.h"

namespace kivo::test {

// A private folder standing in for the user's home: a store and a settings file inside it,
// removed with the object.
class TempHome {
public:
    TempHome();

    QString path() const { return dir_.path(); }
    QString storePath() const { return dir_.filePath(QStringLiteral("data/Kivo/kivo.sqlite")); }
    QString settingsPath() const { return dir_.filePath(QStringLiteral("config/Kivo/Kivo.conf")); }

    std::unique_ptr<RecordStore> openStore() const;
    std::unique_ptr<ApplicationSettings> openSettings() const;

private:
    QTemporaryDir dir_;
};

// Sets TZ for the life of the object, so that local days can be tested on a chosen calendar.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* zone);
    ~ScopedTimeZone();
    ScopedTimeZone(const ScopedTimeZone&) = delete;
    ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

private:
    QByteArray previous_;
    bool hadPrevious_;
};

}  // namespace kivo::test
