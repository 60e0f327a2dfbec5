#pragma once

#include <QWidget>
#include <functional>
#include <optional>

/// The "⋮⋮" handle at the bar's left end: dragging it moves the bar. Window managers refuse to move
/// dock windows themselves, so the move is done here, from the pointer's motion.
class GripView : public QWidget
{
    Q_OBJECT

public:
    explicit GripView(QWidget* parent = nullptr);

    QSize sizeHint() const override { return {14, 28}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    std::optional<QPoint> m_grabOffset;
};
