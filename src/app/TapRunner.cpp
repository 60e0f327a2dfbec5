#include "TapRunner.h"

#include "actions/Actions.h"
#include "bar/FlyoutController.h"
#include "bar/TapRouting.h"

using Kind = TapRouting::Route::Kind;

TapRunner::TapRunner(FlyoutController& flyouts, Actions& actions)
    : m_flyouts(flyouts)
    , m_actions(actions)
{}

void TapRunner::onBar(const ButtonSpec& spec, const QRectF& frameInBar)
{
    const TapRouting::Route route = TapRouting::onBar(spec, m_flyouts.openGroup());
    m_flyouts.closeFlyout();
    switch (route.kind) {
    case Kind::CloseFlyout:
        break;
    case Kind::OpenStack:
        m_flyouts.showFlyout(route.items, route.id, frameInBar);
        break;
    case Kind::OpenFolder:
        m_flyouts.showFolder(route.path, route.id, frameInBar, route.root);
        break;
    case Kind::Run:
        m_actions.run(spec);
        break;
    }
}

void TapRunner::inFlyout(const ButtonSpec& spec)
{
    const TapRouting::Route route =
        TapRouting::inFlyout(spec, m_flyouts.openGroup(), m_flyouts.listingRoot());
    if (route.kind == Kind::OpenFolder) {
        m_flyouts.showFolder(route.path, route.id, m_flyouts.anchor(), route.root);
        return;
    }
    if (route.kind == Kind::OpenStack) { // a stack in the overflow: its flyout takes the overflow's place
        const QRectF anchor = m_flyouts.anchor();
        m_flyouts.closeFlyout();
        m_flyouts.showFlyout(route.items, route.id, anchor);
        return;
    }
    m_flyouts.closeFlyout();
    m_actions.run(spec);
}

void TapRunner::onOverflow(const QList<ButtonSpec>& items, const QRectF& frameInBar)
{
    const TapRouting::Route route = TapRouting::onOverflow(items, m_flyouts.openGroup());
    m_flyouts.closeFlyout();
    if (route.kind == Kind::OpenStack)
        m_flyouts.showFlyout(route.items, route.id, frameInBar);
}
