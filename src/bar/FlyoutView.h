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

protected:
    void paintEvent(QPaintEvent* event) override;
};
