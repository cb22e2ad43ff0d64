#pragma once

#include <QColor>
#include <QList>

QT_BEGIN_NAMESPACE
class QChart;
class QChartView;
QT_END_NAMESPACE

namespace kivo {

// True when the window's palette is a dark one.
bool isDarkPalette();

// Gives a chart the palette's colours: the light or dark theme, a background that is the
// window's own, and text in the palette's text colour.
void styleChart(QChart& chart);

// Series colours that read well on both light and dark backgrounds, in order of use.
const QList<QColor>& seriesColors();

// A chart view set up the way every Kivo chart is: antialiased, no frame, no rubber band.
void prepareChartView(QChartView& view);

}  // namespace kivo
