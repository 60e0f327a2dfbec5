#pragma once

#include "bar/BarHandlers.h"

#include <QWidget>

/// The members of a stack, or a folder listing, one full-width chip per row on the dark plate.
class FlyoutView : public QWidget
{
    Q_OBJECT

public:
    FlyoutView(const QList<ButtonSpec>& items, const BarHandlers& handlers, QWidget* parent = nullptr);

    static QString emptyText();

protected:
    void paintEvent(QPaintEvent* event) override;
};
