#pragma once

#include <QString>

/// How a facility that a desktop portal can provide reaches the desktop, for the probe.
struct PortalStatus
{
    enum class State
    {
        /// Not a Wayland session: the X11 way serves every window.
        NotNeeded,
        /// Not asked yet (the keyboard portal is asked on the first key chip), or waiting for the answer.
        Waiting,
        /// The portal serves it.
        InUse,
        /// The session bus offers no such portal: X11 windows only.
        Absent,
        /// The portal exists but the user or the desktop said no: X11 windows only.
        Refused,
    };
    State state = State::NotNeeded;
    /// In use: what the desktop assigned (the hot key's trigger as the desktop words it), if it said.
    /// Absent or refused: the reason.
    QString detail;
};
