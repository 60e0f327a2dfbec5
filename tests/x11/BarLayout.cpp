#include "BarLayout.h"

#include "bar/BarView.h"
#include "bar/ChipLabel.h"
#include "bar/FlyoutView.h"
#include "bar/SymbolView.h"
#include "dragdrop/DragState.h"

#include <QLayout>

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

FlyoutLayout flyoutLayoutOf(const QList<ButtonSpec>& items, int maxHeight)
{
    BarHandlers handlers;
    FlyoutView view(items, handlers, nullptr, maxHeight);
    view.adjustSize();
    // A hidden widget lays its children out at its final size only when it is shown; this one never is.
    view.layout()->setGeometry(view.rect());
    FlyoutLayout layout{view.size(), {}};
    for (const ChipLabel* chip : view.findChildren<ChipLabel*>())
        layout.chips.insert(chip->spec().title, QRectF(chip->geometry()));
    return layout;
}

void useProgramIconTheme()
{
    SymbolView::useIconThemes();
}

QPoint gripOf(const QRect& barFrame)
{
    return QPoint(barFrame.x() + 12 + 7, barFrame.y() + barFrame.height() / 2);
}
