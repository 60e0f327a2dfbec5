#pragma once

#include <QString>
#include <functional>
#include <optional>

class HotkeyGrabber;

/// Keeps the global hot key in line with the configuration's "hotkey" (default "ctrl+opt+b"). It is
/// taken again only when the text changes, and an invalid text is remembered, logged once as
/// "Bad hotkey: …", and not tried again until the configuration changes. A combination another program
/// holds is reported once, with takenMessage().
class Hotkey
{
public:
    Hotkey(HotkeyGrabber& grabber, std::function<void()> toggle);

    void update(const std::optional<QString>& configured);
    /// The text last applied, valid or not; empty before the first update.
    const QString& registered() const { return m_registered; }

    static QString defaultCombination() { return QStringLiteral("ctrl+opt+b"); }
    /// The line for a combination another program holds.
    static QString takenMessage(const QString& text);

private:
    HotkeyGrabber& m_grabber;
    std::function<void()> m_toggle;
    QString m_registered;
    bool m_applied = false;
};
