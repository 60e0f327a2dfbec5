#pragma once

#include <cstdlib>
#include <memory>
#include <xcb/xcb.h>

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
