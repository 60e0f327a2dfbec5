#include "BarPlacement.h"

#include "app/ConfigSession.h"
#include "app/ContextTracker.h"
#include "bar/BarPanel.h"
#include "bar/BarView.h"
#include "bar/FlyoutController.h"
#include "bar/Geometry.h"
#include "platform/Platform.h"
#include "platform/Screens.h"

#include <QGuiApplication>
#include <QScreen>
#include <limits>

namespace {

/// How wide the bar may grow on its screen before chips move into the overflow: the available width,
/// less the gap kept from either side.
int widthBudget(const std::optional<ScreenInfo>& screen)
{
    return screen ? std::max(0, screen->available.width() - 2 * Geometry::edgeGap)
                  : std::numeric_limits<int>::max();
}

} // namespace

BarPlacement::BarPlacement(Platform& platform, Preferences& preferences, const ConfigSession& session,
                           const ContextTracker& context, DragState& drag, const BarHandlers& handlers,
                           FlyoutController& flyouts, QObject* parent)
    : QObject(parent)
    , m_platform(platform)
    , m_preferences(preferences)
    , m_session(session)
    , m_context(context)
    , m_drag(drag)
    , m_handlers(handlers)
    , m_flyouts(flyouts)
{
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(saveDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &BarPlacement::savePosition);
}

BarPlacement::~BarPlacement() = default;

QList<ButtonSpec> BarPlacement::contextButtons() const
{
    return AppContext::contextButtons(m_session.document().cfg(), m_context.current());
}

std::optional<QRectF> BarPlacement::frame() const
{
    return m_panel ? std::optional<QRectF>(m_panel->geometry()) : std::nullopt;
}

void BarPlacement::create(bool top)
{
    m_panel = std::make_unique<BarPanel>(m_platform.panelWindows(), QStringLiteral("Vantril"));
    m_view = new BarView(m_drag, m_handlers);
    const QList<ScreenInfo> screens = m_platform.screens().all();
    m_widthBudget =
        widthBudget(screens.isEmpty() ? std::nullopt : std::optional<ScreenInfo>(screens.first()));
    m_expandsUp = !top;
    m_view->rebuild(m_session.document().cfg(), contextButtons(), m_expandsUp, m_widthBudget);
    m_panel->setContent(m_view);
    m_flyouts.setBar(m_panel.get());

    const QSize size = m_panel->fittingSize();
    std::optional<QPoint> origin = top ? std::nullopt : savedOrigin(size);
    if (!origin && !screens.isEmpty())
        origin = Geometry::defaultOrigin(size, screens.first().available, top);
    if (origin)
        m_panel->move(*origin);
    m_panel->showPanel();
    // Built for the first screen, flyouts up unless at the top: rebuilt only if its place says otherwise.
    refit(false);
    connect(m_panel.get(), &BarPanel::moved, this, &BarPlacement::moved);
}

void BarPlacement::reload()
{
    refit(true);
}

void BarPlacement::refit(bool rebuild)
{
    if (!m_panel || !m_view)
        return;
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform.screens().screenOf(frame);
    const bool up = screen ? Geometry::expandsUp(frame, screen->frame) : m_expandsUp;
    const int budget = widthBudget(screen);
    if (rebuild || up != m_expandsUp || budget != m_widthBudget) {
        m_expandsUp = up;
        m_widthBudget = budget;
        m_view->rebuild(m_session.document().cfg(), contextButtons(), m_expandsUp, m_widthBudget);
    }

    const QSize size = m_panel->fittingSize();
    if (size.width() <= 0)
        return;
    const QRect available = screen ? screen->available : frame;
    m_panel->setFrame(Geometry::refit(frame, size, available));
}

void BarPlacement::moved()
{
    m_flyouts.closeFlyout();
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform.screens().screenOf(frame);
    const bool up = screen ? Geometry::expandsUp(frame, screen->frame) : true;
    if (up != m_expandsUp || widthBudget(screen) != m_widthBudget)
        reload();
    m_saveTimer.start(); // restarted by every move: one save, half a second after the last
}

void BarPlacement::moveBy(const QPointF& offset)
{
    if (!m_panel)
        return;
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform.screens().screenOf(frame);
    const QRect available = screen ? screen->available : frame;
    m_panel->move(Geometry::movedBy(m_panel->pos(), offset, m_panel->size(), available));
}

std::optional<QPoint> BarPlacement::savedOrigin(const QSize& size)
{
    const auto position = m_preferences.barPosition();
    if (!position)
        return std::nullopt;
    const QList<ScreenInfo> screens = m_platform.screens().all();
    if (screens.isEmpty())
        return std::nullopt;
    const auto match = std::find_if(screens.begin(), screens.end(), [&](const ScreenInfo& screen) {
        return screen.number == position->display;
    });
    const ScreenInfo& screen = match != screens.end() ? *match : screens.first();
    return Geometry::originFromFractions({position->ox, position->oy}, size, screen.frame, screen.available);
}

void BarPlacement::savePosition()
{
    if (!m_panel)
        return;
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform.screens().screenOf(frame);
    if (!screen)
        return;
    const Geometry::Fractions fractions = Geometry::fractionsOf(frame, screen->frame);
    m_preferences.setBarPosition({screen->number, fractions.ox, fractions.oy});
}

void BarPlacement::watchScreens()
{
    const auto watch = [this](QScreen* screen) {
        connect(screen, &QScreen::geometryChanged, this, &BarPlacement::screensChanged);
        connect(screen, &QScreen::availableGeometryChanged, this, &BarPlacement::screensChanged);
    };
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this, watch](QScreen* screen) {
        watch(screen);
        screensChanged();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &BarPlacement::screensChanged);
}

void BarPlacement::screensChanged()
{
    if (!m_panel)
        return;
    m_flyouts.closeFlyout();
    if (const auto origin = savedOrigin(m_panel->size()))
        m_panel->move(*origin);
    // A screen that shrank, or a bar now on another one, may hold fewer chips (or more).
    reload();
}
