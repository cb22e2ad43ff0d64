#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

namespace kivo {

// A monochrome glyph in the palette's text colour (dimmed when disabled): the desktop theme's
// icon `themeName` when the theme has one, else Kivo's own drawing `glyph` (":/kivo/icons/").
QIcon glyphIcon(const QString& themeName, const QString& glyph);

// Kivo's glyph `glyph` in one fixed colour, whatever the theme (the red record button).
QIcon tintedGlyph(const QString& glyph, const QColor& color);

// Kivo's own icon, from the theme where Kivo is installed, else from the application itself.
QIcon kivoIcon();

}  // namespace kivo
