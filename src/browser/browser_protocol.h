#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <optional>
#include <variant>

// What the browser extension, the native messaging host and Kivo say to each other. The host
// reads the browser's native messaging frames (a 4-byte length in the machine's byte order, then
// that many bytes of JSON) and relays each message to Kivo over a local socket in the same frames.
//
// Extension to Kivo: {"type": "tab", "windowId": n, "title": "...", "url": "...",
//   "incognito": bool} for the active tab of one window, and {"type": "windowClosed",
//   "windowId": n}. Host to Kivo, first on each connection: {"type": "hello", "browserPid": n}.
// Kivo to extension: {"type": "report"}, answered by one "tab" message per window.
namespace kivo::browser_protocol {

// Browsers refuse larger messages; so does everything here.
inline constexpr qsizetype maximumMessageSize = 1024 * 1024;
inline constexpr qsizetype lengthSize = 4;

// The host's registered name and the extension it serves, whose ID follows from the fixed key in
// its manifest.
inline constexpr QLatin1StringView hostName("app.kivo.browser_host");
inline constexpr QLatin1StringView chromiumExtensionId("ldbigealdefcdbogolojlnpkalihkndf");
inline constexpr QLatin1StringView firefoxExtensionId("browser-extension@kivo.app");

inline constexpr QLatin1StringView typeKey("type");
inline constexpr QLatin1StringView helloType("hello");
inline constexpr QLatin1StringView tabType("tab");
inline constexpr QLatin1StringView windowClosedType("windowClosed");
inline constexpr QLatin1StringView reportType("report");
inline constexpr QLatin1StringView browserPidKey("browserPid");
inline constexpr QLatin1StringView windowIdKey("windowId");
inline constexpr QLatin1StringView titleKey("title");
inline constexpr QLatin1StringView urlKey("url");
inline constexpr QLatin1StringView incognitoKey("incognito");

// `message` as one frame.
QByteArray frame(const QJsonObject& message);

// A frame whose length or contents cannot be taken; `reason` is one line.
struct MalformedFrame {
    QString reason;
};
struct NeedMoreBytes {};
using NextFrame = std::variant<QJsonObject, MalformedFrame, NeedMoreBytes>;

// Cuts a byte stream into messages. Bytes come in pieces of any size; a frame whose length is over
// the bound is skipped as its bytes arrive, so memory stays bounded whatever comes in.
class FrameReader {
public:
    void append(const QByteArray& bytes);
    // The next whole message, the next frame that is not one, or a request for more bytes.
    NextFrame next();

private:
    QByteArray buffer_;
    qint64 bytesToSkip_ = 0;
};

// The socket Kivo listens on: in the user's runtime folder, which only the user can enter.
// Nothing when XDG_RUNTIME_DIR is not set.
std::optional<QString> socketPath();

// Whether `path` is a socket owned by this user that no one else may use; if not, why not.
std::optional<QString> socketRefusal(const QString& path);

}  // namespace kivo::browser_protocol
