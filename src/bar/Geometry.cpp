#include "Geometry.h"

#include <QStringList>
#include <QtMath>
#include <algorithm>
#include <cmath>

namespace {

/// Exclusive bottom and right edges, as the arithmetic below expects.
int bottom(const QRect& rect)
{
    return rect.y() + rect.height();
}

int right(const QRect& rect)
{
    return rect.x() + rect.width();
}

/// A coordinate brought into [low, high] before it becomes a whole pixel: a double beyond the range of
/// int has no defined conversion, and such numbers come from hand-edited or scripted values.
int pixel(double value, int low, int high)
{
    if (std::isnan(value))
        return low;
    return qRound(std::clamp(value, double(low), double(std::max(low, high))));
}

/// The origin for a bar of `size` at (x, y), clamped into the available area; see clampToAvailable.
QPoint clamped(double x, double y, const QSize& size, const QRect& available)
{
    const int lowest = bottom(available) - size.height();
    return {pixel(x, available.x(), right(available) - size.width()),
            pixel(y, std::min(lowest, available.y()), lowest)};
}

} // namespace

namespace Geometry {

QPoint defaultOrigin(const QSize& size, const QRect& available, bool top)
{
    const int x = qRound(available.x() + available.width() / 2.0 - size.width() / 2.0);
    const int y = top ? available.y() + edgeGap : bottom(available) - size.height() - edgeGap;
    return {x, y};
}

QPoint clampToAvailable(const QPoint& origin, const QSize& size, const QRect& available)
{
    const int x = std::min(std::max(origin.x(), available.x()),
                           std::max(available.x(), right(available) - size.width()));
    const int lowest = bottom(available) - size.height();
    const int y = std::max(std::min(origin.y(), lowest), std::min(lowest, available.y()));
    return {x, y};
}

Fractions fractionsOf(const QRect& bar, const QRect& screen)
{
    return {double(bar.x() - screen.x()) / screen.width(),
            double(bottom(screen) - bottom(bar)) / screen.height()};
}

QPoint originFromFractions(const Fractions& fractions, const QSize& size, const QRect& screen,
                           const QRect& available)
{
    const double x = screen.x() + fractions.ox * screen.width();
    const double barBottom = bottom(screen) - fractions.oy * screen.height();
    return clamped(x, barBottom - size.height(), size, available);
}

std::optional<QPointF> offsetFrom(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 2)
        return std::nullopt;
    bool okX = false;
    bool okY = false;
    const double dx = parts.at(0).toDouble(&okX);
    const double dy = parts.at(1).toDouble(&okY);
    if (!okX || !okY || !std::isfinite(dx) || !std::isfinite(dy))
        return std::nullopt;
    return QPointF(dx, dy);
}

QPoint movedBy(const QPoint& origin, const QPointF& offset, const QSize& size, const QRect& available)
{
    return clamped(origin.x() + offset.x(), origin.y() - offset.y(), size, available);
}

bool expandsUp(const QRect& bar, const QRect& screen)
{
    return bar.y() + bar.height() / 2.0 > screen.y() + screen.height() / 2.0;
}

QRect refit(const QRect& bar, const QSize& size, const QRect& available)
{
    const int x = std::min(bar.x(), std::max(available.x(), right(available) - size.width()));
    return {x, bottom(bar) - size.height(), size.width(), size.height()};
}

QPoint flyoutOrigin(const QRect& bar, const QRectF& anchor, const QSize& flyout,
                    const std::optional<QRect>& screen, const std::optional<QRect>& available)
{
    const QRect area = available.value_or(bar);
    double x = bar.x() + anchor.center().x() - flyout.width() / 2.0;
    x = std::max(x, double(area.x() + flyoutGap));
    x = std::min(x, double(right(area) - flyout.width() - flyoutGap));
    const bool above = !screen || expandsUp(bar, *screen);
    int y = above ? bar.y() - flyoutGap - flyout.height() : bottom(bar) + flyoutGap;
    // One too tall for its side still shows its first rows: it covers the bar rather than leave the area.
    if (available)
        y = std::max(std::min(y, bottom(*available) - flyoutGap - flyout.height()),
                     available->y() + flyoutGap);
    return {qRound(x), y};
}

std::optional<int> flyoutRoom(const QRect& bar, const std::optional<QRect>& screen,
                              const std::optional<QRect>& available)
{
    if (!screen || !available)
        return std::nullopt;
    const int room = expandsUp(bar, *screen) ? bar.y() - flyoutGap - (available->y() + flyoutGap)
                                             : bottom(*available) - flyoutGap - (bottom(bar) + flyoutGap);
    return std::max(room, 0);
}

int rowsFitting(int height, int rowHeight, int spacing, int margin)
{
    if (rowHeight <= 0)
        return 0;
    return std::max(0, (height - 2 * margin + spacing) / (rowHeight + spacing));
}

} // namespace Geometry
