#pragma once

#include "platform/InputSynthesis.h"
#include "platform/portal/PortalStatus.h"

#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <functional>

class Beeper;

/// Key combinations in a Wayland session, where XTest reaches only X11 windows: typed through the
/// remote-desktop portal (keyboard only) into whatever window has the focus. The portal session is
/// started on the first combination, and its restore token is kept so that the desktop asks the user
/// once, not at every start. Where the portal is absent or refused, `fallback` (XTest) serves X11
/// windows, and any other window gets a beep and, once, a line saying why. Outside a Wayland session it
/// is `fallback` alone.
class PortalInputSynthesis final : public QObject, public InputSynthesis
{
    Q_OBJECT

public:
    /// `x11WindowInFront` tells whether the focused window is an X11 one, which `fallback` can reach.
    PortalInputSynthesis(InputSynthesis& fallback, Beeper& beeper, std::function<bool()> x11WindowInFront,
                         bool waylandSession);
    ~PortalInputSynthesis() override;

    bool isTrusted() override;
    void post(const KeyStroke& combo) override;
    /// Through the portal once the desktop serves it, else as far as the X11 way behind it reaches.
    FacilityReach reach() override;

    /// Whether the portal types the keys, or why not.
    const PortalStatus& status() const { return m_status; }

    /// How long a combination waits for the portal session to start. One that waited longer is dropped
    /// with a beep: the desktop has asked the user meanwhile, the focus has moved to its dialog and back,
    /// and a paste's clipboard has been put back (after half a second) before its keys could be pressed.
    static constexpr int startGraceMs = 400;

private Q_SLOTS:
    void sessionClosed();

private:
    void start();
    void selectDevices();
    void startSession();
    void started(const QVariantMap& results);
    void unavailable(PortalStatus::State state, const QString& reason);
    void type(const KeyStroke& combo);
    void fallBack(const KeyStroke& combo);
    void forgetSession();

    struct Queued
    {
        KeyStroke combo;
        QDeadlineTimer deadline;
    };

    InputSynthesis& m_fallback;
    Beeper& m_beeper;
    std::function<bool()> m_x11WindowInFront;
    const bool m_wayland;
    PortalStatus m_status;
    QString m_session;
    QList<Queued> m_queued;
    bool m_starting = false;
    bool m_told = false;
};
