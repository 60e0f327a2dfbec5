#pragma once

#include "platform/x11/XcbSideConnection.h"

#include <QList>
#include <cstdint>

/// Keeps panels that no window manager stacks (override-redirect windows) above the windows it does:
/// a manager raises the windows it maps and focuses, which would bury the bar under them. Watches the
/// root window's children on a connection of its own, so that Qt's event mask on the root stays as Qt
/// set it.
class X11PanelStacking final
{
public:
    /// Keeps `window` above the managed windows from now on, and above the panels kept before it.
    void keepOnTop(std::uint32_t window);
    /// Leaves `window` to the window manager again.
    void release(std::uint32_t window);

private:
    bool connect();
    void drain();
    void restack();

    XcbSideConnection m_connection;
    // Bottom first: a flyout shown after the bar stays above it.
    QList<std::uint32_t> m_panels;
    std::uint32_t m_supportingWmCheck = 0;
    bool m_watching = false;
};
