#pragma once

#include <QObject>
#include <QString>
#include <memory>
#include <optional>

class QSettings;

namespace kivo {

namespace settings_keys {
inline constexpr char16_t timerInterval[] = u"timerInterval";
inline constexpr char16_t maximumGapLength[] = u"maximumGapLength";
inline constexpr char16_t minimumDurationToRecord[] = u"minimumDurationToRecord";
inline constexpr char16_t minimumDurationToDisplay[] = u"minimumDurationToDisplay";
inline constexpr char16_t idleTimeout[] = u"idleTimeout";
inline constexpr char16_t isDetailUnified[] = u"isDetailUnified";
inline constexpr char16_t isCompactColumns[] = u"isCompactColumns";
inline constexpr char16_t savedProjectTree[] = u"savedProjectTree";
}  // namespace settings_keys

// The user's preferences in the per-user key-value store ($XDG_CONFIG_HOME/Kivo/Kivo.conf).
// Every reader goes to the store at each call, so a value changed elsewhere applies at its next
// use. Numbers are seconds, stored as doubles.
class ApplicationSettings : public QObject {
    Q_OBJECT

public:
    // The user's own settings file.
    static std::unique_ptr<ApplicationSettings> openDefault();
    // The settings file at `filePath` (tests, other profiles).
    static std::unique_ptr<ApplicationSettings> openFile(const QString& filePath);

    ~ApplicationSettings() override;

    // An absent key, a stored 0, and a value that is no finite number, negative or longer than a
    // day read as the default (1.0, 60.0, 1.0); any other stored value, even one below 1.0
    // written by hand, is answered as it stands.
    double timerInterval() const;
    double maximumGapLength() const;
    double minimumDurationToRecord() const;
    // Every value below 1.0 reads as 1.0; one that is unusable as above reads as 1.0 too.
    double minimumDurationToDisplay() const;

    // The setters never store less than 1.0.
    void setTimerInterval(double seconds);
    void setMaximumGapLength(double seconds);
    void setMinimumDurationToRecord(double seconds);
    void setMinimumDurationToDisplay(double seconds);

    // Seconds without input after which tracking pauses. An absent key reads as 300; a stored 0
    // (or anything not above 0) turns idleness off and is answered as it stands.
    double idleTimeout() const;
    // Stores 0 (off) for 0 and below, otherwise at least 1.0.
    void setIdleTimeout(double seconds);

    bool isDetailUnified() const;
    void setIsDetailUnified(bool value);
    bool isCompactColumns() const;
    void setIsCompactColumns(bool value);

    // The saved project tree's bytes; nothing when the key is absent or holds something other
    // than a byte-array value (such as text written by hand).
    std::optional<QByteArray> savedProjectTree() const;
    void setSavedProjectTree(const QByteArray& document);

    QString filePath() const;

Q_SIGNALS:
    void settingChanged(const QString& key);

private:
    explicit ApplicationSettings(std::unique_ptr<QSettings> settings);

    double storedDouble(const QString& key) const;
    void storeAtLeastOne(const QString& key, double seconds);
    void store(const QString& key, const QVariant& value);

    std::unique_ptr<QSettings> settings_;
};

}  // namespace kivo
