#include "GripView.h"

#include "bar/Look.h"

#include <QMouseEvent>
#include <QPainter>

GripView::GripView(QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
    setFixedSize(sizeHint());
    setCursor(Qt::OpenHandCursor);
}

void GripView::paintEvent(QPaintEvent*)
{
    // "⋮⋮" as dots: the glyphs' side bearings in most fonts are wider than the 14-pixel handle.
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::secondaryColor());
    const QPointF centre = QRectF(rect()).center();
    for (const qreal dx : {-2.5, 2.5}) {
        for (const qreal dy : {-5.0, 0.0, 5.0})
            painter.drawEllipse(centre + QPointF(dx, dy), 1.4, 1.4);
    }
}

void GripView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore(); // the bar's own menu takes right clicks
        return;
    }
    m_grabOffset = event->globalPosition().toPoint() - window()->pos();
    setCursor(Qt::ClosedHandCursor);
}

void GripView::mouseMoveEvent(QMouseEvent* event)
{
    if (m_grabOffset && (event->buttons() & Qt::LeftButton))
        window()->move(event->globalPosition().toPoint() - *m_grabOffset);
}

void GripView::mouseReleaseEvent(QMouseEvent* event)
{
    // The last motion before the release may have been folded away; the bar ends where it was let go.
    if (m_grabOffset && event->button() == Qt::LeftButton)
        window()->move(event->globalPosition().toPoint() - *m_grabOffset);
    m_grabOffset.reset();
    setCursor(Qt::OpenHandCursor);
}
