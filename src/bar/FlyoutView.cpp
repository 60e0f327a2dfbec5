#include "FlyoutView.h"

#include "bar/ChipLabel.h"
#include "bar/Geometry.h"
#include "bar/Look.h"
#include "bar/Overflow.h"

#include <QGridLayout>
#include <QLabel>
#include <QPainter>

namespace {

constexpr int margin = 8;
constexpr int spacing = 6;

} // namespace

FlyoutView::FlyoutView(const QList<ButtonSpec>& items, const BarHandlers& handlers, const DragState* drag,
                       int maxHeight, QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
    auto* column = new QGridLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(spacing);
    column->setSizeConstraint(QLayout::SetFixedSize);

    if (items.isEmpty()) {
        auto* empty = new QLabel(emptyText(), this);
        empty->setFont(Look::font(11));
        empty->setContentsMargins(6, 6, 6, 6);
        QPalette palette = empty->palette();
        palette.setColor(QPalette::WindowText, Look::secondaryColor());
        empty->setPalette(palette);
        column->addWidget(empty, 0, 0);
    }
    int rows = 1;
    for (qsizetype i = 0; i < items.size(); ++i) {
        const ButtonSpec& spec = items.at(i);
        auto* chip = new ChipLabel(spec, std::nullopt, true, this);
        if (i == 0)
            rows =
                Overflow::rowsPerColumn(items.size(), chip->sizeHint().height(), spacing, margin, maxHeight);
        connect(chip, &ChipLabel::tapped, this, [chip, &handlers] {
            if (handlers.tapInFlyout)
                handlers.tapInFlyout(chip->spec());
        });
        // The rows of a folder listing are made up for the moment, not buttons of the document.
        chip->forwardTo(handlers, drag && !(handlers.isListing && handlers.isListing()));
        column->addWidget(chip, int(i % rows), int(i / rows));
    }
}

QString FlyoutView::emptyText()
{
    return QStringLiteral("Empty — drag buttons onto this stack");
}

int FlyoutView::rowsFitting(int height)
{
    // Every row is as tall as any chip: the title font and the icon size set it, not the title.
    const ChipLabel sample(ButtonSpec::make(QStringLiteral("sample"), QString(), QString()), std::nullopt,
                           true);
    return Geometry::rowsFitting(height, sample.sizeHint().height(), spacing, margin);
}

void FlyoutView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    Look::paintPlate(painter, rect());
}
