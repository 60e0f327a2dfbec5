#pragma once

#include "config/BarConfig.h"

#include <QColor>
#include <QFont>

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

} // namespace Look
