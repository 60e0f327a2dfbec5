#include "BarPanel.h"

#include "bar/Look.h"
#include "platform/PanelWindows.h"

#include <QPainterPath>
#include <QTimer>
#include <QVBoxLayout>
#include <utility>

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
    // The panel's size is set in setFrame() only, where the order of size hints and request is kept.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
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
    setFrame(QRect(pos(), fittingSize()));
}

QSize BarPanel::fittingSize() const
{
    return m_content ? m_content->sizeHint() : QSize();
}

void BarPanel::setFrame(const QRect& frame)
{
    // A window manager holds every request to the size hints it knows. Fixing the new size first would
    // send a request between hints that still bound the old size (Qt raises the minimum, then resizes,
    // then lowers the maximum), and fluxbox keeps a growing bar at its old width for good. So the hints
    // first open up to cover the old and the new size, then the window takes its frame, then the hints
    // close on the new size.
    setMinimumSize(frame.size().boundedTo(size()));
    setMaximumSize(frame.size().expandedTo(size()));
    setGeometry(frame);
    setFixedSize(frame.size());
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

void BarPanel::paintEvent(QPaintEvent* event)
{
    QWidget::paintEvent(event);
    // Announced from the event loop, once the paint has been flushed to the server.
    if (!std::exchange(m_painted, true))
        QTimer::singleShot(0, this, &BarPanel::firstPainted);
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
