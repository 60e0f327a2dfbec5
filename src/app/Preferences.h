#pragma once

#include <QSettings>
#include <QtGlobal>
#include <optional>

/// The few settings outside buttons.json, in $XDG_CONFIG_HOME/vantril/vantril.ini.
class Preferences
{
public:
    Preferences();

    /// Where the bar was left: the screen's number and the bar's place on it as fractions.
    struct BarPosition
    {
        quint32 display = 0;
        double ox = 0;
        double oy = 0;
    };
    /// Nothing when absent or when "ox" or "oy" is missing or not a finite number; a bad "display" reads
    /// as 0.
    std::optional<BarPosition> barPosition() const;
    void setBarPosition(const BarPosition& position);

    bool autoHide() const;
    void setAutoHide(bool on);
    /// Absent reads as true.
    bool showStatusItem() const;
    void setShowStatusItem(bool on);

private:
    mutable QSettings m_settings;
};
