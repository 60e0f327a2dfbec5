#pragma once

#include "config/BarConfig.h"

#include <QList>
#include <QRectF>

class Actions;
class FlyoutController;

/// What a tap does: opens or closes a stack's flyout or a folder listing, or runs the button.
class TapRunner
{
public:
    TapRunner(FlyoutController& flyouts, Actions& actions);

    /// A chip of the bar, whose frame in bar coordinates the flyout hangs from.
    void onBar(const ButtonSpec& spec, const QRectF& frameInBar);
    void inFlyout(const ButtonSpec& spec);
    void onOverflow(const QList<ButtonSpec>& items, const QRectF& frameInBar);

private:
    FlyoutController& m_flyouts;
    Actions& m_actions;
};
