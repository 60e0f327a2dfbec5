#include "X11InputSynthesis.h"

#include "platform/x11/KeySymbols.h"
#include "platform/x11/XcbHandles.h"

#include <QGuiApplication>
#include <QList>
#include <QTimer>
#include <X11/keysym.h>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

namespace {

/// Where a keysym sits in the current layout.
struct KeyPosition
{
    xcb_keycode_t keycode = 0;
    bool needsShift = false;
    bool needsLevel3 = false;
};

std::optional<KeyPosition> find(xcb_connection_t* connection, xcb_key_symbols_t* symbols, xcb_keysym_t keysym)
{
    const xcb_setup_t* setup = xcb_get_setup(connection);
    // Columns of the core mapping: level 1, level 2 (Shift), level 3 (AltGr), level 4 (AltGr+Shift).
    for (const int column : {0, 1, 4, 5}) {
        for (int keycode = setup->min_keycode; keycode <= setup->max_keycode; ++keycode) {
            if (xcb_key_symbols_get_keysym(symbols, static_cast<xcb_keycode_t>(keycode), column) == keysym)
                return KeyPosition{static_cast<xcb_keycode_t>(keycode), (column & 1) != 0, column >= 4};
        }
    }
    return std::nullopt;
}

/// A keycode with no symbols at all, to lend to a keysym the layout lacks.
std::optional<xcb_keycode_t> spareKeycode(xcb_connection_t* connection, xcb_key_symbols_t* symbols)
{
    const xcb_setup_t* setup = xcb_get_setup(connection);
    for (int keycode = setup->max_keycode; keycode >= setup->min_keycode; --keycode) {
        bool empty = true;
        for (int column = 0; column < 8 && empty; ++column)
            empty = xcb_key_symbols_get_keysym(symbols, static_cast<xcb_keycode_t>(keycode), column) ==
                    XCB_NO_SYMBOL;
        if (empty)
            return static_cast<xcb_keycode_t>(keycode);
    }
    return std::nullopt;
}

void setMapping(xcb_connection_t* connection, xcb_keycode_t keycode, xcb_keysym_t keysym)
{
    const xcb_keysym_t both[] = {keysym, keysym};
    xcb_change_keyboard_mapping(connection, 1, keycode, 2, both);
}

bool isDown(const xcb_query_keymap_reply_t* keymap, xcb_keycode_t keycode)
{
    return keymap && (keymap->keys[keycode / 8] & (1 << (keycode % 8))) != 0;
}

void fake(xcb_connection_t* connection, uint8_t type, xcb_keycode_t keycode, xcb_window_t root)
{
    xcb_test_fake_input(connection, type, keycode, XCB_CURRENT_TIME, root, 0, 0, 0);
}

} // namespace

bool X11InputSynthesis::isTrusted()
{
    xcb_connection_t* connection = qtXcbConnection();
    if (!connection)
        return false;
    const xcb_query_extension_reply_t* xtest = xcb_get_extension_data(connection, &xcb_test_id);
    return xtest && xtest->present;
}

FacilityReach X11InputSynthesis::reach()
{
    if (!isTrusted())
        return {FacilityReach::Scope::Unavailable, QStringLiteral("no XTest on this display")};
    return {FacilityReach::Scope::X11, {}};
}

void X11InputSynthesis::post(const KeyStroke& combo)
{
    xcb_connection_t* connection = qtXcbConnection();
    const auto keysym = KeySymbols::forKeyCode(combo.keyCode);
    if (!connection || !keysym)
        return;
    // Allocated afresh for every press, so that a layout switched a moment ago is the one used.
    KeySymbolTable symbols(xcb_key_symbols_alloc(connection), &xcb_key_symbols_free);
    if (!symbols)
        return;

    std::optional<xcb_keycode_t> borrowed;
    auto position = find(connection, symbols.get(), *keysym);
    if (!position) {
        borrowed = spareKeycode(connection, symbols.get());
        if (!borrowed)
            return;
        setMapping(connection, *borrowed, *keysym);
        position = KeyPosition{*borrowed, false, false};
    }

    QList<xcb_keysym_t> modifiers;
    if (combo.flags & KeyStroke::ControlFlag)
        modifiers.append(XK_Control_L);
    if (combo.flags & KeyStroke::AltFlag)
        modifiers.append(XK_Alt_L);
    if ((combo.flags & KeyStroke::ShiftFlag) || position->needsShift)
        modifiers.append(XK_Shift_L);
    if (combo.flags & KeyStroke::SuperFlag)
        modifiers.append(XK_Super_L);
    if (position->needsLevel3)
        modifiers.append(XK_ISO_Level3_Shift);

    // Modifiers the user already holds are neither pressed again nor released under their fingers.
    const auto keymap = adoptReply(xcb_query_keymap_reply(connection, xcb_query_keymap(connection), nullptr));
    QList<xcb_keycode_t> pressed;
    for (const xcb_keysym_t modifier : modifiers) {
        const auto at = find(connection, symbols.get(), modifier);
        if (at && !pressed.contains(at->keycode) && !isDown(keymap.get(), at->keycode))
            pressed.append(at->keycode);
    }

    const xcb_window_t root = rootWindow(connection);
    for (const xcb_keycode_t keycode : pressed)
        fake(connection, XCB_KEY_PRESS, keycode, root);
    fake(connection, XCB_KEY_PRESS, position->keycode, root);
    fake(connection, XCB_KEY_RELEASE, position->keycode, root);
    for (auto it = pressed.crbegin(); it != pressed.crend(); ++it)
        fake(connection, XCB_KEY_RELEASE, *it, root);
    xcb_flush(connection);

    if (borrowed) {
        // The receiving client translates the keycode when the event arrives; give it time to do so
        // with the lent mapping before the keycode is emptied again.
        const xcb_keycode_t keycode = *borrowed;
        QTimer::singleShot(100, qGuiApp, [keycode] {
            if (xcb_connection_t* later = qtXcbConnection()) {
                setMapping(later, keycode, XCB_NO_SYMBOL);
                xcb_flush(later);
            }
        });
    }
}
