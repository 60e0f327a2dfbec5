#include "Hotkey.h"

#include "actions/KeyCombo.h"
#include "platform/HotkeyGrabber.h"
#include "platform/Log.h"

#include <QRegularExpression>

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
    // X11, unlike the hot-key services of other systems, says when another program (often the window
    // manager, such as icewm, whose own keys include Ctrl+Alt+B) holds the combination; the user is told
    // once per text, with the way out.
    if (!m_grabber.grab(*combo))
        Log::line(takenMessage(text));
}

QString Hotkey::takenMessage(const QString& text)
{
    // In the words of a Linux keyboard, whichever synonyms the configuration used.
    QString keys = text.toLower();
    keys.replace(QRegularExpression(QStringLiteral("\\b(opt|option)\\b")), QStringLiteral("alt"));
    keys.replace(QRegularExpression(QStringLiteral("\\b(cmd|command)\\b")), QStringLiteral("super"));
    return QStringLiteral("Hot key %1 is taken by another program; bind `vantril --toggle` in your desktop's "
                          "keyboard settings instead")
        .arg(keys);
}
