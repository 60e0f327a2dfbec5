#include "SymbolView.h"

#include "bar/SymbolNames.h"

#include <QHash>
#include <QIcon>
#include <QPainter>

namespace SymbolView {

QPixmap icon(const QString& name, const QColor& color, int size, qreal devicePixelRatio)
{
    // Rebuilding the bar asks for the same few icons again and again; finding them in the theme is not free.
    static QHash<QString, QPixmap> cache;
    const QString key = name + QLatin1Char('|') + color.name(QColor::HexArgb) + QLatin1Char('|') +
                        QString::number(size * devicePixelRatio);
    if (const auto it = cache.constFind(key); it != cache.constEnd())
        return it.value();

    QPixmap result;
    for (const QString& themeName : SymbolNames::iconNames(name)) {
        const QIcon themed = QIcon::fromTheme(themeName);
        if (themed.isNull())
            continue;
        QPixmap pixmap = themed.pixmap(QSize(size, size), devicePixelRatio);
        if (pixmap.isNull())
            continue;
        // Symbolic icons are drawn in one colour; the chip wants its text colour, whatever the theme's.
        QPainter painter(&pixmap);
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(QRect(QPoint(0, 0), pixmap.size()), color);
        painter.end();
        result = pixmap;
        break;
    }
    cache.insert(key, result);
    return result;
}

} // namespace SymbolView
