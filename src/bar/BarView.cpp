#include "BarView.h"

#include "bar/ChipLabel.h"
#include "bar/GripView.h"
#include "bar/Look.h"
#include "bar/Overflow.h"
#include "bar/SymbolNames.h"
#include "dragdrop/DragState.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QMimeData>
#include <QPainter>

namespace {

constexpr int rowMargin = 12;
constexpr int rowSpacing = 8;
constexpr int separatorWidth = 1;

/// The chip that holds what does not fit: a plain "»", neither a button nor a stack of the document.
ButtonSpec overflowSpec(qsizetype count)
{
    ButtonSpec spec = ButtonSpec::make(QStringLiteral("\u00bb"), QString(), QStringLiteral("group"),
                                       count == 1 ? QStringLiteral("1 more button")
                                                  : QStringLiteral("%1 more buttons").arg(count));
    spec.color = QStringLiteral("white");
    return spec;
}

class Separator : public QWidget
{
public:
    explicit Separator(QWidget* parent)
        : QWidget(parent)
    {
        setFixedSize(separatorWidth, 22);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        QColor grey = Look::secondaryColor();
        grey.setAlphaF(0.5f);
        painter.fillRect(rect(), grey);
    }
};

} // namespace

BarView::BarView(DragState& drag, const BarHandlers& handlers, QWidget* parent)
    : QWidget(parent)
    , m_drag(drag)
    , m_handlers(handlers)
{
    setFocusPolicy(Qt::NoFocus);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(rowMargin, 0, rowMargin, 0);
    row->setSpacing(rowSpacing);
    setFixedHeight(barHeight);
    setAcceptDrops(true);
    // The grip outlives rebuilds: crossing the middle of the screen rebuilds the bar while it is dragged.
    m_grip = new GripView(this);
    row->addWidget(m_grip, 0, Qt::AlignVCenter);
    connect(&m_drag, &DragState::changed, this, &BarView::dragChanged);
}

bool BarView::hasChevron(const ButtonSpec& spec)
{
    return spec.isGroup() || spec.kind() == ActionKind::Folder;
}

ChipLabel* BarView::makeChip(const ButtonSpec& spec, bool expandsUp)
{
    std::optional<QString> chevron;
    if (hasChevron(spec))
        chevron = SymbolNames::chevron(expandsUp);
    auto* chip = new ChipLabel(spec, chevron, false, this);
    connect(chip, &ChipLabel::tapped, this, [this, chip] {
        if (m_handlers.tap)
            m_handlers.tap(chip->spec(), chipFrames().value(chip->spec().title));
    });
    chip->forwardTo(m_handlers, true);
    return chip;
}

void BarView::rebuild(const BarConfig& config, const QList<ButtonSpec>& contextButtons, bool expandsUp,
                      int maxWidth)
{
    // Later: a chip's own tap may be what asked for this rebuild, and it is still on the stack.
    for (QWidget* part : std::as_const(m_parts)) {
        part->hide();
        part->deleteLater();
    }
    m_parts.clear();
    m_chips.clear();
    m_overflowChip = nullptr;
    m_overflowed.clear();

    const QList<ButtonSpec> specs = config.buttons + contextButtons;
    const qsizetype contextStart = config.buttons.size();
    const auto widthOf = [&](qsizetype i) {
        return ChipLabel::sizeFor(specs.at(i), hasChevron(specs.at(i)), devicePixelRatioF()).width();
    };
    const auto overflowWidth = ChipLabel::sizeFor(overflowSpec(0), false, devicePixelRatioF()).width();
    const Overflow::Row metrics{2 * rowMargin, rowSpacing, m_grip->sizeHint().width(), separatorWidth,
                                overflowWidth};
    const qsizetype shown = Overflow::chipsOnBar(specs.size(), widthOf, contextStart, metrics, maxWidth);
    // Only the chips that fit are made: the rest wait in the overflow's list.
    QList<ChipLabel*> chips;
    for (qsizetype i = 0; i < shown; ++i)
        chips.append(makeChip(specs.at(i), expandsUp));
    m_overflowed = specs.mid(shown);

    auto* row = static_cast<QHBoxLayout*>(layout());
    for (qsizetype i = 0; i < chips.size(); ++i) {
        if (i == contextStart) {
            auto* separator = new Separator(this);
            row->addWidget(separator, 0, Qt::AlignVCenter);
            m_parts.append(separator);
        }
        row->addWidget(chips.at(i), 0, Qt::AlignVCenter);
        m_chips.append(chips.at(i));
        m_parts.append(chips.at(i));
    }
    if (!m_overflowed.isEmpty()) {
        m_overflowChip = new ChipLabel(overflowSpec(m_overflowed.size()), std::nullopt, false, this);
        connect(m_overflowChip, &ChipLabel::tapped, this, [this] {
            const QList<ButtonSpec> items = m_overflowed; // what the tap does may rebuild the bar
            Q_EMIT overflowTapped(items, overflowFrame());
        });
        row->addWidget(m_overflowChip, 0, Qt::AlignVCenter);
        m_parts.append(m_overflowChip);
    }
    // Children added to a widget that is already on screen stay hidden until shown.
    for (QWidget* part : std::as_const(m_parts))
        part->show();
    row->activate();
    setFixedSize(sizeHint());
    // A hidden bar lays its children out only when shown; the frames are wanted now.
    row->setGeometry(rect());
    dragChanged();
    publishFrames();
}

QRectF BarView::overflowFrame() const
{
    return m_overflowChip ? QRectF(m_overflowChip->geometry()) : QRectF();
}

QSize BarView::sizeHint() const
{
    return {layout()->sizeHint().width(), barHeight};
}

QHash<QString, QRectF> BarView::chipFrames() const
{
    QHash<QString, QRectF> frames;
    for (const ChipLabel* chip : m_chips)
        frames.insert(chip->spec().title, QRectF(chip->geometry()));
    return frames;
}

void BarView::publishFrames()
{
    m_drag.setBarFrames(chipFrames());
}

void BarView::dragChanged()
{
    const auto highlight = m_drag.highlightGroup();
    for (ChipLabel* chip : std::as_const(m_chips))
        chip->setHighlighted(highlight == chip->spec().title);
    update();
}

void BarView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    publishFrames();
}

void BarView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    Look::paintPlate(painter, rect());
    if (const auto markerX = m_drag.markerX()) {
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(QRectF(*markerX - 1.5, 6, 3, 28), 1.5, 1.5);
    }
}

void BarView::contextMenuEvent(QContextMenuEvent* event)
{
    Q_EMIT menuRequested(event->globalPos());
}

void BarView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!event->mimeData()->hasUrls())
        return;
    event->acceptProposedAction();
    if (m_handlers.fileHover)
        m_handlers.fileHover(event->position());
}

void BarView::dragMoveEvent(QDragMoveEvent* event)
{
    if (!event->mimeData()->hasUrls())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (m_handlers.fileHover)
        m_handlers.fileHover(event->position());
}

void BarView::dragLeaveEvent(QDragLeaveEvent*)
{
    if (m_handlers.fileHoverEnd)
        m_handlers.fileHoverEnd();
}

void BarView::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (m_handlers.fileDrop)
        m_handlers.fileDrop(urls, event->position());
}
