#pragma once

#include <QList>
#include <cstdint>
#include <memory>

class QSocketNotifier;
struct xcb_connection_t;

/// Keeps panels that no window manager stacks (override-redirect windows) above the windows it does:
/// a manager raises the windows it maps and focuses, which would bury the bar under them. Watches the
/// root window's children on a connection of its own, so that Qt's event mask on the root stays as Qt
/// set it.
class X11PanelStacking final
{
public:
    X11PanelStacking();
    ~X11PanelStacking();
    X11PanelStacking(const X11PanelStacking&) = delete;
    X11PanelStacking& operator=(const X11PanelStacking&) = delete;

    /// Keeps `window` above the managed windows from now on, and above the panels kept before it.
    void keepOnTop(std::uint32_t window);
    /// Leaves `window` to the window manager again.
    void release(std::uint32_t window);

private:
    bool connect();
    void drain();
    void restack();

    struct Disconnect
    {
        void operator()(xcb_connection_t* connection) const;
    };
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    std::unique_ptr<QSocketNotifier> m_notifier;
    // Bottom first: a flyout shown after the bar stays above it.
    QList<std::uint32_t> m_panels;
    std::uint32_t m_supportingWmCheck = 0;
    bool m_triedToConnect = false;
};
