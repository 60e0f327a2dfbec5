#pragma once

#include <QColor>
#include <QHash>
#include <QImage>
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

/// Every picture drawn so far, by name, colour and size (null for a name drawn as text); `fresh` says
/// whether any of them was drawn since the last `remember`.
struct Drawn
{
    QHash<QString, QImage> pictures;
    bool fresh = false;
};
Drawn drawn();
/// Takes pictures drawn by an earlier run, with the same themes, as drawn: the bar can then show without
/// loading the icon themes and the SVG renderer at all.
void remember(const QHash<QString, QImage>& pictures);

} // namespace SymbolView
