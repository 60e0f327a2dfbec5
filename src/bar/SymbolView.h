#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

/// Draws a symbol name: an icon from the theme, or from the program's own small set of pictures,
/// recoloured to the text colour; names that neither knows (an emoji, say) are drawn as text.
namespace SymbolView {

/// Chooses the icon themes the symbols are looked up in: the desktop's own, with Adwaita behind it.
void useIconThemes();
/// Where the picture of a symbol comes from: a theme icon name or a resource path; empty when the name
/// is to be drawn as text.
QString source(const QString& name);
/// The recoloured icon, or a null pixmap when the name is to be drawn as text.
QPixmap icon(const QString& name, const QColor& color, int size, qreal devicePixelRatio);

} // namespace SymbolView
