#include "BarLayout.h"

#include "bar/BarView.h"
#include "dragdrop/DragState.h"

#include <QIcon>
#include <QLayout>

QPoint BarLayout::centreOf(const QString& title, const QRect& barFrame) const
{
    return barFrame.topLeft() + chips.value(title).center().toPoint();
}

BarLayout layoutOf(const BarConfig& config, const QList<ButtonSpec>& context)
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(config, context, true);
    // A hidden widget lays its children out at its final size only when it is shown; this one never is.
    view.layout()->setGeometry(view.rect());
    return {view.width(), view.chipFrames()};
}

void useProgramIconTheme()
{
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

QPoint gripOf(const QRect& barFrame)
{
    return QPoint(barFrame.x() + 12 + 7, barFrame.y() + barFrame.height() / 2);
}
