#include "gui/gauge_icon.h"

#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>
#include <algorithm>

namespace kivo {

namespace {

const QColor face(0x1f, 0x8f, 0x88);
const QColor accent(0xff, 0xd1, 0x66);

}  // namespace

QImage gaugeImage(std::int64_t score, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size / 64.0, size / 64.0);

    painter.setPen(Qt::NoPen);
    painter.setBrush(face);
    painter.drawRoundedRect(QRectF(1, 1, 62, 62), 14, 14);

    // The dial: a half circle over the upper part, filled up to the score.
    const QRectF dial(10, 8, 44, 44);
    const double share = std::clamp(static_cast<double>(score), 0.0, 100.0) / 100.0;
    QPen track(QColor(255, 255, 255, 90), 7, Qt::SolidLine, Qt::RoundCap);
    painter.setPen(track);
    painter.drawArc(dial, 180 * 16, -180 * 16);
    QPen filled(Qt::white, 7, Qt::SolidLine, Qt::RoundCap);
    painter.setPen(filled);
    painter.drawArc(dial, 180 * 16, static_cast<int>(-180 * 16 * share));

    const double angle = M_PI * (1.0 - share);
    const QPointF centre = dial.center();
    painter.setPen(QPen(accent, 5, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(centre, centre + QPointF(std::cos(angle) * 17, -std::sin(angle) * 17));

    // The figure, as large as the lower part allows.
    QFont font;
    font.setBold(true);
    font.setPixelSize(score >= 100 || score < 0 ? 19 : 24);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QRectF(0, 34, 64, 30), Qt::AlignCenter, QString::number(score));
    return image;
}

QIcon gaugeIcon(std::int64_t score) {
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        icon.addPixmap(QPixmap::fromImage(gaugeImage(score, size)));
    }
    return icon;
}

}  // namespace kivo
