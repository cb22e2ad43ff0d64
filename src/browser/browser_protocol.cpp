#include "browser/browser_protocol.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <cstdint>
#include <cstring>

namespace kivo::browser_protocol {

QByteArray frame(const QJsonObject& message) {
    const QByteArray json = QJsonDocument(message).toJson(QJsonDocument::Compact);
    const auto length = static_cast<std::uint32_t>(json.size());
    QByteArray bytes(lengthSize, Qt::Uninitialized);
    std::memcpy(bytes.data(), &length, lengthSize);
    return bytes + json;
}

void FrameReader::append(const QByteArray& bytes) {
    if (bytesToSkip_ > 0) {
        const qint64 skipped = std::min<qint64>(bytesToSkip_, bytes.size());
        bytesToSkip_ -= skipped;
        buffer_ += QByteArrayView(bytes).sliced(skipped);
        return;
    }
    buffer_ += bytes;
}

NextFrame FrameReader::next() {
    if (bytesToSkip_ > 0 || buffer_.size() < lengthSize) {
        return NeedMoreBytes{};
    }
    std::uint32_t length = 0;
    std::memcpy(&length, buffer_.constData(), lengthSize);
    if (length > maximumMessageSize) {
        // Whatever of the frame is here goes now, the rest as it arrives.
        const qint64 present = std::min<qint64>(length, buffer_.size() - lengthSize);
        bytesToSkip_ = length - present;
        buffer_.remove(0, lengthSize + present);
        return MalformedFrame{QStringLiteral("a message of %1 bytes, over the limit of %2")
                                  .arg(length)
                                  .arg(maximumMessageSize)};
    }
    if (buffer_.size() < lengthSize + qsizetype(length)) {
        return NeedMoreBytes{};
    }
    const QByteArray json = buffer_.mid(lengthSize, length);
    buffer_.remove(0, lengthSize + length);
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        return MalformedFrame{QStringLiteral("a message that is not JSON: ") + error.errorString()};
    }
    if (!document.isObject()) {
        return MalformedFrame{QStringLiteral("a message that is not a JSON object")};
    }
    return document.object();
}

std::optional<QString> socketPath() {
    const QByteArray runtimeFolder = qgetenv("XDG_RUNTIME_DIR");
    if (runtimeFolder.isEmpty()) {
        return std::nullopt;
    }
    return QFile::decodeName(runtimeFolder) + QStringLiteral("/kivo-browser.socket");
}

std::optional<QString> socketRefusal(const QString& path) {
    struct stat status {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0) {
        return QStringLiteral("no socket at ") + path;
    }
    if (!S_ISSOCK(status.st_mode)) {
        return path + QStringLiteral(" is not a socket");
    }
    if (status.st_uid != ::getuid()) {
        return path + QStringLiteral(" belongs to another user");
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        return path + QStringLiteral(" is open to other users");
    }
    return std::nullopt;
}

}  // namespace kivo::browser_protocol
