#include "gui/icons.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QPixmap>

// The icons live in the static library's resources, which the linker keeps only when asked for.
static void loadKivoResources() {
    Q_INIT_RESOURCE(kivo_gui);
}

namespace kivo {

namespace {

constexpr int glyphSizes[] = {16, 22, 24, 32, 48};

QPixmap tinted(const QIcon& source, int size, qreal ratio, const QColor& color) {
    QPixmap pixmap = source.pixmap(QSize(size, size), ratio);
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    return pixmap;
}

QIcon tintedIn(const QString& glyph, const QColor& normal, const QColor& disabled) {
    static const bool loaded = (loadKivoResources(), true);
    Q_UNUSED(loaded);
    const QIcon source(QStringLiteral(":/kivo/icons/%1.svg").arg(glyph));
    const qreal ratio = qApp ? qApp->devicePixelRatio() : 1.0;
    QIcon icon;
    for (const int size : glyphSizes) {
        icon.addPixmap(tinted(source, size, ratio, normal), QIcon::Normal);
        icon.addPixmap(tinted(source, size, ratio, disabled), QIcon::Disabled);
    }
    return icon;
}

}  // namespace

QIcon glyphIcon(const QString& themeName, const QString& glyph) {
    if (QIcon::hasThemeIcon(themeName)) {
        return QIcon::fromTheme(themeName);
    }
    const QPalette palette = QApplication::palette();
    return tintedIn(glyph, palette.color(QPalette::Active, QPalette::WindowText),
                    palette.color(QPalette::Disabled, QPalette::WindowText));
}

QIcon tintedGlyph(const QString& glyph, const QColor& color) {
    QColor disabled = color;
    disabled.setAlphaF(0.35f);
    return tintedIn(glyph, color, disabled);
}

QIcon kivoIcon() {
    static const bool loaded = (loadKivoResources(), true);
    Q_UNUSED(loaded);
    return QIcon::fromTheme(QStringLiteral("app.kivo.Kivo"),
                            QIcon(QStringLiteral(":/kivo/app.kivo.Kivo.svg")));
}

}  // namespace kivo
