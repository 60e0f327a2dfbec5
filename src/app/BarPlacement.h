#pragma once

#include "app/Preferences.h"
#include "config/BarConfig.h"

#include <QObject>
#include <QPoint>
#include <QSize>
#include <QTimer>
#include <memory>
#include <optional>

class BarPanel;
class BarView;
class ConfigSession;
class ContextTracker;
class DragState;
class FlyoutController;
class Platform;
struct BarHandlers;

/// The bar window and where it is: placed where it was left (on the display it was saved on, else the
/// first one) or at the default place, refitted to its content and screen after every change, its flyouts
/// opening up or down as the screen's halves say, its place saved half a second after the last move, and
/// put back where it belongs when screens come, go or change.
class BarPlacement : public QObject
{
    Q_OBJECT

public:
    BarPlacement(Platform& platform, Preferences& preferences, const ConfigSession& session,
                 const ContextTracker& context, DragState& drag, const BarHandlers& handlers,
                 FlyoutController& flyouts, QObject* parent = nullptr);
    ~BarPlacement() override;

    /// Makes and shows the bar: at the top centre with `top`, else where it was left.
    void create(bool top);
    /// Rebuilds the chips and refits the window to them and to its screen.
    void reload();
    /// Follows the screens' changes from now on.
    void watchScreens();

    BarPanel* panel() const { return m_panel.get(); }
    BarView* view() const { return m_view; }
    /// The bar's frame on screen, none before it is made.
    std::optional<QRectF> frame() const;

    /// Moves the bar as a drag by `offset` would, kept on its screen.
    void moveBy(const QPointF& offset);

    /// The origin a bar of `size` had on its screen when it was last moved, if any.
    std::optional<QPoint> savedOrigin(const QSize& size);
    void savePosition();

    /// Delay between the last move of the bar and the saving of its place.
    static constexpr int saveDelayMs = 500;

private:
    /// Fits the window to its content and screen; the chips are built anew with `rebuild`, or when the
    /// screen now asks for other flyout directions or another width.
    void refit(bool rebuild);
    void moved();
    void screensChanged();
    QList<ButtonSpec> contextButtons() const;

    Platform& m_platform;
    Preferences& m_preferences;
    const ConfigSession& m_session;
    const ContextTracker& m_context;
    DragState& m_drag;
    const BarHandlers& m_handlers;
    FlyoutController& m_flyouts;
    std::unique_ptr<BarPanel> m_panel;
    BarView* m_view = nullptr;
    QTimer m_saveTimer;
    bool m_expandsUp = true;
    /// How wide the bar could be on its screen when it was last rebuilt; another screen means a rebuild.
    int m_widthBudget = 0;
};
