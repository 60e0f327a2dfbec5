#include "ChipPreview.h"

#include "bar/ChipLabel.h"
#include "bar/Look.h"
#include "bar/SymbolNames.h"

#include <QHBoxLayout>
#include <QPainter>

ChipPreview::ChipPreview(QWidget* parent)
    : QWidget(parent)
    , m_row(new QHBoxLayout(this))
{
    m_row->setContentsMargins(10, 8, 10, 8);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

void ChipPreview::setSpec(const ButtonSpec& spec)
{
    // A chip draws the button it was made with for good, so a change means a new chip.
    delete m_chip;
    std::optional<QString> chevron;
    if (spec.isGroup() || spec.kind() == ActionKind::Folder)
        chevron = SymbolNames::chevron(false);
    m_chip = new ChipLabel(spec, chevron, false, this);
    m_chip->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_row->addWidget(m_chip);
}

void ChipPreview::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // The bar's plate is mostly-opaque black over the desktop; solid near-black here reads the same
    // whatever the window's own background.
    Look::paintPlate(painter, rect(), QColor(28, 28, 30));
}
