#pragma once

#include "platform/Screens.h"

#include <functional>

/// The monitors as Qt sees them through RandR, with the panels' reserved space taken out.
class QtScreens final : public Screens
{
public:
    /// `workArea` tells what the window manager leaves free of panels, spanning every monitor.
    explicit QtScreens(std::function<std::optional<QRect>()> workArea);

    QList<ScreenInfo> all() override;
    std::optional<ScreenInfo> screenOf(const QRect& rect) override;

private:
    std::function<std::optional<QRect>()> m_workArea;
};
