#pragma once

#include "platform/Screens.h"

/// The monitors as Qt sees them through RandR, with the panels' reserved space taken out.
class QtScreens final : public Screens
{
public:
    QList<ScreenInfo> all() override;
    std::optional<ScreenInfo> screenOf(const QRect& rect) override;
};
