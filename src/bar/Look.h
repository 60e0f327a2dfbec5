#pragma once

#include "config/BarConfig.h"

#include <QColor>
#include <QFont>

class QPainter;
class QRectF;

/// The bar's fixed look: the dark plate, light text, and the chip colours in their dark-theme shades.
namespace Look {

QColor chipColor(ChipColor color);
QColor plateColor();
QColor textColor();
QColor secondaryColor();

/// The desktop's UI font at a given point size and weight.
QFont font(qreal pointSize, QFont::Weight weight = QFont::Normal);

constexpr qreal plateRadius = 10;
constexpr qreal chipRadius = 7;

/// The rounded plate behind the bar, a flyout or the editor's preview. The painter is left antialiased
/// and without a pen, ready for what goes on the plate.
void paintPlate(QPainter& painter, const QRectF& area, const QColor& color = plateColor());

} // namespace Look
