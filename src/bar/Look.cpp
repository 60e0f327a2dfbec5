#include "Look.h"

#include <QGuiApplication>
#include <QPainter>

namespace Look {

QColor chipColor(ChipColor color)
{
    switch (color) {
    case ChipColor::Orange:
        return QColor(0xff, 0x9f, 0x0a);
    case ChipColor::Green:
        return QColor(0x30, 0xd1, 0x58);
    case ChipColor::Purple:
        return QColor(0xbf, 0x5a, 0xf2);
    case ChipColor::Red:
        return QColor(0xff, 0x45, 0x3a);
    case ChipColor::Yellow:
        return QColor(0xff, 0xd6, 0x0a);
    case ChipColor::White:
        return QColor(0xff, 0xff, 0xff);
    case ChipColor::Cyan:
        break;
    }
    return QColor(0x64, 0xd2, 0xff);
}

QColor plateColor()
{
    return QColor(0, 0, 0, qRound(0.85 * 255));
}

QColor textColor()
{
    return QColor(0xf2, 0xf2, 0xf7);
}

QColor secondaryColor()
{
    return QColor(0x98, 0x98, 0x9d);
}

QFont font(qreal pointSize, QFont::Weight weight)
{
    QFont font = QGuiApplication::font();
    font.setPointSizeF(pointSize);
    font.setWeight(weight);
    return font;
}

void paintPlate(QPainter& painter, const QRectF& area, const QColor& color)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(area, plateRadius, plateRadius);
}

} // namespace Look
