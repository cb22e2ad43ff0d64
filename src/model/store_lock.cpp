#include "model/store_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>

#include "model/record_store.h"

namespace kivo {

std::unique_ptr<StoreLock> StoreLock::tryAcquire(const QString& storePath) {
    const QString folder = QFileInfo(storePath).absolutePath();
    if (!QDir(folder).exists()) {
        if (!QDir().mkpath(folder)) {
            throw StoreError("cannot create the folder " + folder.toStdString());
        }
        ::chmod(QFile::encodeName(folder).constData(), 0700);
    }
    const QByteArray name = QFile::encodeName(storePath + u".lock");
    const int descriptor = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        throw StoreError(std::string(std::strerror(errno)) + ": " + name.toStdString());
    }
    int result = 0;
    do {
        result = ::flock(descriptor, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result != 0) {
        const int error = errno;
        ::close(descriptor);
        if (error == EWOULDBLOCK) {
            return nullptr;
        }
        throw StoreError(std::string(std::strerror(error)) + ": " + name.toStdString());
    }
    return std::unique_ptr<StoreLock>(new StoreLock(descriptor));
}

StoreLock::~StoreLock() {
    ::close(descriptor_);
}

}  // namespace kivo
