#pragma once

#include "platform/ApplicationIdentity.h"
#include "platform/FacilityReach.h"

#include <QtGlobal>
#include <functional>
#include <optional>

/// The application the user works in. Only ordinary application windows count: not this program's own
/// windows, not docks, panels, menus or notifications, and not the moment between two windows when
/// nothing is active.
class FrontApplication
{
public:
    FrontApplication() = default;
    virtual ~FrontApplication() = default;
    Q_DISABLE_COPY_MOVE(FrontApplication)

    /// The application in front now, when it counts.
    virtual std::optional<ApplicationIdentity> current() = 0;
    /// Starts reporting every activation of an application that counts.
    virtual void watch(std::function<void(const ApplicationIdentity&)> activated) = 0;
    /// Which windows are followed.
    virtual FacilityReach reach() = 0;
};
