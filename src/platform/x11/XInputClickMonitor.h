#pragma once

#include "platform/ClickMonitor.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <xcb/xcb.h>

class QSocketNotifier;

/// Raw button presses from XInput 2 on a connection of its own, so that Qt's XI2 handling on its
/// connection never sees them. Raw events reach a client that does not grab the pointer, and leave the
/// press to whichever window is under the pointer.
class XInputClickMonitor final : public ClickMonitor
{
public:
    XInputClickMonitor();
    ~XInputClickMonitor() override;

    void start(std::function<void(QPoint)> pressed) override;
    void stop() override;
    PointerState pointer() override;
    bool isAvailable() override { return connect(); }
    FacilityReach reach() override;

private:
    bool connect();
    void select(bool presses);
    void drain();
    void handle(const xcb_generic_event_t* event);

    struct Disconnect
    {
        void operator()(xcb_connection_t* connection) const;
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void(QPoint)> m_pressed;
    /// Events a pointer query's wait pulled off the socket, where the notifier no longer sees them.
    std::deque<std::unique_ptr<xcb_generic_event_t, void (*)(void*)>> m_queued;
    std::uint8_t m_xinputOpcode = 0;
    bool m_triedToConnect = false;
};
