#pragma once

#include "platform/ClickMonitor.h"
#include "platform/x11/XcbSideConnection.h"

#include <cstdint>
#include <optional>
#include <xcb/xcb.h>

/// Raw button presses from XInput 2 on a connection of its own, so that Qt's XI2 handling on its
/// connection never sees them. Raw events reach a client that does not grab the pointer, and leave the
/// press to whichever window is under the pointer.
class XInputClickMonitor final : public ClickMonitor
{
    Q_OBJECT

public:
    void start() override;
    void stop() override;
    bool isAvailable() override { return connectXInput(); }
    FacilityReach reach() override;

private:
    bool connectXInput();
    void select(bool presses);
    void drain();
    void handle(const xcb_generic_event_t* event);

    XcbSideConnection m_connection;
    bool m_running = false;
    /// XInput's opcode once the server was found to have XI 2.1; nothing when it has not.
    std::optional<std::uint8_t> m_xinputOpcode;
    bool m_checked = false;
};
