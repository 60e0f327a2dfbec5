#pragma once

#include "bar/BarHandlers.h"

#include <QWidget>
#include <limits>

class DragState;

/// The members of a stack, or a folder listing, one full-width chip per row on the dark plate; rows
/// that would make it taller than `maxHeight` continue in further columns.
class FlyoutView : public QWidget
{
    Q_OBJECT

public:
    /// Without `drag` (a preview) the rows have no menu.
    FlyoutView(const QList<ButtonSpec>& items, const BarHandlers& handlers, const DragState* drag = nullptr,
               int maxHeight = std::numeric_limits<int>::max(), QWidget* parent = nullptr);

    static QString emptyText();
    /// How many rows fit in a flyout of `height` pixels.
    static int rowsFitting(int height);

protected:
    void paintEvent(QPaintEvent* event) override;
};
