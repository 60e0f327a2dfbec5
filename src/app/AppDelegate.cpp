#include "AppDelegate.h"

#include "app/HandlerTable.h"
#include "app/StartupCommands.h"
#include "bar/BarPanel.h"
#include "bar/BarView.h"
#include "bar/FlyoutController.h"
#include "bar/Geometry.h"
#include "bar/TapRouting.h"
#include "config/Backups.h"
#include "config/Config.h"
#include "dragdrop/Editing.h"
#include "platform/Platform.h"

#include <QDir>
#include <QGuiApplication>
#include <QScreen>
#include <QUrl>

namespace {

/// Delay between the last move of the bar and the saving of its place.
constexpr int savePositionDelayMs = 500;

} // namespace

AppDelegate::AppDelegate(std::unique_ptr<Platform> platform)
    : m_platform(std::move(platform))
    , m_actions(std::make_unique<Actions>(*m_platform))
{
    m_handlers = makeHandlers(*this);
    m_flyouts = std::make_unique<FlyoutController>(*m_platform, m_handlers);
    m_saveTimer.setSingleShot(true);
    m_saveTimer.setInterval(savePositionDelayMs);
    connect(&m_saveTimer, &QTimer::timeout, this, &AppDelegate::savePosition);
}

AppDelegate::~AppDelegate()
{
    // The flyout and the bar call back into the platform; they go first.
    m_flyouts.reset();
    m_panel.reset();
}

void AppDelegate::finishLaunching(const QProcessEnvironment& environment)
{
    m_document = std::make_unique<ConfigDocument>(Config::load());
    m_document->setBeep([this] { m_platform->beeper().beep(); });
    m_document->setAfterChange([this] {
        m_drag.setCanUndo(m_document->canUndo());
        closeFlyout();
        reloadBar();
    });
    // Every launch leaves a backup of the configuration it started from.
    Config::snapshot(true);

    createBar(environment.contains(QStringLiteral("VANTRIL_TOP")));
    connect(m_panel.get(), &BarPanel::moved, this, &AppDelegate::barMoved);
    watchScreens();

    StartupCommands::applyConfigCommands(*m_document, environment);
    scheduleStartupMoves(environment);
}

void AppDelegate::createBar(bool top)
{
    m_panel = std::make_unique<BarPanel>(m_platform->panelWindows(), QStringLiteral("Vantril"));
    m_barView = new BarView(m_drag, m_handlers);
    m_barView->rebuild(m_document->cfg(), contextButtons(), !top);
    m_panel->setContent(m_barView);
    m_flyouts->setBar(m_panel.get());

    const QSize size = m_panel->fittingSize();
    std::optional<QPoint> origin = top ? std::nullopt : savedOrigin(size);
    if (!origin) {
        const QList<ScreenInfo> screens = m_platform->screens().all();
        if (!screens.isEmpty())
            origin = Geometry::defaultOrigin(size, screens.first().available, top);
    }
    if (origin)
        m_panel->move(*origin);
    m_panel->showPanel();
    reloadBar();
}

QList<ButtonSpec> AppDelegate::contextButtons() const
{
    return {};
}

void AppDelegate::reloadBar()
{
    if (!m_panel || !m_barView)
        return;
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform->screens().screenOf(frame);
    if (screen)
        m_lastExpandsUp = Geometry::expandsUp(frame, screen->frame);
    m_barView->rebuild(m_document->cfg(), contextButtons(), m_lastExpandsUp);

    const QSize size = m_panel->fittingSize();
    if (size.width() <= 0)
        return;
    const QRect available = screen ? screen->available : frame;
    m_panel->setGeometry(Geometry::refit(frame, size, available));
}

void AppDelegate::barMoved()
{
    closeFlyout();
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform->screens().screenOf(frame);
    const bool up = screen ? Geometry::expandsUp(frame, screen->frame) : true;
    if (up != m_lastExpandsUp)
        reloadBar();
    m_saveTimer.start(); // restarted by every move: one save, half a second after the last
}

std::optional<QPoint> AppDelegate::savedOrigin(const QSize& size)
{
    const auto position = m_preferences.barPosition();
    if (!position)
        return std::nullopt;
    const QList<ScreenInfo> screens = m_platform->screens().all();
    if (screens.isEmpty())
        return std::nullopt;
    const auto match = std::find_if(screens.begin(), screens.end(), [&](const ScreenInfo& screen) {
        return screen.number == position->display;
    });
    const ScreenInfo& screen = match != screens.end() ? *match : screens.first();
    return Geometry::originFromFractions({position->ox, position->oy}, size, screen.frame, screen.available);
}

void AppDelegate::savePosition()
{
    if (!m_panel)
        return;
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform->screens().screenOf(frame);
    if (!screen)
        return;
    const Geometry::Fractions fractions = Geometry::fractionsOf(frame, screen->frame);
    m_preferences.setBarPosition({screen->number, fractions.ox, fractions.oy});
}

