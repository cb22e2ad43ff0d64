#pragma once

#include <QObject>
#include <QString>
#include <QThreadPool>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

#include "reports/activity_list.h"

namespace kivo {

class RecordStore;

// Lists activities away from the window's thread, which a long range would otherwise hold for
// a visible pause. The work reads through a read-only connection of its own (a connection
// belongs to one thread), and its result comes back on the window's thread. Only the newest
// request is ever answered: one that a newer request overtook is dropped, started or not.
class ActivityLister : public QObject {
public:
    using OnListed = std::function<void(ActivityList)>;
    using OnFailed = std::function<void(const QString& reason)>;

    ActivityLister(QString storePath, OnListed onListed, OnFailed onFailed,
                   QObject* parent = nullptr);
    // Drops the requests not yet started and waits for the running one, whose answer is then
    // never given.
    ~ActivityLister() override;
    ActivityLister(const ActivityLister&) = delete;
    ActivityLister& operator=(const ActivityLister&) = delete;

    void request(const ActivityListQuery& query);
    // Whether the newest request is still unanswered.
    bool isListing() const { return answered_ != newest_.load(); }

private:
    void list(std::uint64_t number, const ActivityListQuery& query);
    bool isNewest(std::uint64_t number) const { return number == newest_.load(); }

    const QString storePath_;
    const OnListed onListed_;
    const OnFailed onFailed_;
    std::atomic<std::uint64_t> newest_ = 0;
    std::uint64_t answered_ = 0;           // the window's thread only
    std::unique_ptr<RecordStore> reader_;  // the pool's one thread only
    QThreadPool pool_;
};

}  // namespace kivo
