#pragma once

#include <QRect>
#include <QtGlobal>

/// What the window manager must know about the bar's own windows.
class PanelWindows
{
public:
    PanelWindows() = default;
    virtual ~PanelWindows() = default;
    Q_DISABLE_COPY_MOVE(PanelWindows)

    /// Marks a not yet mapped top-level window as a dock panel: above others, on every workspace, in no
    /// taskbar or pager. Window managers drop these on unmap, so call it before every show.
    virtual void prepareDock(quintptr windowId) = 0;
    /// Whether a compositor draws translucent windows; without one, corners need a window mask.
    virtual bool isCompositing() = 0;
    /// Lets pointer input through the window (true) or gives it back (false), keeping it mapped.
    virtual void setClickThrough(quintptr windowId, bool through) = 0;
    /// Sets the window's opacity for the compositor, at once (a fade calls it for every frame).
    virtual void setOpacity(quintptr windowId, double opacity) = 0;
};
