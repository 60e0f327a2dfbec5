#pragma once

#include "platform/PanelWindows.h"
#include "platform/x11/X11PanelStacking.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

/// Dock hints through EWMH properties and click-through through the SHAPE extension's input region,
/// written on Qt's own X connection. Under a window manager that tiles, panels are override-redirect
/// windows kept on top by X11PanelStacking. Does nothing when the program does not run on X11.
class X11PanelWindows final : public PanelWindows
{
public:
    void prepareDock(quintptr windowId) override;
    bool isCompositing() override;
    void setClickThrough(quintptr windowId, bool through) override;
    void setOpacity(quintptr windowId, double opacity) override;

private:
    enum Atom
    {
        WindowType,
        WindowTypeDock,
        State,
        StateAbove,
        StateSticky,
        StateSkipTaskbar,
        StateSkipPager,
        Desktop,
        CompositingManager,
        WindowOpacity,
        Supported,
        Protocols,
        TakeFocus,
        AtomCount
    };

    bool ensureAtoms();
    bool managerHasLayers(const std::optional<std::vector<std::uint32_t>>& supported) const;
    void dropTakeFocus(std::uint32_t window, const std::optional<std::vector<std::uint32_t>>& protocols);

    // xcb_atom_t, kept as a plain integer so that this header stays free of xcb.
    std::array<std::uint32_t, AtomCount> m_atoms{};
    bool m_haveAtoms = false;
    X11PanelStacking m_stacking;
};
