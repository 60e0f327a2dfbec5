#pragma once

#include <QString>

class Beeper;
class Clipboard;
class InputSynthesis;
class Scheduler;

/// Presses key combinations and pastes text into the application in front.
class Keys
{
public:
    Keys(InputSynthesis& input, Clipboard& clipboard, Beeper& beeper, Scheduler& scheduler);

    /// Presses a combination such as "ctrl+shift+t"; logs "Bad key combo: …" and beeps for invalid text.
    void press(const QString& text);
    /// Types the text by way of the clipboard: half a second later, if the clipboard still holds that
    /// text, the user's plain text is put back (an image on the clipboard is not kept).
    void paste(const QString& text);
    /// The keystroke that pastes in the application in front: terminals take "ctrl+shift+v".
    void setPasteKeys(const QString& combo) { m_pasteKeys = combo; }

    /// How long the pasted text stays on the clipboard before the user's own text comes back.
    static constexpr int restoreDelayMs = 500;

private:
    InputSynthesis& m_input;
    Clipboard& m_clipboard;
    Beeper& m_beeper;
    Scheduler& m_scheduler;
    QString m_pasteKeys = QStringLiteral("ctrl+v");
};
