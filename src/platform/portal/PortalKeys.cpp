#include "PortalKeys.h"

#include "platform/x11/KeySymbols.h"

#include <QHash>
#include <X11/keysym.h>

namespace {

struct Modifier
{
    quint64 flag;
    quint32 keysym;
    const char* triggerName;
};

// Pressed in this order, which is also the order the X11 path presses them in.
constexpr Modifier modifiers[] = {
    {KeyStroke::ControlFlag, XK_Control_L, "CTRL"},
    {KeyStroke::AltFlag, XK_Alt_L, "ALT"},
    {KeyStroke::ShiftFlag, XK_Shift_L, "SHIFT"},
    {KeyStroke::SuperFlag, XK_Super_L, "LOGO"},
};

/// The keysym's name in xkbcommon's list, which is what triggers are written with.
QString keysymName(quint32 keysym)
{
    if ((keysym >= XK_a && keysym <= XK_z) || (keysym >= XK_0 && keysym <= XK_9))
        return QString(QChar(static_cast<char16_t>(keysym)));
    static const QHash<quint32, QString> names = {
        {XK_equal, QStringLiteral("equal")},
        {XK_minus, QStringLiteral("minus")},
        {XK_bracketright, QStringLiteral("bracketright")},
        {XK_bracketleft, QStringLiteral("bracketleft")},
        {XK_apostrophe, QStringLiteral("apostrophe")},
        {XK_semicolon, QStringLiteral("semicolon")},
        {XK_backslash, QStringLiteral("backslash")},
        {XK_comma, QStringLiteral("comma")},
        {XK_slash, QStringLiteral("slash")},
        {XK_period, QStringLiteral("period")},
        {XK_grave, QStringLiteral("grave")},
        {XK_Return, QStringLiteral("Return")},
        {XK_Tab, QStringLiteral("Tab")},
        {XK_space, QStringLiteral("space")},
        {XK_BackSpace, QStringLiteral("BackSpace")},
        {XK_Escape, QStringLiteral("Escape")},
        {XK_Delete, QStringLiteral("Delete")},
        {XK_Home, QStringLiteral("Home")},
        {XK_End, QStringLiteral("End")},
        {XK_Prior, QStringLiteral("Page_Up")},
        {XK_Next, QStringLiteral("Page_Down")},
        {XK_Left, QStringLiteral("Left")},
        {XK_Right, QStringLiteral("Right")},
        {XK_Down, QStringLiteral("Down")},
        {XK_Up, QStringLiteral("Up")},
    };
    if (keysym >= XK_F1 && keysym <= XK_F12)
        return QStringLiteral("F%1").arg(keysym - XK_F1 + 1);
    return names.value(keysym);
}

} // namespace

namespace PortalKeys {

QList<KeyEvent> events(const KeyStroke& combo)
{
    const auto key = KeySymbols::forKeyCode(combo.keyCode);
    if (!key)
        return {};
    QList<quint32> held;
    for (const Modifier& modifier : modifiers) {
        if (combo.flags & modifier.flag)
            held.append(modifier.keysym);
    }
    QList<KeyEvent> sequence;
    for (const quint32 keysym : held)
        sequence.append({keysym, true});
    sequence.append({*key, true});
    sequence.append({*key, false});
    for (auto it = held.crbegin(); it != held.crend(); ++it)
        sequence.append({*it, false});
    return sequence;
}

QString trigger(const KeyStroke& combo)
{
    const auto key = KeySymbols::forKeyCode(combo.keyCode);
    const QString name = key ? keysymName(*key) : QString();
    if (name.isEmpty())
        return {};
    QStringList parts;
    for (const Modifier& modifier : modifiers) {
        if (combo.flags & modifier.flag)
            parts.append(QLatin1String(modifier.triggerName));
    }
    parts.append(name);
    return parts.join(QLatin1Char('+'));
}

} // namespace PortalKeys
