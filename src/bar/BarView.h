#pragma once

#include "bar/BarHandlers.h"
#include "config/BarConfig.h"

#include <QList>
#include <QWidget>
#include <limits>

class ChipLabel;
class DragState;
class GripView;

/// The bar's content: grip, the shared buttons, and after a separator the buttons of the application
/// in front, on the dark plate. Rebuilt from the controller's state after every change. Chips that would
/// make it wider than its screen allows wait in an overflow chip at the end.
class BarView : public QWidget
{
    Q_OBJECT

public:
    BarView(DragState& drag, const BarHandlers& handlers, QWidget* parent = nullptr);

    void rebuild(const BarConfig& config, const QList<ButtonSpec>& contextButtons, bool expandsUp,
                 int maxWidth = std::numeric_limits<int>::max());
    /// The chips' frames in bar coordinates, by title; a later chip wins over an earlier one of the same
    /// title. Chips in the overflow have none.
    QHash<QString, QRectF> chipFrames() const;
    /// The buttons left off the bar, in row order, and the overflow chip's frame (null without one).
    const QList<ButtonSpec>& overflowed() const { return m_overflowed; }
    QRectF overflowFrame() const;

    QSize sizeHint() const override;

    static constexpr int barHeight = 40;

Q_SIGNALS:
    /// A right click on the plate or the grip, at a global position.
    void menuRequested(const QPoint& globalPos);
    /// A tap on the overflow chip, with its frame in bar coordinates.
    void overflowTapped(const QList<ButtonSpec>& items, const QRectF& frame);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    static bool hasChevron(const ButtonSpec& spec);
    ChipLabel* makeChip(const ButtonSpec& spec, bool expandsUp);
    void dragChanged();
    void publishFrames();

    DragState& m_drag;
    const BarHandlers& m_handlers;
    GripView* m_grip = nullptr;
    QList<ChipLabel*> m_chips;
    QList<QWidget*> m_parts;
    ChipLabel* m_overflowChip = nullptr;
    QList<ButtonSpec> m_overflowed;
};
