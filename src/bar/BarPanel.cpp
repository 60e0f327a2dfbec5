#include "BarPanel.h"

#include "bar/Look.h"
#include "platform/PanelWindows.h"

#include <QPainterPath>
#include <QVBoxLayout>

BarPanel::BarPanel(PanelWindows& windows, const QString& title)
    : QWidget(nullptr,
              Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::WindowDoesNotAcceptFocus)
    , m_windows(windows)
{
    setWindowTitle(title);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void BarPanel::setContent(QWidget* content)
{
    if (m_content) {
        m_content->hide();
        m_content->deleteLater(); // it may be handling the click that replaced it
    }
    m_content = content;
    layout()->addWidget(content);
    layout()->activate();
    adjustSize();
}

QSize BarPanel::fittingSize() const
{
    return m_content ? m_content->sizeHint() : QSize();
}

void BarPanel::showPanel()
{
    m_windows.prepareDock(winId());
    updateMask();
    show();
}

void BarPanel::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    Q_EMIT moved();
}

void BarPanel::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    updateMask();
}

void BarPanel::setShapeHidden(bool hidden)
{
    if (hidden == m_shapeHidden)
        return;
    m_shapeHidden = hidden;
    clearMask(); // so that the next mask is applied even when it equals the last one
    updateMask();
}

void BarPanel::updateMask()
{
    if (m_shapeHidden) {
        // One pixel outside the window: nothing of it is left to see.
        setMask(QRegion(-1, -1, 1, 1));
        return;
    }
    // Without a compositor the transparent corners would show black; a shaped window cuts them off.
    if (m_windows.isCompositing()) {
        clearMask();
        return;
    }
    QPainterPath path;
    path.addRoundedRect(QRectF(rect()), Look::plateRadius, Look::plateRadius);
    setMask(QRegion(path.toFillPolygon().toPolygon()));
}
