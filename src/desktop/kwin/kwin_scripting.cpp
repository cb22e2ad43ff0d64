#include "desktop/kwin/kwin_scripting.h"

#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QThread>

namespace kivo {

namespace {

// KWin answers at once when it is well; a longer wait only delays the failure.
constexpr int replyTimeoutMs = 5'000;

QDBusMessage callKWin(const QDBusConnection& bus, const QString& path, QLatin1StringView interface,
                      QLatin1StringView method, const QVariantList& arguments = {}) {
    QDBusMessage call = QDBusMessage::createMethodCall(kwinService, path, interface, method);
    call.setArguments(arguments);
    return bus.call(call, QDBus::Block, replyTimeoutMs);
}

QDBusMessage callScripting(const QDBusConnection& bus, QLatin1StringView method,
                           const QVariantList& arguments) {
    return callKWin(bus, QStringLiteral("/Scripting"), QLatin1StringView("org.kde.kwin.Scripting"),
                    method, arguments);
}

QDBusMessage runScriptAt(const QDBusConnection& bus, const QString& path) {
    return callKWin(bus, path, QLatin1StringView("org.kde.kwin.Script"), QLatin1StringView("run"));
}

// Unloading only schedules the script's end: a script of the same name cannot be loaded until
// KWin has got round to it. Should it never, loading says so.
void waitUntilUnloaded(const QDBusConnection& bus, const QString& name) {
    for (const QDeadlineTimer deadline(replyTimeoutMs); !deadline.hasExpired();
         QThread::msleep(20)) {
        const QDBusMessage loaded = callScripting(bus, QLatin1StringView("isScriptLoaded"), {name});
        if (loaded.type() == QDBusMessage::ErrorMessage || !loaded.arguments().value(0).toBool()) {
            return;
        }
    }
}

}  // namespace

bool runKWinScript(const QDBusConnection& bus, const QString& path, const QString& name,
                   QString& failure) {
    unloadKWinScript(bus, name);
    waitUntilUnloaded(bus, name);
    const QDBusMessage loaded = callScripting(bus, QLatin1StringView("loadScript"), {path, name});
    if (loaded.type() == QDBusMessage::ErrorMessage) {
        failure = QStringLiteral("KWin's scripting does not answer on the session bus (%1)")
                      .arg(loaded.errorMessage());
        return false;
    }
    const QVariantList reply = loaded.arguments();
    const int id =
        reply.size() == 1 && reply.first().typeId() == QMetaType::Int ? reply.first().toInt() : -1;
    if (id < 0) {
        failure = QStringLiteral("KWin did not load the script \"%1\"").arg(path);
        return false;
    }
    QDBusMessage ran = runScriptAt(bus, QStringLiteral("/Scripting/Script%1").arg(id));
    if (ran.type() == QDBusMessage::ErrorMessage) {
        ran = runScriptAt(bus, QStringLiteral("/%1").arg(id));
    }
    if (ran.type() == QDBusMessage::ErrorMessage) {
        unloadKWinScript(bus, name);
        failure = QStringLiteral("KWin loaded the script \"%1\" but did not run it (%2)")
                      .arg(path, ran.errorMessage());
        return false;
    }
    // KWin numbers a script by the count of scripts loaded, so after another script has gone
    // the path may still belong to a later one's object, and run went there. start runs every
    // loaded script that is not running yet, this one included.
    callScripting(bus, QLatin1StringView("start"), {});
    return true;
}

void unloadKWinScript(const QDBusConnection& bus, const QString& name) {
    callScripting(bus, QLatin1StringView("unloadScript"), {name});
}

}  // namespace kivo
