// A window for the Wayland end-to-end tests: `kivo-e2e-window APP_ID TITLE` shows a window whose
// app id (the desktop file name Qt announces) is APP_ID and whose title is TITLE; each line on
// standard input becomes its new title, and the end of the input closes it.
#include <unistd.h>

#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>
#include <QSocketNotifier>

namespace {

class PlainWindow final : public QRasterWindow {
protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(QRect(QPoint(), size()), Qt::white);
    }
};

}  // namespace

int main(int argc, char* argv[]) {
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3) {
        return 2;
    }
    QGuiApplication::setDesktopFileName(arguments.at(1));
    PlainWindow window;
    window.setTitle(arguments.at(2));
    window.resize(320, 240);
    window.show();

    QByteArray pending;
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buffer[1024];
        const ssize_t received = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (received <= 0) {
            input.setEnabled(false);
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
