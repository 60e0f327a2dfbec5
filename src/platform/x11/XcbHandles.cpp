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
