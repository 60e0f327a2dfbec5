#pragma once

#include "bar/BarHandlers.h"

#include <QWidget>

class DragState;

/// The members of a stack, or a folder listing, one full-width chip per row on the dark plate.
class FlyoutView : public QWidget
{
    Q_OBJECT

public:
    /// `drag` gives the rows' menus their undo state; without it the rows have no menu.
    FlyoutView(const QList<ButtonSpec>& items, const BarHandlers& handlers, const DragState* drag = nullptr,
               QWidget* parent = nullptr);

    static QString emptyText();
    /// How many rows fit in a flyout of `height` pixels.
    static int rowsFitting(int height);
    /// The view in a pane `height` pixels tall that scrolls it, for more rows than fit on the screen.
    static QWidget* scrolling(FlyoutView* view, int height);

protected:
    void paintEvent(QPaintEvent* event) override;
};
