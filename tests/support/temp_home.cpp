#include "support/temp_home.h"

#include <gtest/gtest.h>

#include <ctime>

namespace kivo::test {

TempHome::TempHome() {
    EXPECT_TRUE(dir_.isValid());
}

std::unique_ptr<RecordStore> TempHome::openStore() const {
    return RecordStore::open(storePath());
}

std::unique_ptr<ApplicationSettings> TempHome::openSettings() const {
    return ApplicationSettings::openFile(settingsPath());
}

ScopedTimeZone::ScopedTimeZone(const char* zone)
    : previous_(qgetenv("TZ")), hadPrevious_(qEnvironmentVariableIsSet("TZ")) {
    qputenv("TZ", zone);
    tzset();
}

ScopedTimeZone::~ScopedTimeZone() {
    if (hadPrevious_) {
        qputenv("TZ", previous_);
    } else {
        qunsetenv("TZ");
    }
    tzset();
}

}  // namespace kivo::test
