#include "BarLayout.h"

#include "bar/BarView.h"
#include "bar/SymbolView.h"
#include "dragdrop/DragState.h"

QPoint BarLayout::centreOf(const QString& title, const QRect& barFrame) const
{
    return barFrame.topLeft() + chips.value(title).center().toPoint();
}

BarLayout layoutOf(const BarConfig& config, const QList<ButtonSpec>& context, int maxWidth)
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(config, context, true, maxWidth);
    return {view.width(), view.chipFrames(), view.overflowed(), view.overflowFrame()};
}

void useProgramIconTheme()
{
    SymbolView::useIconThemes();
}

QPoint gripOf(const QRect& barFrame)
{
    return QPoint(barFrame.x() + 12 + 7, barFrame.y() + barFrame.height() / 2);
}
