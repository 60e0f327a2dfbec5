#pragma once

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>
#include <xcb/xcb_keysyms.h>

/// Owns a reply or any other block xcb hands out to be freed with free().
template<typename T>
using XcbReply = std::unique_ptr<T, decltype(&std::free)>;

template<typename T>
XcbReply<T> adoptReply(T* reply)
{
    return XcbReply<T>(reply, &std::free);
}

/// Qt's own connection to the X server, or nullptr when the program does not run on X11.
xcb_connection_t* qtXcbConnection();
xcb_window_t rootWindow(xcb_connection_t* connection);

/// A position the server gives, in device pixels, in the scaled coordinates of the program's windows.
QPoint fromDevicePixels(QPoint device);

/// Interns every name in one round trip. An atom that could not be had, or with `onlyIfExists` one no
/// client ever made, is XCB_ATOM_NONE.
QList<xcb_atom_t> internAtoms(xcb_connection_t* connection, const QList<QByteArray>& names,
                              bool onlyIfExists = false);

/// The keyboard mapping as xcb-keysyms reads it; made afresh where the current layout matters.
using KeySymbolTable = std::unique_ptr<xcb_key_symbols_t, decltype(&xcb_key_symbols_free)>;
