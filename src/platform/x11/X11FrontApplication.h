#pragma once

#include "platform/FrontApplication.h"

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <functional>
#include <xcb/xcb.h>

/// Follows _NET_ACTIVE_WINDOW on the root window and names the application behind the active window.
class X11FrontApplication final : public QObject, public FrontApplication, public QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    /// Names an application from what its window says; none when the window names nothing.
    using Namer = std::function<std::optional<ApplicationIdentity>(const WindowNames&)>;

    explicit X11FrontApplication(Namer name);
    ~X11FrontApplication() override;

    std::optional<ApplicationIdentity> current() override;
    void watch(std::function<void(const ApplicationIdentity&)> activated) override;
    FacilityReach reach() override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    void activeWindowChanged();

    Namer m_name;
    std::function<void(const ApplicationIdentity&)> m_activated;
    bool m_installed = false;
};
