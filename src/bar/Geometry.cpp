#include "Geometry.h"

#include <QtMath>
#include <algorithm>

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
    return clampToAvailable(QPoint(qRound(x), qRound(barBottom - size.height())), size, available);
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
    const int y = above ? bar.y() - flyoutGap - flyout.height() : bottom(bar) + flyoutGap;
    return {qRound(x), y};
}

} // namespace Geometry
