#pragma once

#include "bar/BarHandlers.h"
#include "config/BarConfig.h"

#include <QPoint>
#include <QWidget>
#include <optional>

class QPainter;

/// One button drawn as a chip: icon, title, optional chevron, tinted plate and lock mark. A press that
/// moves less than six pixels is a tap; anything longer is a drag, reported with global positions.
class ChipLabel : public QWidget
{
    Q_OBJECT

public:
    ChipLabel(ButtonSpec spec, std::optional<QString> chevron, bool fill, QWidget* parent = nullptr);

    const ButtonSpec& spec() const { return m_spec; }
    void setHighlighted(bool on);

    /// Hands this chip's drags to the controller, and its menu too when `withMenu`.
    void forwardTo(const BarHandlers& handlers, bool withMenu);

    QSize sizeHint() const override;
    /// The size a chip for `spec` takes, measured without making one: a bar of a thousand buttons
    /// measures them all to find how many fit.
    static QSize sizeFor(const ButtonSpec& spec, bool chevron, qreal devicePixelRatio);
    QSize minimumSizeHint() const override { return sizeHint(); }

    /// How far a press must move before it becomes a drag.
    static constexpr int dragThreshold = 6;

Q_SIGNALS:
    // Receivers that rebuild the bar or close a flyout delete the chip later, never while it emits.
    void tapped();
    void dragMoved(const QPointF& global);
    void dragEnded(const QPointF& global);
    /// A right click; with nothing connected the click goes on to the widget behind the chip.
    void menuRequested(const QPoint& global);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    /// The icon, image or emoji at `x`; where the title starts.
    int paintSymbol(QPainter& painter, int x) const;
    void paintChevron(QPainter& painter, int x) const;
    void paintLock(QPainter& painter) const;

    static int iconWidth(const ButtonSpec& spec, qreal devicePixelRatio);

    ButtonSpec m_spec;
    std::optional<QString> m_chevron;
    bool m_fill;
    bool m_highlighted = false;
    std::optional<QPointF> m_pressedAt;
    bool m_dragging = false;
};
