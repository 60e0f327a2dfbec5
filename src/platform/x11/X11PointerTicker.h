#pragma once

#include "platform/PointerTicker.h"
#include "platform/x11/XcbSideConnection.h"

#include <QElapsedTimer>
#include <QTimer>
#include <cstdint>
#include <optional>

/// The X server keeps the beat. With the SYNC extension each sample is a request that waits in the server
/// until the server's clock has gone one interval on, followed by the pointer query, so that the reply
/// comes at the beat with the pointer of that moment: the program wakes once a beat instead of twice (for
/// its own timer, then for the reply). A server without SYNC's clock, or one that does not keep the wait,
/// gets a timer and a query on each beat. Either runs on a connection of its own, which nothing else waits
/// behind.
class X11PointerTicker final : public PointerTicker
{
public:
    explicit X11PointerTicker(QObject* parent = nullptr);

    void start(int intervalMs) override;
    void stop() override;
    bool isActive() const override { return m_active; }

private:
    bool openConnection();
    void requestServerBeat();
    void readServerBeat();
    void fallBackToTimer();
    void sampleNow();
    void report(std::int16_t x, std::int16_t y, std::uint16_t mask);

    XcbSideConnection m_connection;
    /// The server's clock, while the server keeps the beat.
    std::optional<std::uint32_t> m_serverClock;
    /// The pointer query behind the wait, while one is on its way.
    std::optional<unsigned int> m_waitingQuery;
    QElapsedTimer m_sinceRequest;
    QTimer m_beat;
    int m_intervalMs = 150;
    bool m_active = false;
    bool m_connected = false;
};
