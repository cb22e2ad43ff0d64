#include "model/application_settings.h"

#include <QSettings>
#include <algorithm>
#include <cmath>

namespace kivo {

namespace {

// Longer than any sensible tick, gap or minimum; only a slip of the keyboard writes more.
constexpr double longestSetting = 86'400.0;

// What a text editor can write that would stop the tracker or count negative or endless time (no
// number, a negative one, one beyond a day) reads as absent, as does the 0 of an absent key.
bool isUsable(double stored) {
    return std::isfinite(stored) && stored > 0.0 && stored <= longestSetting;
}

double orDefaultWhenUnusable(double stored, double fallback) {
    return isUsable(stored) ? stored : fallback;
}

}  // namespace

std::unique_ptr<ApplicationSettings> ApplicationSettings::openDefault() {
    return std::unique_ptr<ApplicationSettings>(new ApplicationSettings(
        std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope,
                                    QStringLiteral("Kivo"), QStringLiteral("Kivo"))));
}

std::unique_ptr<ApplicationSettings> ApplicationSettings::openFile(const QString& filePath) {
    return std::unique_ptr<ApplicationSettings>(
        new ApplicationSettings(std::make_unique<QSettings>(filePath, QSettings::NativeFormat)));
}

ApplicationSettings::ApplicationSettings(std::unique_ptr<QSettings> settings)
    : settings_(std::move(settings)) {}

ApplicationSettings::~ApplicationSettings() = default;

QString ApplicationSettings::filePath() const {
    return settings_->fileName();
}

double ApplicationSettings::storedDouble(const QString& key) const {
    // A value that is not a number reads as the 0 of an absent key.
    bool isNumber = false;
    const double value = settings_->value(key).toDouble(&isNumber);
    return isNumber ? value : 0.0;
}

double ApplicationSettings::timerInterval() const {
    return orDefaultWhenUnusable(storedDouble(QString::fromUtf16(settings_keys::timerInterval)),
                                 1.0);
}

double ApplicationSettings::maximumGapLength() const {
    return orDefaultWhenUnusable(storedDouble(QString::fromUtf16(settings_keys::maximumGapLength)),
                                 60.0);
}

double ApplicationSettings::minimumDurationToRecord() const {
    return orDefaultWhenUnusable(
        storedDouble(QString::fromUtf16(settings_keys::minimumDurationToRecord)), 1.0);
}

double ApplicationSettings::minimumDurationToDisplay() const {
    return std::max(
        orDefaultWhenUnusable(
            storedDouble(QString::fromUtf16(settings_keys::minimumDurationToDisplay)), 1.0),
        1.0);
}

double ApplicationSettings::idleTimeout() const {
    // Unlike the other numbers a stored 0 means something (off): only an absent key, or one that
    // is no finite, non-negative number, reads as the default.
    bool isNumber = false;
    const double value =
        settings_->value(QString::fromUtf16(settings_keys::idleTimeout)).toDouble(&isNumber);
    return isNumber && std::isfinite(value) && value >= 0.0 ? value : 300.0;
}

void ApplicationSettings::setIdleTimeout(double seconds) {
    store(QString::fromUtf16(settings_keys::idleTimeout),
          seconds > 0.0 ? std::max(seconds, 1.0) : 0.0);
}

void ApplicationSettings::setTimerInterval(double seconds) {
    storeAtLeastOne(QString::fromUtf16(settings_keys::timerInterval), seconds);
}

void ApplicationSettings::setMaximumGapLength(double seconds) {
    storeAtLeastOne(QString::fromUtf16(settings_keys::maximumGapLength), seconds);
}

void ApplicationSettings::setMinimumDurationToRecord(double seconds) {
    storeAtLeastOne(QString::fromUtf16(settings_keys::minimumDurationToRecord), seconds);
}

void ApplicationSettings::setMinimumDurationToDisplay(double seconds) {
    storeAtLeastOne(QString::fromUtf16(settings_keys::minimumDurationToDisplay), seconds);
}

bool ApplicationSettings::isDetailUnified() const {
    return settings_->value(QString::fromUtf16(settings_keys::isDetailUnified)).toBool();
}

void ApplicationSettings::setIsDetailUnified(bool value) {
    store(QString::fromUtf16(settings_keys::isDetailUnified), value);
}

bool ApplicationSettings::isCompactColumns() const {
    return settings_->value(QString::fromUtf16(settings_keys::isCompactColumns)).toBool();
}

void ApplicationSettings::setIsCompactColumns(bool value) {
    store(QString::fromUtf16(settings_keys::isCompactColumns), value);
}

std::optional<QByteArray> ApplicationSettings::savedProjectTree() const {
    const QVariant value = settings_->value(QString::fromUtf16(settings_keys::savedProjectTree));
    if (value.typeId() != QMetaType::QByteArray) {
        return std::nullopt;
    }
    return value.toByteArray();
}

void ApplicationSettings::setSavedProjectTree(const QByteArray& document) {
    store(QString::fromUtf16(settings_keys::savedProjectTree), document);
}

void ApplicationSettings::storeAtLeastOne(const QString& key, double seconds) {
    // NaN compares false and would slip past std::max; it is stored as the floor as well.
    store(key, seconds >= 1.0 ? seconds : 1.0);
}

void ApplicationSettings::store(const QString& key, const QVariant& value) {
    settings_->setValue(key, value);
    settings_->sync();
    Q_EMIT settingChanged(key);
}

}  // namespace kivo
