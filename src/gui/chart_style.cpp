#include "gui/chart_style.h"

#include <QApplication>
#include <QChart>
#include <QChartView>
#include <QLegend>
#include <QPalette>

namespace kivo {

bool isDarkPalette() {
    return QApplication::palette().color(QPalette::Window).lightness() < 128;
}

void styleChart(QChart& chart) {
    chart.setTheme(isDarkPalette() ? QChart::ChartThemeDark : QChart::ChartThemeLight);
    const QPalette palette = QApplication::palette();
    chart.setBackgroundBrush(palette.color(QPalette::Base));
    chart.setBackgroundRoundness(8);
    chart.setTitleBrush(palette.color(QPalette::Text));
    chart.legend()->setLabelColor(palette.color(QPalette::Text));
    chart.setMargins(QMargins(6, 6, 6, 6));
    chart.setAnimationOptions(QChart::NoAnimation);
}

const QList<QColor>& seriesColors() {
    static const QList<QColor> colors{
        QColor(0x2b, 0xa8, 0x9a), QColor(0x4c, 0x8b, 0xf5), QColor(0xf2, 0xa5, 0x3a),
        QColor(0xe0, 0x5d, 0x6f), QColor(0x9b, 0x6b, 0xd6), QColor(0x5c, 0xb8, 0x5c),
        QColor(0xd9, 0x7b, 0x3f), QColor(0x3f, 0xb5, 0xd9), QColor(0xc9, 0x5b, 0xa8),
        QColor(0x8a, 0x9a, 0x5b), QColor(0x70, 0x80, 0x90), QColor(0xb0, 0x8d, 0x57),
    };
    return colors;
}

void prepareChartView(QChartView& view) {
    view.setRenderHint(QPainter::Antialiasing);
    view.setFrameShape(QFrame::NoFrame);
    view.setRubberBand(QChartView::NoRubberBand);
    view.setMinimumSize(200, 160);
}

}  // namespace kivo
