#pragma once

#include "config/Config.h"

#include <QHash>
#include <QPoint>
#include <QRect>
#include <QRectF>
#include <QString>
#include <limits>

/// Where the chips of a configuration sit on a bar expanding upwards, in bar coordinates, and how wide
/// that bar is. Laid out by the program's own bar view in this process, with the icon theme the program
/// sets up, rather than by pixel offsets copied from its code: a change of font, icon or spacing then
/// moves the pointer along with the chips. The width is compared with the window on screen, which shows
/// that this layout is the one the program drew.
struct BarLayout
{
    int width = 0;
    QHash<QString, QRectF> chips;
    /// The buttons in the overflow chip, and where that chip is (null without one).
    QList<ButtonSpec> overflowed;
    QRectF overflow;

    /// The middle of chip `title` on screen, for a bar window at `barFrame`.
    QPoint centreOf(const QString& title, const QRect& barFrame) const;
};

/// The chips of `config`, with `context` after the separator, on a bar at most `maxWidth` wide.
BarLayout layoutOf(const BarConfig& config, const QList<ButtonSpec>& context = {},
                   int maxWidth = std::numeric_limits<int>::max());

/// The icon theme the program sets up, so that chips laid out here have its icons' widths.
void useProgramIconTheme();

/// The grip, 14 pixels wide after the bar's 12 pixel margin, halfway up.
QPoint gripOf(const QRect& barFrame);
