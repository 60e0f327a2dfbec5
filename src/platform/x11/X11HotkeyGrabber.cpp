#include "X11HotkeyGrabber.h"

#include "platform/x11/KeySymbols.h"
#include "platform/x11/XcbHandles.h"

#include <QCoreApplication>
#include <QTimer>
#include <X11/keysym.h>
#include <xcb/xcb_keysyms.h>

namespace {

/// The modifier bit (ShiftMask … Mod5Mask) that a key with this keysym sets, or 0 when none does.
quint16 modifierBitOf(xcb_connection_t* connection, xcb_key_symbols_t* symbols, xcb_keysym_t keysym)
{
    const auto keycodes = adoptReply(xcb_key_symbols_get_keycode(symbols, keysym));
    if (!keycodes)
        return 0;
    const auto mapping =
        adoptReply(xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr));
    if (!mapping)
        return 0;
    const xcb_keycode_t* table = xcb_get_modifier_mapping_keycodes(mapping.get());
    const int perModifier = mapping->keycodes_per_modifier;
    for (int modifier = 0; modifier < 8; ++modifier) {
        for (int i = 0; i < perModifier; ++i) {
            const xcb_keycode_t keycode = table[modifier * perModifier + i];
            for (const xcb_keycode_t* k = keycodes.get(); keycode && *k != XCB_NO_SYMBOL; ++k) {
                if (*k == keycode)
                    return static_cast<quint16>(1 << modifier);
            }
        }
    }
    return 0;
}

quint16 orDefault(quint16 bit, quint16 fallback)
{
    return bit ? bit : fallback;
}

} // namespace

X11HotkeyGrabber::X11HotkeyGrabber() = default;

X11HotkeyGrabber::~X11HotkeyGrabber()
{
    if (m_filterInstalled && QCoreApplication::instance())
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void X11HotkeyGrabber::setHandler(std::function<void()> pressed)
{
    m_pressed = std::move(pressed);
}

FacilityReach X11HotkeyGrabber::reach()
{
    if (!qtXcbConnection())
        return {FacilityReach::Scope::Unavailable, QStringLiteral("no X display")};
    return {FacilityReach::Scope::X11, {}};
}

bool X11HotkeyGrabber::grab(const KeyStroke& combo)
{
    release();
    m_combo = combo;
    if (!m_filterInstalled && QCoreApplication::instance() && qtXcbConnection()) {
        QCoreApplication::instance()->installNativeEventFilter(this);
        m_filterInstalled = true;
    }
    return apply();
}

void X11HotkeyGrabber::release()
{
    ungrabAll();
    m_combo.reset();
}

void X11HotkeyGrabber::ungrabAll()
{
    xcb_connection_t* connection = qtXcbConnection();
    if (!connection || m_keycodes.isEmpty())
        return;
    const xcb_window_t root = rootWindow(connection);
    for (const quint8 keycode : std::as_const(m_keycodes))
        xcb_ungrab_key(connection, keycode, root, XCB_MOD_MASK_ANY);
    xcb_flush(connection);
    m_keycodes.clear();
}

bool X11HotkeyGrabber::apply()
{
    xcb_connection_t* connection = qtXcbConnection();
    const auto keysym = m_combo ? KeySymbols::forKeyCode(m_combo->keyCode) : std::nullopt;
    if (!connection || !keysym)
        return false;
    KeySymbolTable symbols(xcb_key_symbols_alloc(connection), &xcb_key_symbols_free);
    if (!symbols)
        return false;

    // Alt and Super sit on whichever ModN the layout puts them; Num Lock and Scroll Lock too.
    quint16 modifiers = 0;
    if (m_combo->flags & KeyStroke::ShiftFlag)
        modifiers |= XCB_MOD_MASK_SHIFT;
    if (m_combo->flags & KeyStroke::ControlFlag)
        modifiers |= XCB_MOD_MASK_CONTROL;
    if (m_combo->flags & KeyStroke::AltFlag)
        modifiers |= orDefault(modifierBitOf(connection, symbols.get(), XK_Alt_L), XCB_MOD_MASK_1);
    if (m_combo->flags & KeyStroke::SuperFlag)
        modifiers |= orDefault(modifierBitOf(connection, symbols.get(), XK_Super_L), XCB_MOD_MASK_4);
    const quint16 numLock = modifierBitOf(connection, symbols.get(), XK_Num_Lock);
    const quint16 scrollLock = modifierBitOf(connection, symbols.get(), XK_Scroll_Lock);
    m_modifiers = modifiers;
    m_lockMask = XCB_MOD_MASK_LOCK | numLock | scrollLock;

    QList<quint16> variants = {0};
    for (const quint16 lock : {quint16(XCB_MOD_MASK_LOCK), numLock, scrollLock}) {
        if (!lock || (modifiers & lock))
            continue;
        const qsizetype count = variants.size();
        for (qsizetype i = 0; i < count; ++i)
            variants.append(variants.at(i) | lock);
    }

    const auto keycodes = adoptReply(xcb_key_symbols_get_keycode(symbols.get(), *keysym));
    const xcb_window_t root = rootWindow(connection);
    bool refused = false;
    for (const xcb_keycode_t* k = keycodes.get(); k && *k != XCB_NO_SYMBOL; ++k) {
        m_keycodes.append(*k);
        for (const quint16 variant : std::as_const(variants)) {
            const xcb_void_cookie_t cookie = xcb_grab_key_checked(
                connection, 1, root, modifiers | variant, *k, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
            if (const auto error = adoptReply(xcb_request_check(connection, cookie)))
                refused = true; // BadAccess: another client holds this variant
        }
    }
    xcb_flush(connection);
    return !m_keycodes.isEmpty() && !refused;
}

bool X11HotkeyGrabber::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t" || !m_combo)
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const quint8 type = event->response_type & 0x7f;
    if (type == XCB_MAPPING_NOTIFY) {
        // Keycodes and modifier bits may have moved with the new layout.
        QTimer::singleShot(0, this, [this] {
            if (m_combo) {
                ungrabAll();
                apply();
            }
        });
        return false;
    }
    if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE)
        return false;
    const auto* key = reinterpret_cast<const xcb_key_press_event_t*>(event);
    if (!m_keycodes.contains(key->detail) || (key->state & ~m_lockMask & 0xff) != m_modifiers)
        return false;
    if (type == XCB_KEY_RELEASE) {
        m_lastReleaseTime = key->time;
        return true;
    }
    // Auto-repeat sends a release and a press with the same time stamp; only a real press counts.
    if (key->time == m_lastReleaseTime)
        return true;
    if (m_pressed)
        QTimer::singleShot(0, this, [this] {
            if (m_pressed)
                m_pressed();
        });
    return true;
}
