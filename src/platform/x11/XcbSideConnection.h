#pragma once

#include <QtGlobal>
#include <functional>
#include <memory>

class QSocketNotifier;
struct xcb_connection_t;

/// A connection to the X server of its own beside Qt's, read from the event loop: for events Qt's own
/// handling must not see, and for requests that must not wait behind Qt's, or Qt's behind them.
class XcbSideConnection
{
public:
    XcbSideConnection();
    ~XcbSideConnection();
    Q_DISABLE_COPY_MOVE(XcbSideConnection)

    /// Connects, only beside Qt's own X connection: whatever it reports must be in the space the
    /// program's windows live in. A failed attempt is not repeated.
    bool open();
    xcb_connection_t* get() const { return m_connection.get(); }
    /// Called from the event loop whenever the server has sent something. A server that went away
    /// stops the calls: a closed socket stays readable and would spin the event loop.
    void onReadable(std::function<void()> readable);
    /// Replies waited for may have pulled events into xcb's queue, where the socket no longer shows
    /// them: this has them read on the next pass of the event loop.
    void readQueuedSoon();

private:
    void readable();

    struct Disconnect
    {
        void operator()(xcb_connection_t* connection) const;
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::function<void()> m_readable;
    bool m_tried = false;
};
