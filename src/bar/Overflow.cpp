#include "Overflow.h"

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
    const int pitch = std::max(1, rowHeight + spacing);
    const int fitting = std::max(1, (maxHeight - 2 * margins + spacing) / pitch);
    const qsizetype columns = (count + fitting - 1) / fitting;
    return int((count + columns - 1) / columns);
}

int flyoutRoom(const QRect& bar, const QRect& available, bool up, int gap)
{
    const int room =
        up ? bar.y() - available.y() : available.y() + available.height() - (bar.y() + bar.height());
    return std::max(0, room - 2 * gap);
}

} // namespace Overflow
