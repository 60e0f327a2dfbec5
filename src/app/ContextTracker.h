#pragma once

#include "config/AppContext.h"
#include "platform/ApplicationIdentity.h"

#include <QObject>
#include <optional>

class FrontApplication;

/// Which application is in front, for its own set of buttons: followed on the desktop, or fixed for
/// scripts and tests.
class ContextTracker : public QObject
{
    Q_OBJECT

public:
    explicit ContextTracker(FrontApplication& front, QObject* parent = nullptr);

    /// Follows the application in front on the desktop.
    void follow();
    /// Holds `app` in front for good, or no application at all.
    void fix(const std::optional<ContextApp>& app);
    const std::optional<ContextApp>& current() const { return m_current; }

    /// The names a set may be made for, out of everything the window told.
    static ContextApp contextOf(const ApplicationIdentity& identity);

Q_SIGNALS:
    /// Every activation of an application, even one already in front.
    void activated(const ContextApp& app);
    /// Another application's set may apply now.
    void changed();

private:
    void adopt(const ContextApp& app);

    FrontApplication& m_front;
    std::optional<ContextApp> m_current;
};
