#include "FlyoutView.h"

#include "bar/ChipLabel.h"
#include "bar/Look.h"
#include "editor/ItemMenu.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

FlyoutView::FlyoutView(const QList<ButtonSpec>& items, const BarHandlers& handlers, const DragState* drag,
                       QWidget* parent)
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
        chip->forwardDrags(handlers);
        // The rows of a folder listing are made up for the moment, not buttons of the document.
        if (drag && !(handlers.isListing && handlers.isListing())) {
            chip->onContextMenu = [chip, &handlers, drag](const QPoint& at) {
                ItemMenu::popup(chip->spec(), handlers, *drag, at);
            };
        }
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
