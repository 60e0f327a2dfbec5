#include "ChipLabel.h"

#include "actions/IconCache.h"
#include "bar/Look.h"
#include "bar/SymbolNames.h"
#include "bar/SymbolView.h"

#include <QContextMenuEvent>
#include <QFontMetrics>
#include <QMetaMethod>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int paddingX = 12;
constexpr int paddingY = 6;
constexpr int iconSize = 16;
constexpr int iconGap = 6;
constexpr int chevronSize = 10;
constexpr int chevronGap = 4;
constexpr qreal titlePoints = 12;
constexpr qreal emojiPoints = 13;

QFont titleFont()
{
    return Look::font(titlePoints, QFont::Medium);
}

} // namespace

ChipLabel::ChipLabel(ButtonSpec spec, std::optional<QString> chevron, bool fill, QWidget* parent)
    : QWidget(parent)
    , m_spec(std::move(spec))
    , m_chevron(std::move(chevron))
    , m_fill(fill)
{
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(fill ? QSizePolicy::MinimumExpanding : QSizePolicy::Fixed, QSizePolicy::Fixed);
    setToolTip(m_spec.argument.value_or(QString()));
}

void ChipLabel::forwardTo(const BarHandlers& handlers, bool withMenu)
{
    connect(this, &ChipLabel::dragMoved, this, [this, &handlers](const QPointF& at) {
        if (handlers.dragMove)
            handlers.dragMove(m_spec, at);
    });
    connect(this, &ChipLabel::dragEnded, this, [this, &handlers](const QPointF& at) {
        if (handlers.dragEnd)
            handlers.dragEnd(m_spec, at);
    });
    if (!withMenu)
        return;
    connect(this, &ChipLabel::menuRequested, this, [this, &handlers](const QPoint& at) {
        if (handlers.chipMenu)
            handlers.chipMenu(m_spec, at);
    });
}

void ChipLabel::setHighlighted(bool on)
{
    if (on == m_highlighted)
        return;
    m_highlighted = on;
    update();
}

int ChipLabel::iconWidth(const ButtonSpec& spec, qreal devicePixelRatio)
{
    if (spec.iconPath)
        return iconSize;
    if (spec.symbol.isEmpty())
        return 0;
    if (!SymbolView::icon(spec.symbol, Look::textColor(), iconSize, devicePixelRatio).isNull())
        return iconSize;
    return QFontMetrics(Look::font(emojiPoints)).horizontalAdvance(spec.symbol);
}

QSize ChipLabel::sizeHint() const
{
    return sizeFor(m_spec, m_chevron.has_value(), devicePixelRatioF());
}

QSize ChipLabel::sizeFor(const ButtonSpec& spec, bool chevron, qreal devicePixelRatio)
{
    const QFontMetrics metrics(titleFont());
    int width = paddingX * 2 + metrics.horizontalAdvance(spec.title);
    if (const int icon = iconWidth(spec, devicePixelRatio); icon > 0)
        width += icon + iconGap;
    if (chevron)
        width += chevronGap + chevronSize;
    const int height = std::max(iconSize, metrics.height()) + paddingY * 2;
    return {width, height};
}

void ChipLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor tint = Look::chipColor(m_spec.tint());
    QColor fill = tint;
    fill.setAlphaF(0.18f);
    QColor stroke = tint;
    stroke.setAlphaF(0.55f);
    painter.setPen(QPen(stroke, 1));
    painter.setBrush(fill);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), Look::chipRadius,
                            Look::chipRadius);

    int x = paintSymbol(painter, paddingX);
    painter.setFont(titleFont());
    painter.setPen(Look::textColor());
    const int titleWidth = painter.fontMetrics().horizontalAdvance(m_spec.title);
    painter.drawText(QRect(x, 0, titleWidth, height()), Qt::AlignVCenter | Qt::AlignLeft, m_spec.title);
    if (m_chevron)
        paintChevron(painter, x + titleWidth + chevronGap);
    if (m_spec.isLocked())
        paintLock(painter);
    if (m_highlighted) {
        painter.setPen(QPen(Qt::white, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), Look::chipRadius, Look::chipRadius);
    }
}

