#include "KeyField.h"

#include <QHash>
#include <QKeyEvent>

namespace {

QHash<int, QString> buildNames()
{
    QHash<int, QString> names;
    for (int key = Qt::Key_A; key <= Qt::Key_Z; ++key)
        names.insert(key, QString(QChar(u'a' + (key - Qt::Key_A))));
    for (int key = Qt::Key_0; key <= Qt::Key_9; ++key)
        names.insert(key, QString(QChar(u'0' + (key - Qt::Key_0))));
    for (int n = 1; n <= 12; ++n)
        names.insert(Qt::Key_F1 + n - 1, QStringLiteral("f%1").arg(n));

    // With Shift held, Qt reports the character the key types rather than the key; the combination wants
    // the key, so the shifted characters of a US layout map back to the key that types them.
    const std::initializer_list<std::pair<int, const char16_t*>> table = {
        {Qt::Key_Equal, u"="},
        {Qt::Key_Plus, u"="},
        {Qt::Key_Minus, u"-"},
        {Qt::Key_Underscore, u"-"},
        {Qt::Key_BracketRight, u"]"},
        {Qt::Key_BraceRight, u"]"},
        {Qt::Key_BracketLeft, u"["},
        {Qt::Key_BraceLeft, u"["},
        {Qt::Key_Apostrophe, u"'"},
        {Qt::Key_QuoteDbl, u"'"},
        {Qt::Key_Semicolon, u";"},
        {Qt::Key_Colon, u";"},
        {Qt::Key_Backslash, u"\\"},
        {Qt::Key_Bar, u"\\"},
        {Qt::Key_Comma, u","},
        {Qt::Key_Less, u","},
        {Qt::Key_Period, u"."},
        {Qt::Key_Greater, u"."},
        {Qt::Key_Slash, u"/"},
        {Qt::Key_Question, u"/"},
        {Qt::Key_QuoteLeft, u"`"},
        {Qt::Key_AsciiTilde, u"`"},
        {Qt::Key_Exclam, u"1"},
        {Qt::Key_At, u"2"},
        {Qt::Key_NumberSign, u"3"},
        {Qt::Key_Dollar, u"4"},
        {Qt::Key_Percent, u"5"},
        {Qt::Key_AsciiCircum, u"6"},
        {Qt::Key_Ampersand, u"7"},
        {Qt::Key_Asterisk, u"8"},
        {Qt::Key_ParenLeft, u"9"},
        {Qt::Key_ParenRight, u"0"},
        {Qt::Key_Return, u"return"},
        {Qt::Key_Enter, u"return"},
        {Qt::Key_Tab, u"tab"},
        {Qt::Key_Backtab, u"tab"},
        {Qt::Key_Space, u"space"},
        {Qt::Key_Backspace, u"backspace"},
        {Qt::Key_Delete, u"forwarddelete"},
        {Qt::Key_Escape, u"escape"},
        {Qt::Key_Home, u"home"},
        {Qt::Key_End, u"end"},
        {Qt::Key_PageUp, u"pageup"},
        {Qt::Key_PageDown, u"pagedown"},
        {Qt::Key_Left, u"left"},
        {Qt::Key_Right, u"right"},
        {Qt::Key_Up, u"up"},
        {Qt::Key_Down, u"down"},
    };
    for (const auto& [key, name] : table)
        names.insert(key, QString::fromUtf16(name));
    return names;
}

/// Keys that neither type nor edit in a line, so even without a modifier a press can only mean the key.
bool recordsWithoutModifier(int key)
{
    return (key >= Qt::Key_F1 && key <= Qt::Key_F12) || key == Qt::Key_Return || key == Qt::Key_Enter ||
           key == Qt::Key_PageUp || key == Qt::Key_PageDown || key == Qt::Key_Up || key == Qt::Key_Down;
}

} // namespace

KeyField::KeyField(QWidget* parent)
    : QLineEdit(parent)
{
    setPlaceholderText(tr("Press the keys, or type them like ctrl+shift+t"));
}

QString KeyField::keyName(int key)
{
    static const QHash<int, QString> names = buildNames();
    return names.value(key);
}

std::optional<QString> KeyField::combination(const QKeyEvent& event)
{
    const QString name = keyName(event.key());
    if (name.isEmpty())
        return std::nullopt;
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    const bool chord = modifiers & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (!chord && !recordsWithoutModifier(event.key()))
        return std::nullopt;

    QStringList parts;
    if (modifiers & Qt::ControlModifier)
        parts << QStringLiteral("ctrl");
    if (modifiers & Qt::AltModifier)
        parts << QStringLiteral("alt");
    // Shift+Tab arrives as Backtab, sometimes without the Shift flag it implies.
    if ((modifiers & Qt::ShiftModifier) || event.key() == Qt::Key_Backtab)
        parts << QStringLiteral("shift");
    if (modifiers & Qt::MetaModifier)
        parts << QStringLiteral("super");
    parts << name;
    return parts.join(QLatin1Char('+'));
}

bool KeyField::event(QEvent* event)
{
    // Handled here rather than in keyPressEvent: window shortcuts and focus moves (Ctrl+Tab, say) would
    // otherwise take the press before the field sees it.
    if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (const auto text = combination(*key)) {
            if (event->type() == QEvent::KeyPress) {
                setText(*text);
                Q_EMIT textEdited(*text);
            }
            event->accept();
            return true;
        }
    }
    return QLineEdit::event(event);
}
