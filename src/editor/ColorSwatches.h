#pragma once

#include <QString>
#include <QWidget>
#include <optional>

class QButtonGroup;
class SwatchButton;

/// The chip colours as a row of round swatches, led by "Default": the colour the button's kind gets
/// when it names none.
class ColorSwatches : public QWidget
{
    Q_OBJECT

public:
    explicit ColorSwatches(QWidget* parent = nullptr);

    /// Nothing selects Default. A name outside the seven selects no swatch and is kept until one is chosen.
    void setColor(const std::optional<QString>& name);
    std::optional<QString> color() const;
    /// The colour name Default stands for, which follows the button's kind.
    void setDefaultColor(const QString& name);

    /// The colour names offered besides Default, in the order shown.
    static const QStringList& names();

Q_SIGNALS:
    void changed();

private:
    QButtonGroup* m_group;
    SwatchButton* m_default;
    std::optional<QString> m_kept;
};
