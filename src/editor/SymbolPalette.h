#pragma once

#include <QStringList>
#include <QWidget>

class QToolButton;

/// A grid of the symbol names the icon theme can draw; clicking one picks its name.
class SymbolPalette : public QWidget
{
    Q_OBJECT

public:
    explicit SymbolPalette(QWidget* parent = nullptr);

    /// Marks the button of this name, if the palette has one.
    void setCurrent(const QString& name);

    /// The names on offer: one per distinct theme icon, in the order shown.
    static QStringList drawableNames();

Q_SIGNALS:
    void picked(const QString& name);

private:
    QList<QToolButton*> m_buttons;
};
