#include "Keys.h"

#include "actions/KeyCombo.h"
#include "platform/Beeper.h"
#include "platform/Clipboard.h"
#include "platform/InputSynthesis.h"
#include "platform/Log.h"
#include "platform/Scheduler.h"

Keys::Keys(InputSynthesis& input, Clipboard& clipboard, Beeper& beeper, Scheduler& scheduler)
    : m_input(input)
    , m_clipboard(clipboard)
    , m_beeper(beeper)
    , m_scheduler(scheduler)
{}

void Keys::press(const QString& text)
{
    const auto combo = KeyCombo::parse(text);
    if (!combo) {
        Log::line(QStringLiteral("Bad key combo: ") + text);
        m_beeper.beep();
        return;
    }
    if (!m_input.isTrusted()) {
        m_beeper.beep();
        return;
    }
    m_input.post(*combo);
}

void Keys::paste(const QString& text)
{
    if (!m_input.isTrusted()) {
        m_beeper.beep();
        return;
    }
    const std::optional<QString> saved = m_clipboard.text();
    m_clipboard.clear();
    m_clipboard.setText(text);
    press(m_pasteKeys);
    // Only while the clipboard still holds the pasted text is it ours to put back: whatever the user
    // copied meanwhile stays. A second paste within the delay saved this paste's text and so restores it
    // last, which is accepted.
    Clipboard& clipboard = m_clipboard;
    m_scheduler.after(restoreDelayMs, [&clipboard, saved, text] {
        if (clipboard.text() != text)
            return;
        clipboard.clear();
        if (saved)
            clipboard.setText(*saved);
    });
}
