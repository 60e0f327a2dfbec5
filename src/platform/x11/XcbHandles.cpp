#include "XcbHandles.h"

#include <QGuiApplication>
#include <QScreen>

xcb_connection_t* qtXcbConnection()
{
    if (!qGuiApp)
        return nullptr;
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

xcb_window_t rootWindow(xcb_connection_t* connection)
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

QPoint fromDevicePixels(QPoint device)
{
    // Qt keeps each screen's top-left corner as it is and divides the rest by the screen's scale.
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect scaled = screen->geometry();
        const qreal ratio = screen->devicePixelRatio();
        const QRect native(scaled.topLeft(), scaled.size() * ratio);
        if (native.contains(device))
            return scaled.topLeft() + (device - scaled.topLeft()) / ratio;
    }
    return device;
}

QList<xcb_atom_t> internAtoms(xcb_connection_t* connection, const QList<QByteArray>& names, bool onlyIfExists)
{
    QList<xcb_intern_atom_cookie_t> cookies;
    cookies.reserve(names.size());
    for (const QByteArray& name : names)
        cookies.append(
            xcb_intern_atom(connection, onlyIfExists, static_cast<uint16_t>(name.size()), name.constData()));
    QList<xcb_atom_t> atoms;
    atoms.reserve(names.size());
    for (const xcb_intern_atom_cookie_t& cookie : cookies) {
        const auto reply = adoptReply(xcb_intern_atom_reply(connection, cookie, nullptr));
        atoms.append(reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE));
    }
    return atoms;
}
