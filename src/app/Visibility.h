#pragma once

#include <QPoint>
#include <QRect>
#include <optional>

/// Whether the bar shows, and auto-hide: a bar left alone for 1.5 s fades away when auto-hide is on,
/// and comes back when the pointer rests on its place for 0.3 s. A bar hidden by hand stays hidden
/// until it is shown by hand. Driven by a tick every 0.15 s; it keeps no clock of its own.
///
/// The tick only matters while it can change something: a shown bar with auto-hide on counts idle
/// ticks while the pointer is off it, and a bar that auto-hid waits for the pointer on its place. A shown
/// bar with auto-hide off or the pointer on it, and a bar hidden by hand, ignore every tick, so the tick
/// does not run then and an idle bar never wakes up.
class Visibility
{
public:
    enum class State
    {
        Shown,
        HiddenAuto,
        HiddenManual,
    };
    enum class Action
    {
        None,
        Hide,
        Show,
    };

    /// What one tick sees.
    struct Sample
    {
        bool autoHide = false;
        QPoint pointer;
        QRect bar;
        std::optional<QRect> flyout;
        bool editorOpen = false;
        bool buttonPressed = false;
    };

    static constexpr int tickMs = 150;
    static constexpr int idleTicksBeforeHide = 10;
    static constexpr int restTicksBeforeShow = 2;
    static constexpr int nearMargin = 6;
    static constexpr int restMargin = 4;
    static constexpr int fadeOutMs = 200;
    static constexpr int fadeInMs = 150;

    State state() const { return m_state; }
    bool isShown() const { return m_state == State::Shown; }

    /// Whether a tick could call for anything now; while it cannot, the caller need not tick at all.
    bool needsTicks(bool autoHide) const;
    /// The transition this tick calls for; the caller carries it out with hidden() or shown().
    Action tick(const Sample& sample);
    /// The bar was hidden, by hand or by auto-hide.
    void hidden(bool manual);
    /// The bar was shown; the counts start again.
    void shown();
    /// Auto-hide was switched; a bar that auto-hid comes back when it is now off.
    Action autoHideToggled(bool nowOn);
    /// The pointer came onto the bar's window, or left it. While it is on it a shown bar stays, as the
    /// ticks would find; the idle count starts afresh when it leaves.
    void pointerOnBar(bool on);

private:
    State m_state = State::Shown;
    int m_idleTicks = 0;
    int m_restTicks = 0;
    bool m_pointerOnBar = false;
};