int ChipLabel::paintSymbol(QPainter& painter, int x) const
{
    const int middle = height() / 2;
    if (m_spec.iconPath) {
        const QImage image = IconCache::image(*m_spec.iconPath);
        painter.drawImage(QRect(x, middle - iconSize / 2, iconSize, iconSize), image);
        return x + iconSize + iconGap;
    }
    if (m_spec.symbol.isEmpty())
        return x;
    const QPixmap icon = SymbolView::icon(m_spec.symbol, Look::textColor(), iconSize, devicePixelRatioF());
    if (!icon.isNull()) {
        painter.drawPixmap(QRect(x, middle - iconSize / 2, iconSize, iconSize), icon);
        return x + iconSize + iconGap;
    }
    painter.setFont(Look::font(emojiPoints));
    painter.setPen(Look::textColor());
    const int width = painter.fontMetrics().horizontalAdvance(m_spec.symbol);
    painter.drawText(QRect(x, 0, width, height()), Qt::AlignVCenter | Qt::AlignLeft, m_spec.symbol);
    return x + width + iconGap;
}

void ChipLabel::paintChevron(QPainter& painter, int x) const
{
    const int middle = height() / 2;
    const QPixmap chevron = SymbolView::icon(*m_chevron, Look::textColor(), chevronSize, devicePixelRatioF());
    if (!chevron.isNull()) {
        painter.drawPixmap(QRect(x, middle - chevronSize / 2, chevronSize, chevronSize), chevron);
        return;
    }
    // No icon theme: a drawn chevron keeps the stack recognisable.
    const bool up = m_chevron == SymbolNames::chevron(true);
    QPainterPath path;
    const qreal top = middle - 2.5;
    const qreal bottom = middle + 2.5;
    path.moveTo(x + 1, up ? bottom : top);
    path.lineTo(x + chevronSize / 2.0, up ? top : bottom);
    path.lineTo(x + chevronSize - 1, up ? bottom : top);
    painter.setPen(QPen(Look::textColor(), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
}

void ChipLabel::paintLock(QPainter& painter) const
{
    constexpr int lockSize = 8;
    constexpr int lockPadding = 3;
    const QRect lockRect(width() - lockPadding - lockSize, lockPadding, lockSize, lockSize);
    const QPixmap lock =
        SymbolView::icon(SymbolNames::lock(), Look::secondaryColor(), lockSize, devicePixelRatioF());
    if (!lock.isNull()) {
        painter.drawPixmap(lockRect, lock);
        return;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::secondaryColor());
    painter.drawRoundedRect(QRectF(lockRect).adjusted(1, 3, -1, 0), 1, 1);
}

void ChipLabel::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressedAt = event->globalPosition();
    m_dragging = false;
}

void ChipLabel::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_pressedAt || !(event->buttons() & Qt::LeftButton))
        return;
    const QPointF delta = event->globalPosition() - *m_pressedAt;
    if (!m_dragging && std::hypot(delta.x(), delta.y()) >= dragThreshold)
        m_dragging = true;
    if (m_dragging)
        Q_EMIT dragMoved(event->globalPosition());
}

void ChipLabel::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_pressedAt)
        return;
    const bool dragged = m_dragging;
    m_pressedAt.reset();
    m_dragging = false;
    if (dragged)
        Q_EMIT dragEnded(event->globalPosition());
    else
        Q_EMIT tapped();
}

void ChipLabel::contextMenuEvent(QContextMenuEvent* event)
{
    if (isSignalConnected(QMetaMethod::fromSignal(&ChipLabel::menuRequested)))
        Q_EMIT menuRequested(event->globalPos());
    else
        event->ignore();
}
