#pragma once

#include "platform/HotkeyGrabber.h"
#include "platform/portal/PortalStatus.h"

#include <QDBusMessage>
#include <QObject>
#include <optional>

/// The hot key in a Wayland session, where an X11 grab sees keys only while an X11 window has the focus:
/// bound through the global-shortcuts portal where the desktop offers one, with the combination as the
/// preferred trigger. The desktop may confirm it, let the user choose another, or refuse; until it has
/// bound one, and for good when it cannot, `fallback` (the X11 grab) holds the combination for X11 windows.
/// Outside a Wayland session it is `fallback` alone.
class PortalHotkeyGrabber final : public QObject, public HotkeyGrabber
{
    Q_OBJECT

public:
    PortalHotkeyGrabber(HotkeyGrabber& fallback, bool waylandSession);
    ~PortalHotkeyGrabber() override;

    bool grab(const KeyStroke& combo) override;
    void release() override;
    void setHandler(std::function<void()> pressed) override;
    /// Through the portal once the desktop serves it, else as far as the X11 way behind it reaches.
    FacilityReach reach() override;

    /// Whether the portal holds the hot key, and what the desktop assigned to it.
    const PortalStatus& status() const { return m_status; }

    /// The shortcut's id in the binding, and its description in the desktop's shortcut settings.
    static QString shortcutId() { return QStringLiteral("toggle"); }
    static QString description() { return QStringLiteral("Show or hide the bar"); }

private Q_SLOTS:
    void activated(const QDBusMessage& signal);
    void shortcutsChanged(const QDBusMessage& signal);

private:
    void bind(const QString& trigger);
    void bindShortcut(const QString& session, const QString& trigger, quint64 generation);
    void bound(const QVariantMap& results);
    void giveUp(PortalStatus::State state, const QString& reason);
    void closeSession();
    void listen();

    HotkeyGrabber& m_fallback;
    const bool m_wayland;
    std::function<void()> m_pressed;
    PortalStatus m_status;
    QString m_session;
    /// Counts bindings, so that the answers to a superseded one are recognised and dropped.
    quint64 m_generation = 0;
    bool m_listening = false;
};
