#include "SymbolPalette.h"

#include "bar/SymbolNames.h"
#include "bar/SymbolView.h"

#include <QGridLayout>
#include <QIcon>
#include <QSet>
#include <QToolButton>

namespace {

constexpr int columns = 14;
constexpr int iconSize = 16;

} // namespace

QStringList SymbolPalette::drawableNames()
{
    // Several names share an icon (doc, doc.text, doc.plaintext); offering the same picture twice would
    // only make the grid longer.
    QStringList names;
    QSet<QString> seen;
    for (const QString& symbol : SymbolNames::names()) {
        const QString icon = SymbolView::source(symbol);
        if (icon.isEmpty() || seen.contains(icon))
            continue;
        if (SymbolView::icon(symbol, Qt::black, iconSize, 1).isNull())
            continue;
        seen.insert(icon);
        names << symbol;
    }
    return names;
}

SymbolPalette::SymbolPalette(QWidget* parent)
    : QWidget(parent)
{
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(2);
    const QColor ink = palette().color(QPalette::WindowText);
    const QStringList names = drawableNames();
    for (int i = 0; i < names.size(); ++i) {
        const QString& name = names.at(i);
        auto* button = new QToolButton(this);
        button->setAutoRaise(true);
        button->setCheckable(true);
        button->setFocusPolicy(Qt::NoFocus);
        button->setIconSize(QSize(iconSize, iconSize));
        button->setIcon(QIcon(SymbolView::icon(name, ink, iconSize, devicePixelRatioF())));
        button->setToolTip(name);
        button->setObjectName(QStringLiteral("symbol-") + name);
        button->setProperty("symbolName", name);
        connect(button, &QToolButton::clicked, this, [this, name] {
            setCurrent(name);
            Q_EMIT picked(name);
        });
        grid->addWidget(button, i / columns, i % columns);
        m_buttons << button;
    }
    grid->setColumnStretch(columns, 1);
}

void SymbolPalette::setCurrent(const QString& name)
{
    for (QToolButton* button : m_buttons)
        button->setChecked(button->property("symbolName").toString() == name);
}
