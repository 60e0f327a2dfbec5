#include "Overflow.h"

#include "bar/Geometry.h"

#include <algorithm>

namespace Overflow {

qsizetype chipsOnBar(qsizetype count, const std::function<int(qsizetype)>& widthOf, qsizetype contextStart,
                     const Row& row, int maxWidth)
{
    // rowWidths[k]: the row with the first k chips, before any overflow chip. Once it is too wide, no
    // longer row fits either, so no further chip is measured.
    QList<int> rowWidths{row.margins + row.grip};
    for (qsizetype i = 0; i < count && rowWidths.last() <= maxWidth; ++i) {
        const int separator = i == contextStart ? row.spacing + row.separator : 0;
        rowWidths.append(rowWidths.last() + row.spacing + widthOf(i) + separator);
    }
    const qsizetype measured = rowWidths.size() - 1;
    if (measured == count && rowWidths.last() <= maxWidth)
        return count;
    for (qsizetype shown = std::min(measured, count - 1); shown > 0; --shown) {
        if (rowWidths.at(shown) + row.spacing + row.overflow <= maxWidth)
            return shown;
    }
    return 0;
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
