#include "Visibility.h"

namespace {

bool near(const QRect& rect, int margin, const QPoint& point)
{
    const QRect grown = rect.adjusted(-margin, -margin, margin, margin);
    return point.x() >= grown.x() && point.x() < grown.x() + grown.width() && point.y() >= grown.y() &&
           point.y() < grown.y() + grown.height();
}

} // namespace

bool Visibility::needsTicks(bool autoHide) const
{
    switch (m_state) {
    case State::Shown:
        return autoHide && !m_pointerOnBar;
    case State::HiddenAuto:
        return true; // also with auto-hide off: that tick brings the bar back
    case State::HiddenManual:
        break;
    }
    return false;
}

Visibility::Action Visibility::tick(const Sample& sample)
{
    switch (m_state) {
    case State::Shown: {
        if (!sample.autoHide)
            return Action::None;
        const bool busy = m_pointerOnBar || near(sample.bar, nearMargin, sample.pointer) ||
                          (sample.flyout && near(*sample.flyout, nearMargin, sample.pointer)) ||
                          sample.editorOpen ||
                          sample.buttonPressed; // a drag in progress never lets the bar go
        if (busy) {
            m_idleTicks = 0;
            return Action::None;
        }
        return ++m_idleTicks >= idleTicksBeforeHide ? Action::Hide : Action::None;
    }
    case State::HiddenAuto:
        if (!sample.autoHide)
            return Action::Show;
        if (!near(sample.bar, restMargin, sample.pointer)) {
            m_restTicks = 0;
            return Action::None;
        }
        return ++m_restTicks >= restTicksBeforeShow ? Action::Show : Action::None;
    case State::HiddenManual:
        break;
    }
    return Action::None;
}

void Visibility::hidden(bool manual)
{
    m_state = manual ? State::HiddenManual : State::HiddenAuto;
}

void Visibility::shown()
{
    m_state = State::Shown;
    m_idleTicks = 0;
    m_restTicks = 0;
}

Visibility::Action Visibility::autoHideToggled(bool nowOn)
{
    m_idleTicks = 0;
    return !nowOn && m_state == State::HiddenAuto ? Action::Show : Action::None;
}

void Visibility::pointerOnBar(bool on)
{
    m_pointerOnBar = on;
    if (on)
        m_idleTicks = 0;
}
