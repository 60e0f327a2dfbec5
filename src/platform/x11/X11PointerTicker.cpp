#include "X11PointerTicker.h"

#include "platform/x11/XcbHandles.h"

#include <QCursor>
#include <cstring>
#include <limits>
#include <xcb/sync.h>
#include <xcb/xcbext.h>

namespace {

/// The SYNC extension's SERVERTIME counter: the server's clock in milliseconds.
std::optional<std::uint32_t> serverTimeCounter(xcb_connection_t* connection)
{
    const xcb_query_extension_reply_t* sync = xcb_get_extension_data(connection, &xcb_sync_id);
    if (!sync || !sync->present)
        return std::nullopt;
    const auto version = adoptReply(xcb_sync_initialize_reply(
        connection, xcb_sync_initialize(connection, XCB_SYNC_MAJOR_VERSION, XCB_SYNC_MINOR_VERSION),
        nullptr));
    const auto list = adoptReply(
        xcb_sync_list_system_counters_reply(connection, xcb_sync_list_system_counters(connection), nullptr));
    if (!version || !list)
        return std::nullopt;
    // Read off the wire rather than through xcb's accessors, which place each name two bytes too far
    // (they pad the 14-byte entry head to 16).
    const auto* at = reinterpret_cast<const std::uint8_t*>(list.get() + 1);
    const auto* end = reinterpret_cast<const std::uint8_t*>(list.get()) + 32 + std::size_t(list->length) * 4;
    for (std::uint32_t i = 0; i < list->counters_len && at + 14 <= end; ++i) {
        std::uint32_t counter = 0;
        std::uint16_t nameLength = 0;
        std::memcpy(&counter, at, sizeof counter);
        std::memcpy(&nameLength, at + 12, sizeof nameLength);
        if (at + 14 + nameLength > end)
            break;
        if (QByteArray::fromRawData(reinterpret_cast<const char*>(at + 14), nameLength) == "SERVERTIME")
            return counter;
        at += (14 + nameLength + 3) & ~3;
    }
    return std::nullopt;
}

xcb_sync_int64_t syncValue(std::int64_t value)
{
    return {std::int32_t(value >> 32), std::uint32_t(value & 0xffffffff)};
}

int qtButtons(std::uint16_t mask)
{
    int buttons = 0;
    if (mask & XCB_BUTTON_MASK_1)
        buttons |= Qt::LeftButton;
    if (mask & XCB_BUTTON_MASK_2)
        buttons |= Qt::MiddleButton;
    if (mask & XCB_BUTTON_MASK_3)
        buttons |= Qt::RightButton;
    return buttons;
}

} // namespace

X11PointerTicker::X11PointerTicker(QObject* parent)
    : PointerTicker(parent)
{
    connect(&m_beat, &QTimer::timeout, this, &X11PointerTicker::sampleNow);
}

bool X11PointerTicker::openConnection()
{
    if (m_connected)
        return true;
    if (!m_connection.open())
        return false;
    m_connected = true;
    m_serverClock = serverTimeCounter(m_connection.get());
    m_connection.onReadable([this] { readServerBeat(); });
    return true;
}

void X11PointerTicker::start(int intervalMs)
{
    m_intervalMs = intervalMs;
    if (m_active)
        return;
    m_active = true;
    if (openConnection() && m_serverClock) {
        // A wait still on its way from before a stop keeps the beat.
        if (!m_waitingQuery)
            requestServerBeat();
        return;
    }
    m_beat.start(m_intervalMs);
}

void X11PointerTicker::stop()
{
    // A wait already sent still ends in a reply, which is dropped.
    m_active = false;
    m_beat.stop();
}

void X11PointerTicker::requestServerBeat()
{
    xcb_connection_t* connection = m_connection.get();
    xcb_sync_waitcondition_t condition{};
    condition.trigger.counter = *m_serverClock;
    condition.trigger.wait_type = XCB_SYNC_VALUETYPE_RELATIVE;
    condition.trigger.wait_value = syncValue(m_intervalMs);
    condition.trigger.test_type = XCB_SYNC_TESTTYPE_POSITIVE_COMPARISON;
    // Out of reach, so that the wait sends no CounterNotify event besides its reply.
    condition.event_threshold = syncValue(std::numeric_limits<std::int64_t>::max());
    xcb_sync_await(connection, 1, &condition);
    m_waitingQuery = xcb_query_pointer(connection, rootWindow(connection)).sequence;
    xcb_flush(connection);
    m_sinceRequest.start();
}

void X11PointerTicker::readServerBeat()
{
    xcb_connection_t* connection = m_connection.get();
    bool failed = false;
    // Nothing else is asked on this connection: an event here can only be an error of the wait.
    while (const auto event = adoptReply(xcb_poll_for_event(connection)))
        failed = failed || event->response_type == 0;
    if (!m_waitingQuery)
        return;
    void* reply = nullptr;
    if (!xcb_poll_for_reply(connection, *m_waitingQuery, &reply, nullptr))
        return;
    const auto pointer = adoptReply(static_cast<xcb_query_pointer_reply_t*>(reply));
    m_waitingQuery.reset();
    // A wait the server did not keep would turn the beat into a busy loop.
    if (failed || !pointer || m_sinceRequest.elapsed() < m_intervalMs / 2) {
        fallBackToTimer();
        return;
    }
    if (!m_active)
        return;
    report(pointer->root_x, pointer->root_y, pointer->mask);
    // The sample may have stopped the beat, or stopped and started it again.
    if (m_active && !m_waitingQuery)
        requestServerBeat();
}

void X11PointerTicker::fallBackToTimer()
{
    m_serverClock.reset();
    if (m_waitingQuery)
        xcb_discard_reply(m_connection.get(), *m_waitingQuery);
    m_waitingQuery.reset();
    if (m_active && !m_beat.isActive())
        m_beat.start(m_intervalMs);
}

void X11PointerTicker::sampleNow()
{
    xcb_connection_t* connection = m_connected ? m_connection.get() : nullptr;
    if (!connection) {
        Q_EMIT sampled({QCursor::pos(), 0});
        return;
    }
    const auto pointer = adoptReply(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, rootWindow(connection)), nullptr));
    if (pointer)
        report(pointer->root_x, pointer->root_y, pointer->mask);
}

void X11PointerTicker::report(std::int16_t x, std::int16_t y, std::uint16_t mask)
{
    Q_EMIT sampled({fromDevicePixels(QPoint(x, y)), qtButtons(mask)});
}
