#include "XcbHandles.h"

#include <QGuiApplication>

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
