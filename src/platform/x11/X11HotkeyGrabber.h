#pragma once

#include "platform/HotkeyGrabber.h"

#include <QAbstractNativeEventFilter>
#include <QList>
#include <QObject>
#include <optional>

/// A passive key grab on the root window, once for every keycode of the key and every state of the
/// lock keys, so that the hot key works with Num Lock or Caps Lock on. Grabbed again after a keyboard
/// mapping change, since keycodes and modifier bits move with the layout.
class X11HotkeyGrabber final : public QObject, public HotkeyGrabber, public QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    X11HotkeyGrabber();
    ~X11HotkeyGrabber() override;

    bool grab(const KeyStroke& combo) override;
    void release() override;
    void setHandler(std::function<void()> pressed) override;
    FacilityReach reach() override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    bool apply();
    void ungrabAll();

    std::function<void()> m_pressed;
    std::optional<KeyStroke> m_combo;
    QList<quint8> m_keycodes;
    quint16 m_modifiers = 0;
    quint16 m_lockMask = 0;
    quint32 m_lastReleaseTime = 0;
    bool m_filterInstalled = false;
};
