#pragma once

#include <QTcpServer>
#include <QTcpSocket>
#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace kivo::test {

// Serves on 127.0.0.1, from a thread of its own so that the test may sleep meanwhile: the page
// at "/name" is titled "Page name"; everything else is not found.
class PageServer {
public:
    PageServer() {
        std::promise<quint16> port;
        auto announced = port.get_future();
        thread_ = std::thread([this, &port] { serve(port); });
        port_ = announced.get();
    }
    ~PageServer() {
        isDone_ = true;
        thread_.join();
    }
    PageServer(const PageServer&) = delete;

    QString address(const QString& page) const {
        return QStringLiteral("http://127.0.0.1:%1/%2").arg(port_).arg(page);
    }

private:
    // Hands each connection to a thread of its own: browsers open spare connections that they
    // may never send a request on.
    class Listener final : public QTcpServer {
    public:
        std::vector<std::thread> handlers;

    protected:
        void incomingConnection(qintptr descriptor) override {
            handlers.emplace_back([descriptor] { answer(descriptor); });
        }
    };

    void serve(std::promise<quint16>& port) {
        Listener server;
        server.listen(QHostAddress::LocalHost);
        port.set_value(server.serverPort());
        while (!isDone_) {
            server.waitForNewConnection(100);
        }
        for (std::thread& handler : server.handlers) {
            handler.join();
        }
    }

    static void answer(qintptr descriptor) {
        QTcpSocket client;
        client.setSocketDescriptor(descriptor);
        QByteArray request;
        while (!request.contains("\r\n\r\n") && client.waitForReadyRead(5'000)) {
            request += client.readAll();
        }
        const QByteArray path = request.split(' ').value(1);
        const bool isPage = path.size() > 1 && path != "/favicon.ico";
        const QByteArray body = isPage
                                    ? "<html><head><title>Page " + path.mid(1) +
                                          "</title></head><body>" + path.mid(1) + "</body></html>"
                                    : QByteArray("not found");
        client.write((isPage ? "HTTP/1.0 200 OK\r\n" : "HTTP/1.0 404 Not Found\r\n") +
                     QByteArray("Content-Type: text/html\r\nContent-Length: ") +
                     QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
        client.disconnectFromHost();
        if (client.state() != QAbstractSocket::UnconnectedState) {
            client.waitForDisconnected(5'000);
        }
    }

    std::thread thread_;
    std::atomic<bool> isDone_ = false;
    quint16 port_ = 0;
};

}  // namespace kivo::test
