#include "XcbSideConnection.h"

#include "platform/x11/XcbHandles.h"

#include <QSocketNotifier>
#include <QTimer>

void XcbSideConnection::Disconnect::operator()(xcb_connection_t* connection) const
{
    xcb_disconnect(connection);
}

XcbSideConnection::XcbSideConnection() = default;

XcbSideConnection::~XcbSideConnection()
{
    // The notifier watches the connection's socket, so it goes first.
    m_notifier.reset();
    m_connection.reset();
}

bool XcbSideConnection::open()
{
    if (m_connection)
        return true;
    if (m_tried || !qtXcbConnection())
        return false;
    m_tried = true;
    std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, nullptr));
    if (!connection || xcb_connection_has_error(connection.get()))
        return false;
    m_connection = std::move(connection);
    m_notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { readable(); });
    return true;
}

void XcbSideConnection::onReadable(std::function<void()> readable)
{
    m_readable = std::move(readable);
}

void XcbSideConnection::readQueuedSoon()
{
    if (m_notifier)
        QTimer::singleShot(0, m_notifier.get(), [this] { readable(); });
}

void XcbSideConnection::readable()
{
    if (m_readable)
        m_readable();
    if (m_connection && xcb_connection_has_error(m_connection.get()))
        m_notifier->setEnabled(false);
}
