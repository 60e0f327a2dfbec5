#include "Overflow.h"

#include "bar/Geometry.h"

#include <algorithm>

namespace Overflow {

qsizetype chipsOnBar(const QList<int>& widths, qsizetype contextStart, const Row& row, int maxWidth)
{
    const auto widthWith = [&](qsizetype shown) {
        int width = row.margins + row.grip;
        for (qsizetype i = 0; i < shown; ++i)
            width += row.spacing + widths.at(i);
        if (contextStart < shown)
            width += row.spacing + row.separator;
        if (shown < widths.size())
            width += row.spacing + row.overflow;
        return width;
    };
    if (widths.isEmpty() || widthWith(widths.size()) <= maxWidth)
        return widths.size();
    // Dropping a chip never widens the bar once the overflow chip is there, so the first that fits is
    // the most that fits.
    qsizetype shown = widths.size() - 1;
    while (shown > 0 && widthWith(shown) > maxWidth)
        --shown;
    return shown;
}

int rowsPerColumn(qsizetype count, int rowHeight, int spacing, int margins, int maxHeight)
{
    if (count <= 0)
        return 1;
    const int fitting = std::max(1, Geometry::rowsFitting(maxHeight, rowHeight, spacing, margins));
    const qsizetype columns = (count + fitting - 1) / fitting;
    return int((count + columns - 1) / columns);
}

} // namespace Overflow
