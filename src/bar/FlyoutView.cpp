#include "FlyoutView.h"

#include "bar/ChipLabel.h"
#include "bar/Look.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

FlyoutView::FlyoutView(const QList<ButtonSpec>& items, const BarHandlers& handlers, QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(8, 8, 8, 8);
    column->setSpacing(6);
    column->setSizeConstraint(QLayout::SetFixedSize);

    if (items.isEmpty()) {
        auto* empty = new QLabel(emptyText(), this);
        empty->setFont(Look::font(11));
        empty->setContentsMargins(6, 6, 6, 6);
        QPalette palette = empty->palette();
        palette.setColor(QPalette::WindowText, Look::secondaryColor());
        empty->setPalette(palette);
        column->addWidget(empty);
    }
    for (const ButtonSpec& spec : items) {
        auto* chip = new ChipLabel(spec, std::nullopt, true, this);
        chip->onTap = [chip, &handlers] {
            if (handlers.tapInFlyout)
                handlers.tapInFlyout(chip->spec());
        };
        chip->onDragMove = [chip, &handlers](const QPointF& at) {
            if (handlers.dragMove)
                handlers.dragMove(chip->spec(), at);
        };
        chip->onDragEnd = [chip, &handlers](const QPointF& at) {
            if (handlers.dragEnd)
                handlers.dragEnd(chip->spec(), at);
        };
        column->addWidget(chip);
    }
}

QString FlyoutView::emptyText()
{
    return QStringLiteral("Empty — drag buttons onto this stack");
}

void FlyoutView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::plateColor());
    painter.drawRoundedRect(QRectF(rect()), Look::plateRadius, Look::plateRadius);
}
