#pragma once

#include <QPoint>
#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QString>
#include <optional>

/// Where the bar and its flyouts go, in Qt's global coordinates (origin top-left, y down).
///
/// The saved position is kept as fractions of the screen measured from its bottom-left corner, so that
/// a bar near the bottom stays near the bottom when the resolution changes.
namespace Geometry {

/// Gap between the bar and the edge of the available area.
constexpr int edgeGap = 6;
/// Gap between the bar and a flyout, and between a flyout and the sides of the available area.
constexpr int flyoutGap = 4;

/// Centred horizontally, 6 pixels above the bottom (or below the top) of the available area.
QPoint defaultOrigin(const QSize& size, const QRect& available, bool top);

/// Keeps a bar of `size` inside the available area; one that is wider (taller) than the area is
/// pinned to its left (bottom) edge.
QPoint clampToAvailable(const QPoint& origin, const QSize& size, const QRect& available);

/// The bar's place on its screen as fractions of the screen's size, from the bottom-left corner.
struct Fractions
{
    double ox = 0;
    double oy = 0;
};
Fractions fractionsOf(const QRect& bar, const QRect& screen);
/// Back from fractions to an origin for a bar of `size`, clamped into the available area, however large
/// the fractions are.
QPoint originFromFractions(const Fractions& fractions, const QSize& size, const QRect& screen,
                           const QRect& available);

/// A start-up offset "dx,dy": two finite numbers separated by a comma, or nothing.
std::optional<QPointF> offsetFrom(const QString& text);
/// The bar's origin moved by `offset` (y counts upwards, like the saved position), clamped into the
/// available area however large the offset is.
QPoint movedBy(const QPoint& origin, const QPointF& offset, const QSize& size, const QRect& available);

/// True when the bar's centre is in the lower half of its screen, so its flyouts open upwards.
bool expandsUp(const QRect& bar, const QRect& screen);

/// The bar's frame after its contents changed size: the left and bottom edges stay, and a bar grown
/// past the right edge of the available area is pushed left, never past the area's left edge.
QRect refit(const QRect& bar, const QSize& size, const QRect& available);

/// The flyout's origin: centred on the chip (`anchor`, in bar coordinates), kept 4 pixels inside the
/// available area (the right side wins when it cannot fit), 4 pixels above the bar when the bar is in
/// the lower half of its screen (or when there is no screen), else 4 pixels below it.
QPoint flyoutOrigin(const QRect& bar, const QRectF& anchor, const QSize& flyout,
                    const std::optional<QRect>& screen, const std::optional<QRect>& available);

/// The height a flyout may take on the side of the bar it opens to, 4 pixels from the bar and from the
/// edge of the available area; nothing when no screen is known.
std::optional<int> flyoutRoom(const QRect& bar, const std::optional<QRect>& screen,
                              const std::optional<QRect>& available);

/// How many rows of `rowHeight`, `spacing` apart inside `margin` above and below, fit in `height`.
int rowsFitting(int height, int rowHeight, int spacing, int margin);

} // namespace Geometry
