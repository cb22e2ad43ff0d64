#include "gui/activity_lister.h"

#include <exception>
#include <utility>

#include "model/record_store.h"

namespace kivo {

ActivityLister::ActivityLister(QString storePath, OnListed onListed, OnFailed onFailed,
                               QObject* parent)
    : QObject(parent),
      storePath_(std::move(storePath)),
      onListed_(std::move(onListed)),
      onFailed_(std::move(onFailed)) {
    // One thread, kept for good: requests run one after the other, and the reading connection
    // stays with the thread that opened it.
    pool_.setMaxThreadCount(1);
    pool_.setExpiryTimeout(-1);
}

ActivityLister::~ActivityLister() {
    newest_ = 0;  // no request is the newest any more: a running one answers nothing
    pool_.clear();
    pool_.waitForDone();
    reader_.reset();
}

void ActivityLister::request(const ActivityListQuery& query) {
    const std::uint64_t number = ++newest_;
    pool_.clear();
    pool_.start([this, number, query] { list(number, query); });
}

void ActivityLister::list(std::uint64_t number, const ActivityListQuery& query) {
    if (!isNewest(number)) {
        return;
    }
    // The answer goes to the window's thread as an event of this object, so that it is dropped
    // with the object if the window closed meanwhile.
    try {
        if (!reader_) {
            reader_ = RecordStore::open(storePath_, RecordStore::Mode::ReadOnly);
        }
        auto listed = std::make_shared<ActivityList>(listActivities(*reader_, query));
        QMetaObject::invokeMethod(
            this,
            [this, number, listed] {
                if (isNewest(number)) {
                    answered_ = number;
                    onListed_(std::move(*listed));
                }
            },
            Qt::QueuedConnection);
    } catch (const std::exception& error) {
        // A store that could not be read now may be readable on the next request.
        reader_.reset();
        QMetaObject::invokeMethod(
            this,
            [this, number, reason = QString::fromUtf8(error.what())] {
                if (isNewest(number)) {
                    answered_ = number;
                    onFailed_(reason);
                }
            },
            Qt::QueuedConnection);
    }
}

}  // namespace kivo
