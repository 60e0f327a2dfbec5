#pragma once

#include "bar/BarHandlers.h"
#include "config/BarConfig.h"

#include <QList>
#include <QWidget>

class ChipLabel;
class DragState;

/// The bar's content: grip, the shared buttons, and after a separator the buttons of the application
/// in front, on the dark plate. Rebuilt from the controller's state after every change.
class BarView : public QWidget
{
    Q_OBJECT

public:
    BarView(DragState& drag, const BarHandlers& handlers, QWidget* parent = nullptr);

    void rebuild(const BarConfig& config, const QList<ButtonSpec>& contextButtons, bool expandsUp);
    /// The chips' frames in bar coordinates, by title; a later chip wins over an earlier one of the same
    /// title.
    QHash<QString, QRectF> chipFrames() const;

    QSize sizeHint() const override;

    static constexpr int barHeight = 40;

Q_SIGNALS:
    /// A right click on the plate or the grip, at a global position.
    void menuRequested(const QPoint& globalPos);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    ChipLabel* makeChip(const ButtonSpec& spec, bool expandsUp);
    void dragChanged();
    void publishFrames();

    DragState& m_drag;
    const BarHandlers& m_handlers;
    QList<ChipLabel*> m_chips;
    QList<QWidget*> m_parts;
};
