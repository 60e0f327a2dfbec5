#pragma once

#include "config/BarConfig.h"

#include <QWidget>

class ChipLabel;
class QHBoxLayout;

/// The button as the bar would draw it, on a piece of the bar's dark plate.
class ChipPreview : public QWidget
{
    Q_OBJECT

public:
    explicit ChipPreview(QWidget* parent = nullptr);

    /// Replaces the chip with one that draws this button.
    void setSpec(const ButtonSpec& spec);
    const ChipLabel* chip() const { return m_chip; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QHBoxLayout* m_row;
    ChipLabel* m_chip = nullptr;
};
