#pragma once

#include "app/Visibility.h"

#include <QObject>
#include <QPointer>
#include <functional>

class BarPanel;
class FlyoutController;
class Platform;
class Preferences;
class QVariantAnimation;
struct PointerState;

/// Carries out the visibility rules on the bar window: the tick, the fades, and click-through once
/// hidden. A hidden bar stays mapped at its place, so that the pointer can find it again. The bar's own
/// enter and leave events say when the pointer is on it, which spares the ticks while it rests there.
class BarVisibility : public QObject
{
    Q_OBJECT

public:
    BarVisibility(Platform& platform, Preferences& preferences, QObject* parent = nullptr);

    /// The bar to fade, the flyouts to close with it, and whether an editor is open (it keeps the bar).
    void attach(BarPanel* bar, FlyoutController* flyouts, std::function<bool()> editorOpen);
    /// Starts the tick, when there is anything for it to do.
    void start();

    bool isShown() const { return m_state.isShown(); }
    void hide(bool manual);
    void show();
    /// The hot key and the menu's "Hide bar"/"Show bar".
    void toggleBar();
    void toggleAutoHide();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void tick(const PointerState& pointer);
    /// Runs the tick while it can change something, and stops it otherwise.
    void updateTick();
    void fadeTo(double opacity, int milliseconds, std::function<void()> done);

    Platform& m_platform;
    Preferences& m_preferences;
    QPointer<BarPanel> m_bar;
    FlyoutController* m_flyouts = nullptr;
    std::function<bool()> m_editorOpen;
    Visibility m_state;
    QVariantAnimation* m_fade = nullptr;
    double m_opacity = 1.0;
    bool m_started = false;
};
