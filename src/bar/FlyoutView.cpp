#include "FlyoutView.h"

#include "bar/ChipLabel.h"
#include "bar/Geometry.h"
#include "bar/Look.h"
#include "editor/ItemMenu.h"

#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace {

constexpr int margin = 8;
constexpr int spacing = 6;

/// Its size is the one it is given: the panel around it sizes itself to its content's size hint, which a
/// scroll area otherwise takes from the whole view it scrolls.
class ScrollingPane : public QScrollArea
{
public:
    QSize sizeHint() const override { return minimumSize(); }
};

} // namespace

FlyoutView::FlyoutView(const QList<ButtonSpec>& items, const BarHandlers& handlers, const DragState* drag,
                       QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
    auto* column = new QVBoxLayout(this);
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

int FlyoutView::rowsFitting(int height)
{
    // Every row is as tall as any chip: the title font and the icon size set it, not the title.
    const ChipLabel sample(ButtonSpec::make(QStringLiteral("sample"), QString(), QString()), std::nullopt,
                           true);
    return Geometry::rowsFitting(height, sample.sizeHint().height(), spacing, margin);
}

QWidget* FlyoutView::scrolling(FlyoutView* view, int height)
{
    // Scrolling rather than leaving members out: every member of a stack stays reachable, as in a long menu.
    auto* pane = new ScrollingPane;
    pane->setFrameShape(QFrame::NoFrame);
    pane->setFocusPolicy(Qt::NoFocus);
    pane->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    pane->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    pane->setAttribute(Qt::WA_TranslucentBackground);
    pane->viewport()->setAutoFillBackground(false);
    pane->setWidget(view);
    view->adjustSize();
    pane->setFixedSize(view->width() + pane->verticalScrollBar()->sizeHint().width(), height);
    return pane;
}

void FlyoutView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Look::plateColor());
    painter.drawRoundedRect(QRectF(rect()), Look::plateRadius, Look::plateRadius);
}
