#pragma once

#include <QList>
#include <QRect>
#include <functional>

/// What of the bar fits on its screen: chips that do not fit move into an overflow chip at the end of
/// the row, whose flyout holds them in as many columns as its height needs.
namespace Overflow {

/// The fixed parts of the bar's row, in pixels.
struct Row
{
    int margins = 0;   ///< left and right padding together
    int spacing = 0;   ///< between neighbours in the row
    int grip = 0;      ///< the grip, always shown
    int separator = 0; ///< before the front application's chips, shown when one of them is on the bar
    int overflow = 0;  ///< the overflow chip, shown when a chip is left off the bar
};

/// How many of the `count` chips stay on a bar at most `maxWidth` wide; the rest go into the overflow
/// chip. `widthOf(i)` is the width of chip i, asked for in row order and only as far as the bar could
/// reach: measuring a chip means shaping its title, and a bar of a thousand shows a dozen. `contextStart`
/// is the index of the first chip of the front application's set (`count` when there is none). At least
/// none: the grip and the overflow chip always show.
qsizetype chipsOnBar(qsizetype count, const std::function<int(qsizetype)>& widthOf, qsizetype contextStart,
                     const Row& row, int maxWidth);

/// Rows per column of a flyout of `count` rows, each `rowHeight` high, `spacing` apart between margins
/// of `margins` at each end, so that it is at most `maxHeight` high; columns are filled evenly. At least
/// one row, however little room there is.
int rowsPerColumn(qsizetype count, int rowHeight, int spacing, int margins, int maxHeight);

} // namespace Overflow
