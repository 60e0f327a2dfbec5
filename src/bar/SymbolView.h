#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

/// Draws a symbol name: an icon from the theme recoloured to the text colour, or, for names the theme
/// does not know (an emoji, say), the name itself as text.
namespace SymbolView {

/// The recoloured icon, or a null pixmap when the name is to be drawn as text.
QPixmap icon(const QString& name, const QColor& color, int size, qreal devicePixelRatio);

} // namespace SymbolView
