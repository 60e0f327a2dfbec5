#include "TrayGlyph.h"

#include <QPainter>

namespace TrayGlyph {

QIcon icon()
{
    QIcon icon;
    for (const int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        const qreal unit = size / 22.0;
        // The 20 × 14 glyph, centred: a rounded bar outline and three chips inside.
        const QRectF bar(1 * unit, 4 * unit, 20 * unit, 14 * unit);
        painter.setPen(QPen(QColor(0xf2, 0xf2, 0xf7), 1.5 * unit));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(bar.adjusted(0.75 * unit, 0.75 * unit, -0.75 * unit, -0.75 * unit),
                                3.5 * unit, 3.5 * unit);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0xf2, 0xf2, 0xf7));
        for (int i = 0; i < 3; ++i)
            painter.drawRoundedRect(QRectF((4 + i * 5.2) * unit, 8.5 * unit, 4 * unit, 5 * unit), 1 * unit,
                                    1 * unit);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace TrayGlyph
