#include "ContextTracker.h"

#include "platform/FrontApplication.h"

ContextTracker::ContextTracker(FrontApplication& front, QObject* parent)
    : QObject(parent)
    , m_front(front)
{}

ContextApp ContextTracker::contextOf(const ApplicationIdentity& identity)
{
    return {identity.id,          identity.name,     identity.isTerminal,  identity.ownId,
            identity.windowClass, identity.instance, identity.desktopEntry};
}

void ContextTracker::fix(const std::optional<ContextApp>& app)
{
    m_current = app;
    if (m_current)
        Q_EMIT changed();
}

void ContextTracker::follow()
{
    if (const auto identity = m_front.current())
        adopt(contextOf(*identity));
    m_front.watch([this](const ApplicationIdentity& identity) { adopt(contextOf(identity)); });
}

void ContextTracker::adopt(const ContextApp& app)
{
    // Two windows of one program may still go by different names (xterm and xterm -class MyTool).
    const bool differs =
        !m_current || m_current->id != app.id || AppContext::names(*m_current) != AppContext::names(app);
    m_current = app;
    Q_EMIT activated(app);
    if (differs)
        Q_EMIT changed();
}
