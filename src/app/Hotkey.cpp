#include "Hotkey.h"

#include "actions/KeyCombo.h"
#include "platform/HotkeyGrabber.h"
#include "platform/Log.h"

Hotkey::Hotkey(HotkeyGrabber& grabber, std::function<void()> toggle)
    : m_grabber(grabber)
    , m_toggle(std::move(toggle))
{}

void Hotkey::update(const std::optional<QString>& configured)
{
    // An empty text in the file is a text like any other: it is used as it is, and is invalid.
    const QString text = configured.value_or(defaultCombination());
    if (m_applied && text == m_registered)
        return;
    m_grabber.release();
    m_registered = text;
    m_applied = true;
    const auto combo = KeyCombo::parse(text);
    if (!combo) {
        Log::line(QStringLiteral("Bad hotkey: ") + text);
        return;
    }
    m_grabber.setHandler(m_toggle);
    // A combination another program holds simply never fires, as with any desktop's shortcuts.
    m_grabber.grab(*combo);
}
