// A window for the Wayland tests: `kivo-e2e-window TITLE APP_ID` shows a window with that title
// and application ID (the Wayland app_id, or the WM_CLASS class under X11); each line on standard
// input becomes its new title, and the end of input closes it.
#include <unistd.h>

#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>
#include <QSocketNotifier>

namespace {

class TestWindow final : public QRasterWindow {
protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(QRect(QPoint(), size()), Qt::darkCyan);
    }
};

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 3) {
        return 2;
    }
    const QString appId = QString::fromLocal8Bit(argv[2]);
    QCoreApplication::setApplicationName(appId);
    QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(appId);
    TestWindow window;
    window.setTitle(QString::fromLocal8Bit(argv[1]));
    window.resize(320, 200);
    window.show();

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray pending;
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buffer[512];
        const ssize_t received = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (received <= 0) {
            QGuiApplication::quit();
            return;
        }
        pending.append(buffer, received);
        for (qsizetype end; (end = pending.indexOf('\n')) >= 0; pending.remove(0, end + 1)) {
            window.setTitle(QString::fromUtf8(pending.first(end)));
        }
    });
    return QGuiApplication::exec();
}