void AppDelegate::watchScreens()
{
    const auto watch = [this](QScreen* screen) {
        connect(screen, &QScreen::geometryChanged, this, &AppDelegate::screensChanged);
        connect(screen, &QScreen::availableGeometryChanged, this, &AppDelegate::screensChanged);
    };
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this, watch](QScreen* screen) {
        watch(screen);
        screensChanged();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &AppDelegate::screensChanged);
}

void AppDelegate::screensChanged()
{
    if (!m_panel)
        return;
    if (const auto origin = savedOrigin(m_panel->size()))
        m_panel->move(*origin);
    closeFlyout();
}

void AppDelegate::scheduleStartupMoves(const QProcessEnvironment& environment)
{
    if (environment.contains(QStringLiteral("VANTRIL_MOVE"))) {
        const QStringList parts = environment.value(QStringLiteral("VANTRIL_MOVE")).split(QLatin1Char(','));
        bool okX = false;
        bool okY = false;
        const double dx = parts.size() == 2 ? parts.at(0).toDouble(&okX) : 0;
        const double dy = parts.size() == 2 ? parts.at(1).toDouble(&okY) : 0;
        if (okX && okY) {
            QTimer::singleShot(500, this, [this, dx, dy] {
                // The offset counts y upwards, like the saved position.
                m_panel->move(m_panel->pos() + QPoint(qRound(dx), -qRound(dy)));
            });
        }
    }
    if (environment.contains(QStringLiteral("VANTRIL_OPEN"))) {
        const QString id = environment.value(QStringLiteral("VANTRIL_OPEN"));
        QTimer::singleShot(1200, this, [this, id] {
            const auto spec = Editing::button(m_document->cfg(), id);
            if (!spec)
                return;
            QRectF frame = m_drag.barFrames().value(id);
            if (frame.isNull()) {
                const QList<ButtonSpec>& top = m_document->cfg().buttons;
                const auto at =
                    std::find_if(top.begin(), top.end(), [&](const ButtonSpec& b) { return b.title == id; });
                const qsizetype index = at == top.end() ? 0 : at - top.begin();
                frame = QRectF(12 + 110 * index, 0, 100, 40);
            }
            tapped(*spec, frame);
        });
    }
}

void AppDelegate::tapped(const ButtonSpec& spec, const QRectF& frameInBar)
{
    using Kind = TapRouting::Route::Kind;
    const TapRouting::Route route = TapRouting::onBar(spec, m_flyouts->openGroup());
    closeFlyout();
    switch (route.kind) {
    case Kind::CloseFlyout:
        break;
    case Kind::OpenStack:
        m_flyouts->showFlyout(route.items, route.id, frameInBar);
        break;
    case Kind::OpenFolder:
        m_flyouts->showFolder(route.path, route.id, frameInBar, route.root);
        break;
    case Kind::Run:
        m_actions->run(spec);
        break;
    }
}

void AppDelegate::tappedInFlyout(const ButtonSpec& spec)
{
    using Kind = TapRouting::Route::Kind;
    const TapRouting::Route route =
        TapRouting::inFlyout(spec, m_flyouts->openGroup(), m_flyouts->listingRoot());
    if (route.kind == Kind::OpenFolder) {
        m_flyouts->showFolder(route.path, route.id, m_flyouts->anchor(), route.root);
        return;
    }
    closeFlyout();
    m_actions->run(spec);
}

void AppDelegate::closeFlyout()
{
    m_flyouts->closeFlyout();
}

void AppDelegate::removeButton(const ButtonSpec& spec)
{
    BarConfig& cfg = m_document->cfg();
    if (const auto found = Editing::button(cfg, spec.title); found && found->isLocked()) {
        m_platform->beeper().beep();
        return;
    }
    if (Editing::detach(cfg, spec.title))
        m_document->commit();
}

void AppDelegate::toggleLock(const ButtonSpec& spec)
{
    BarConfig& cfg = m_document->cfg();
    auto found = Editing::button(cfg, spec.title);
    if (!found)
        return;
    found->locked = found->isLocked() ? std::nullopt : std::optional<bool>(true);
    Editing::replace(cfg, spec.title, *found);
    m_document->commit();
}

void AppDelegate::moveToGlobal(const ButtonSpec& spec)
{
    BarConfig& cfg = m_document->cfg();
    if (auto detached = Editing::detach(cfg, spec.title)) {
        cfg.buttons.append(*detached);
        m_document->commit();
    }
}

void AppDelegate::showBackups()
{
    QDir().mkpath(Config::backupsDir());
    m_platform->launcher().open(QUrl::fromLocalFile(Config::backupsDir()));
}

void AppDelegate::editConfig()
{
    m_platform->launcher().open(QUrl::fromLocalFile(Config::buttonsPath()));
}
