// The native messaging host as browsers run it: frames on its standard input and output, Kivo
// (played here by a local server) on the socket in the runtime folder.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>

#include "browser/browser_protocol.h"

namespace kivo::test {
namespace {

using namespace Qt::StringLiterals;
namespace protocol = browser_protocol;

QJsonObject tab(const QString& title) {
    return {{u"type"_s, u"tab"_s}, {u"windowId"_s, 1}, {u"title"_s, title}, {u"url"_s, u""_s}};
}

// Reads whole messages from `device` until `count` have come or 20 s have passed.
QList<QJsonObject> readMessages(QIODevice& device, protocol::FrameReader& reader, int count) {
    QList<QJsonObject> messages;
    for (const QDeadlineTimer deadline(20'000);
         messages.size() < count && !deadline.hasExpired();) {
        auto next = reader.next();
        if (auto* message = std::get_if<QJsonObject>(&next)) {
            messages.append(*message);
        } else if (std::holds_alternative<protocol::NeedMoreBytes>(next)) {
            device.waitForReadyRead(100);
            reader.append(device.readAll());
        }
    }
    return messages;
}

class NativeHostTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(runtime.isValid());
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_RUNTIME_DIR"_s, runtime.path());
        host.setProcessEnvironment(environment);
    }
    void startHost() {
        host.start(QStringLiteral(KIVO_BROWSER_HOST),
                   {u"chrome-extension://"_s + protocol::chromiumExtensionId + u"/"_s});
        ASSERT_TRUE(host.waitForStarted(10'000));
    }
    QString socketPath() const { return runtime.filePath(u"kivo-browser.socket"_s); }
    // Ends the browser's side and returns what the host said on standard error.
    QStringList finish() {
        host.closeWriteChannel();
        EXPECT_TRUE(host.waitForFinished(20'000));
        EXPECT_EQ(host.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(host.exitCode(), 0);
        return QString::fromUtf8(host.readAllStandardError()).split(u'\n', Qt::SkipEmptyParts);
    }

    QTemporaryDir runtime;
    QProcess host;
};

TEST_F(NativeHostTest, WithoutKivoMessagesAreDroppedQuietlyAndTheHostEndsWithTheBrowser) {
    startHost();
    for (int i = 0; i < 200; ++i) {
        host.write(protocol::frame(tab(u"Page %1"_s.arg(i))));
    }
    host.write(QByteArray("\x05\0\0\0{oops", 9));
    const QStringList errors = finish();
    EXPECT_TRUE(host.readAllStandardOutput().isEmpty()) << "nothing goes back to the browser";
    ASSERT_EQ(errors.size(), 2) << errors.join(u'\n').toStdString();
    EXPECT_TRUE(errors[0].contains(u"is Kivo running?"_s)) << errors[0].toStdString();
    EXPECT_TRUE(errors[1].contains(u"not JSON"_s)) << errors[1].toStdString();
}

TEST_F(NativeHostTest, ASocketOthersCouldUseIsNotTrusted) {
    QLocalServer server;
    ASSERT_TRUE(server.listen(socketPath()));
    ASSERT_EQ(::chmod(QFile::encodeName(socketPath()).constData(), 0666), 0);
    startHost();
    EXPECT_FALSE(server.waitForNewConnection(1'500));
    const QStringList errors = finish();
    ASSERT_EQ(errors.size(), 1);
    EXPECT_TRUE(errors[0].contains(u"open to other users"_s)) << errors[0].toStdString();
}

TEST_F(NativeHostTest, RelaysWholeMessagesBothWaysAndDropsBadFramesWithOneLineEach) {
    QLocalServer server;
    server.setSocketOptions(QLocalServer::UserAccessOption);
    ASSERT_TRUE(server.listen(socketPath()));
    startHost();
    ASSERT_TRUE(server.waitForNewConnection(20'000));
    QLocalSocket* kivo = server.nextPendingConnection();
    protocol::FrameReader fromHost, toBrowser;

    // The host introduces its browser (its parent, this test) and asks the extension for all.
    auto messages = readMessages(*kivo, fromHost, 1);
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0].value(u"type"_s), u"hello"_s);
    EXPECT_EQ(messages[0].value(u"browserPid"_s).toInteger(), QCoreApplication::applicationPid());
    auto requests = readMessages(host, toBrowser, 1);
    ASSERT_EQ(requests.size(), 1);
    EXPECT_EQ(requests[0].value(u"type"_s), u"report"_s);

    // Written in awkward pieces, with an oversize and a malformed frame in between.
    const QByteArray first = protocol::frame(tab(u"First"_s));
    QByteArray oversize(protocol::lengthSize, Qt::Uninitialized);
    const std::uint32_t length = 2 * protocol::maximumMessageSize;
    std::memcpy(oversize.data(), &length, sizeof length);
    oversize += QByteArray(length, ' ');
    const QByteArray stream =
        first + oversize + QByteArray("\x03\0\0\0[1]", 7) + protocol::frame(tab(u"Second"_s));
    for (qsizetype at = 0; at < stream.size(); at += 70'001) {
        host.write(stream.mid(at, 70'001));
        while (host.bytesToWrite() > 0 && host.waitForBytesWritten(10'000)) {
        }
    }
    messages = readMessages(*kivo, fromHost, 2);
    ASSERT_EQ(messages.size(), 2);
    EXPECT_EQ(messages[0], tab(u"First"_s));
    EXPECT_EQ(messages[1], tab(u"Second"_s));

    // Kivo's request reaches the extension.
    kivo->write(protocol::frame({{u"type"_s, u"report"_s}}));
    kivo->flush();
    requests = readMessages(host, toBrowser, 1);
    ASSERT_EQ(requests.size(), 1);
    EXPECT_EQ(requests[0].value(u"type"_s), u"report"_s);

    const QStringList errors = finish();
    ASSERT_EQ(errors.size(), 2) << errors.join(u'\n').toStdString();
    EXPECT_TRUE(errors[0].contains(u"over the limit"_s)) << errors[0].toStdString();
    EXPECT_TRUE(errors[1].contains(u"not a JSON object"_s)) << errors[1].toStdString();
}

}  // namespace
}  // namespace kivo::test
