#include "ColorSwatches.h"

#include "bar/Look.h"
#include "config/BarConfig.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QPainter>

namespace {

constexpr int swatchSize = 24;
constexpr qreal dotDiameter = 16;

} // namespace

/// One round colour; the Default swatch also carries a small mark so it reads as "whatever the kind uses".
class SwatchButton : public QAbstractButton
{
public:
    SwatchButton(QColor color, bool marked, QWidget* parent)
        : QAbstractButton(parent)
        , m_color(color)
        , m_marked(marked)
    {
        setCheckable(true);
        setFocusPolicy(Qt::TabFocus);
        setCursor(Qt::PointingHandCursor);
        setAttribute(Qt::WA_Hover);
        setFixedSize(swatchSize, swatchSize);
    }

    void setColor(QColor color)
    {
        m_color = color;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPointF centre = QRectF(rect()).center();
        const qreal radius = dotDiameter / 2;

        if (isChecked() || hasFocus() || underMouse()) {
            QColor ring = palette().color(QPalette::Highlight);
            if (!isChecked())
                ring.setAlphaF(hasFocus() ? 0.7f : 0.35f);
            painter.setPen(QPen(ring, 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(centre, radius + 3, radius + 3);
        }

        // A hairline edge keeps the white swatch visible on a light window.
        painter.setPen(QPen(m_color.darker(150), 1));
        painter.setBrush(m_color);
        painter.drawEllipse(centre, radius - 0.5, radius - 0.5);

        if (m_marked) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(QColor(0, 0, 0, 150));
            painter.drawEllipse(centre, 3, 3);
        }
    }

private:
    QColor m_color;
    bool m_marked;
};

ColorSwatches::ColorSwatches(QWidget* parent)
    : QWidget(parent)
    , m_group(new QButtonGroup(this))
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);

    m_default = new SwatchButton(Look::chipColor(ChipColor::White), true, this);
    m_default->setObjectName(QStringLiteral("swatch-default"));
    m_group->addButton(m_default);
    row->addWidget(m_default);
    row->addSpacing(8);

    for (const QString& name : names()) {
        auto* swatch = new SwatchButton(Look::chipColor(ButtonSpec::colorNamed(name)), false, this);
        swatch->setObjectName(QStringLiteral("swatch-") + name);
        swatch->setToolTip(name.at(0).toUpper() + name.mid(1));
        swatch->setProperty("colorName", name);
        m_group->addButton(swatch);
        row->addWidget(swatch);
    }
    row->addStretch(1);

    connect(m_group, &QButtonGroup::buttonClicked, this, [this] {
        m_kept.reset();
        Q_EMIT changed();
    });
    setColor(std::nullopt);
}

const QStringList& ColorSwatches::names()
{
    static const QStringList list = {
        QStringLiteral("orange"), QStringLiteral("green"), QStringLiteral("purple"), QStringLiteral("red"),
        QStringLiteral("yellow"), QStringLiteral("white"), QStringLiteral("cyan"),
    };
    return list;
}

void ColorSwatches::setColor(const std::optional<QString>& name)
{
    m_kept.reset();
    QAbstractButton* match = nullptr;
    if (!name) {
        match = m_default;
    } else {
        for (QAbstractButton* button : m_group->buttons()) {
            if (button->property("colorName").toString() == *name)
                match = button;
        }
    }
    if (match) {
        match->setChecked(true);
        return;
    }
    // An exclusive group refuses to uncheck its last button directly.
    m_group->setExclusive(false);
    for (QAbstractButton* button : m_group->buttons())
        button->setChecked(false);
    m_group->setExclusive(true);
    m_kept = name;
}

std::optional<QString> ColorSwatches::color() const
{
    if (m_kept)
        return m_kept;
    const QAbstractButton* checked = m_group->checkedButton();
    if (!checked || checked == m_default)
        return std::nullopt;
    return checked->property("colorName").toString();
}

void ColorSwatches::setDefaultColor(const QString& name)
{
    m_default->setColor(Look::chipColor(ButtonSpec::colorNamed(name)));
    m_default->setToolTip(tr("Default (%1)").arg(name));
}
