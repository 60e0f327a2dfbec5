#include "AppDelegate.h"

#include "actions/Paths.h"
#include "actions/ShortcutList.h"
#include "app/BarVisibility.h"
#include "app/HandlerTable.h"
#include "app/ShellMenus.h"
#include "app/StartupCommands.h"
#include "app/Updater.h"
#include "bar/BarPanel.h"
#include "bar/BarView.h"
#include "bar/FlyoutController.h"
#include "bar/Geometry.h"
#include "bar/RunQuestionBox.h"
#include "bar/TapRouting.h"
#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigReader.h"
#include "config/ConfigWatcher.h"
#include "config/FileIO.h"
#include "diagnostics/SessionReport.h"
#include "dragdrop/DragEditing.h"
#include "dragdrop/Editing.h"
#include "editor/EditView.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Screens.h"
#include "platform/Session.h"

#include <QDir>
#include <QGuiApplication>
#include <QScreen>
#include <QUrl>
#include <limits>

namespace {

/// Delay between the last move of the bar and the saving of its place.
constexpr int savePositionDelayMs = 500;

/// How wide the bar may grow on its screen before chips move into the overflow: the available width,
/// less the gap kept from either side.
int widthBudget(const std::optional<ScreenInfo>& screen)
{
    return screen ? std::max(0, screen->available.width() - 2 * Geometry::edgeGap)
                  : std::numeric_limits<int>::max();
}

/// The button VANTRIL_SHOW_EDITOR names: top-level buttons first, then stack members; the
/// applications' sets are not searched.
std::optional<ButtonSpec> shownInEditor(const BarConfig& cfg, const QString& id)
{
    if (id.isEmpty())
        return std::nullopt;
    for (const ButtonSpec& top : cfg.buttons) {
        if (top.title == id)
            return top;
    }
    for (const ButtonSpec& top : cfg.buttons) {
        for (const ButtonSpec& member : top.children.value_or(QList<ButtonSpec>())) {
            if (member.title == id)
                return member;
        }
    }
    return std::nullopt;
}

} // namespace

AppDelegate::AppDelegate(std::unique_ptr<Platform> platform, const QUrl& updateFeed)
    : m_platform(std::move(platform))
    , m_runQuestion(std::make_unique<RunQuestionBox>())
    , m_actions(std::make_unique<Actions>(*m_platform, m_runQuestion.get()))
{
    if (!updateFeed.isEmpty())
        m_updater = new Updater(updateFeed, this);
    m_visibility = new BarVisibility(*m_platform, m_preferences, this);
    m_hotkey = std::make_unique<Hotkey>(m_platform->hotkey(), [this] { m_visibility->toggleBar(); });
    m_handlers = makeHandlers(*this);
    m_flyouts = std::make_unique<FlyoutController>(*m_platform, m_handlers, m_drag);
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

void AppDelegate::loadConfiguration()
{
    m_document = std::make_unique<ConfigDocument>(Config::loadDocument());
    m_document->setBeep([this] { m_platform->beeper().beep(); });
    m_document->setAfterChange([this] {
        m_drag.setCanUndo(m_document->canUndo());
        closeFlyout();
        reloadBar();
    });
    // Every launch leaves a backup of the configuration it started from. A file that is still unreadable
    // was kept by the load already; a second copy a second later would only pile up.
    if (const auto bytes = FileIO::read(Config::buttonsPath()); bytes && ConfigReader::decode(*bytes))
        Config::snapshot(true);
}

void AppDelegate::finishLaunching(const QProcessEnvironment& environment)
{
    createBar(environment.contains(QStringLiteral("VANTRIL_TOP")));
    m_menus = new ShellMenus(*this);
    connect(m_barView, &BarView::menuRequested, m_menus, &ShellMenus::showBarMenu);
    connect(m_barView, &BarView::overflowTapped, this, &AppDelegate::overflowTapped);
    m_menus->updateTrayIcon();
    connect(m_panel.get(), &BarPanel::moved, this, &AppDelegate::barMoved);
    watchScreens();

    StartupCommands::applyConfigCommands(*m_document, environment);
    if (const auto found =
            shownInEditor(m_document->cfg(), environment.value(QStringLiteral("VANTRIL_SHOW_EDITOR"))))
        QTimer::singleShot(1000, this, [this, found] { openEditor(found, std::nullopt, false); });
    if (environment.contains(QStringLiteral("VANTRIL_CHECK_UPDATES")) && m_updater)
        QTimer::singleShot(1500, this, &AppDelegate::checkForUpdates);

    m_watcher = std::make_unique<ConfigWatcher>(
        [this]() -> const BarConfig& { return m_document->cfg(); },
        [this](const BarConfig& edited) { m_document->adoptExternal(edited); });
    m_watcher->start();
    trackFrontApp(environment);
    updateHotkey();
    // Under Wayland the X server's facilities reach only XWayland's windows: the user hears it once, with
    // what works instead, rather than wondering why a chip types nothing.
    const Session session = Session::detect(environment);
    for (const QString& line : SessionReport::startupLines(SessionReport::gather(*m_platform), session))
        Log::line(line);
    m_visibility->attach(m_panel.get(), m_flyouts.get(),
                         [this] { return m_editor && m_editor->isVisible(); });
    m_visibility->start();
    scheduleStartupMoves(environment);
}

void AppDelegate::trackFrontApp(const QProcessEnvironment& environment)
{
    // A fixed context for scripts and tests; a value that does not name one turns contexts off.
    if (environment.contains(QStringLiteral("VANTRIL_CONTEXT_APP"))) {
        m_contextApp = AppContext::fromEnvironment(environment.value(QStringLiteral("VANTRIL_CONTEXT_APP")));
        if (m_contextApp)
            reloadBar();
        return;
    }
    FrontApplication& front = m_platform->frontApplication();
    if (const auto app = front.current())
        adopt(*app);
    front.watch([this](const ContextApp& app) { adopt(app); });
}

void AppDelegate::adopt(const ContextApp& app)
{
    // Two windows of one program may still go by different names (xterm and xterm -class MyTool).
    const bool changed = !m_contextApp || m_contextApp->id != app.id ||
                         AppContext::names(*m_contextApp) != AppContext::names(app);
    m_contextApp = app;
    m_actions->keys().setPasteKeys(app.isTerminal ? QStringLiteral("ctrl+shift+v")
                                                  : QStringLiteral("ctrl+v"));
    if (changed) {
        closeFlyout();
        reloadBar();
    }
}

void AppDelegate::createBar(bool top)
{
    m_panel = std::make_unique<BarPanel>(m_platform->panelWindows(), QStringLiteral("Vantril"));
    m_barView = new BarView(m_drag, m_handlers);
    const QList<ScreenInfo> screens = m_platform->screens().all();
    m_lastWidthBudget =
        widthBudget(screens.isEmpty() ? std::nullopt : std::optional<ScreenInfo>(screens.first()));
    m_barView->rebuild(m_document->cfg(), contextButtons(), !top, m_lastWidthBudget);
    m_panel->setContent(m_barView);
    m_flyouts->setBar(m_panel.get());

    const QSize size = m_panel->fittingSize();
    std::optional<QPoint> origin = top ? std::nullopt : savedOrigin(size);
    if (!origin && !screens.isEmpty())
        origin = Geometry::defaultOrigin(size, screens.first().available, top);
    if (origin)
        m_panel->move(*origin);
    m_panel->showPanel();
    reloadBar();
}

QList<ButtonSpec> AppDelegate::contextButtons() const
{
    return m_document ? AppContext::contextButtons(m_document->cfg(), m_contextApp) : QList<ButtonSpec>();
}

void AppDelegate::reloadBar()
{
    if (!m_panel || !m_barView)
        return;
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform->screens().screenOf(frame);
    if (screen)
        m_lastExpandsUp = Geometry::expandsUp(frame, screen->frame);
    if (m_document)
        updateHotkey();
    m_lastWidthBudget = widthBudget(screen);
    m_barView->rebuild(m_document->cfg(), contextButtons(), m_lastExpandsUp, m_lastWidthBudget);

    const QSize size = m_panel->fittingSize();
    if (size.width() <= 0)
        return;
    const QRect available = screen ? screen->available : frame;
    m_panel->setFrame(Geometry::refit(frame, size, available));
}

void AppDelegate::barMoved()
{
    closeFlyout();
    const QRect frame = m_panel->frameGeometry();
    const auto screen = m_platform->screens().screenOf(frame);
    const bool up = screen ? Geometry::expandsUp(frame, screen->frame) : true;
    if (up != m_lastExpandsUp || widthBudget(screen) != m_lastWidthBudget)
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
    closeFlyout();
    if (const auto origin = savedOrigin(m_panel->size()))
        m_panel->move(*origin);
    // A screen that shrank, or a bar now on another one, may hold fewer chips (or more).
    reloadBar();
}

void AppDelegate::scheduleStartupMoves(const QProcessEnvironment& environment)
{
    if (environment.contains(QStringLiteral("VANTRIL_MOVE"))) {
        if (const auto offset = Geometry::offsetFrom(environment.value(QStringLiteral("VANTRIL_MOVE")))) {
            QTimer::singleShot(500, this, [this, offset = *offset] {
                const QRect frame = m_panel->frameGeometry();
                const auto screen = m_platform->screens().screenOf(frame);
                const QRect available = screen ? screen->available : frame;
                m_panel->move(Geometry::movedBy(m_panel->pos(), offset, m_panel->size(), available));
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
    if (route.kind == Kind::OpenStack) { // a stack in the overflow: its flyout takes the overflow's place
        const QRectF anchor = m_flyouts->anchor();
        closeFlyout();
        m_flyouts->showFlyout(route.items, route.id, anchor);
        return;
    }
    closeFlyout();
    m_actions->run(spec);
}

void AppDelegate::overflowTapped(const QList<ButtonSpec>& items, const QRectF& frameInBar)
{
    const TapRouting::Route route = TapRouting::onOverflow(items, m_flyouts->openGroup());
    closeFlyout();
    if (route.kind == TapRouting::Route::Kind::OpenStack)
        m_flyouts->showFlyout(route.items, route.id, frameInBar);
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
    m_actions->openDocument(Config::backupsDir());
}

void AppDelegate::editConfig()
{
    m_actions->openDocument(Config::buttonsPath());
}

void AppDelegate::moveToContext(const ButtonSpec& spec)
{
    if (AppContext::moveToContext(m_document->cfg(), m_contextApp, spec.title))
        m_document->commit();
}

void AppDelegate::clearFeedback()
{
    m_drag.setFeedback(std::nullopt, std::nullopt);
}

void AppDelegate::dragMoved(const ButtonSpec& spec, const QPointF& point)
{
    if (!m_panel || m_flyouts->listingRoot())
        return;
    const auto feedback = DragEditing::dragFeedback(spec, point, QRectF(m_panel->geometry()),
                                                    m_document->cfg(), m_drag.barFrames());
    if (feedback)
        m_drag.setFeedback(feedback->markerX, feedback->highlightGroup);
}

void AppDelegate::dragEnded(const ButtonSpec& spec, const QPointF& point)
{
    if (!m_panel || spec.isLocked() || m_flyouts->listingRoot())
        return;
    const DropTarget target =
        DropTargets::at(point, QRectF(m_panel->geometry()), spec, m_document->cfg(), m_drag.barFrames());
    clearFeedback();
    switch (DragEditing::dropChip(m_document->cfg(), spec, target)) {
    case DragEditing::Outcome::Changed:
        m_document->commit();
        break;
    case DragEditing::Outcome::Refused:
        m_platform->beeper().beep();
        break;
    case DragEditing::Outcome::Unchanged:
        break;
    }
}

void AppDelegate::fileHover(const QPointF& local)
{
    const BarConfig& cfg = m_document->cfg();
    const DropTarget target =
        DropTargets::local(local, std::nullopt, true, true, cfg, contextButtons(), m_drag.barFrames());
    const DropFeedback feedback =
        DropTargets::feedback(target, std::nullopt, std::nullopt, cfg, m_drag.barFrames());
    m_drag.setFeedback(feedback.markerX, feedback.highlightGroup);
}

void AppDelegate::fileHoverEnd()
{
    clearFeedback();
}

void AppDelegate::fileDrop(const QList<QUrl>& urls, const QPointF& local)
{
    clearFeedback();
    if (urls.isEmpty())
        return;
    BarConfig& cfg = m_document->cfg();
    const QList<ButtonSpec> context = contextButtons();
    const DropTarget target =
        DropTargets::local(local, std::nullopt, true, true, cfg, context, m_drag.barFrames());
    if (target.kind == DropTarget::Kind::OpenWith) {
        const QList<ButtonSpec> candidates = QList<ButtonSpec>(cfg.buttons) + context;
        const auto found = std::find_if(candidates.begin(), candidates.end(),
                                        [&](const ButtonSpec& b) { return b.title == target.title; });
        if (found == candidates.end() || !found->argument)
            return;
        QStringList files;
        for (const QUrl& url : urls)
            files.append(url.isLocalFile() ? url.toLocalFile() : url.toString(QUrl::FullyEncoded));
        m_platform->launcher().launchApplication(Paths::expandTilde(*found->argument), files);
        return;
    }
    DragEditing::dropItems(cfg, urls, target);
    m_document->commit();
}

void AppDelegate::updateHotkey()
{
    m_hotkey->update(m_document->cfg().hotkey);
}

void AppDelegate::toggleLaunchAtLogin()
{
    Autostart& autostart = m_platform->autostart();
    if (const auto error = autostart.setEnabled(!autostart.isEnabled()))
        Log::line(QStringLiteral("Launch at login failed: ") + *error);
}

void AppDelegate::checkForUpdates()
{
    if (m_updater)
        m_updater->check();
}

void AppDelegate::openEditor(const std::optional<ButtonSpec>& editing, const std::optional<QString>& parent,
                             bool newStack)
{
    if (m_editor) {
        m_editor->show();
        m_editor->raise();
        m_editor->activateWindow();
        return;
    }
    ButtonSpec initial;
    if (editing) {
        initial = *editing;
    } else if (newStack) {
        initial.action = QStringLiteral("group");
        initial.symbol = QStringLiteral("folder");
        initial.children = QList<ButtonSpec>();
    } else {
        initial.action = QStringLiteral("open");
        initial.symbol = QStringLiteral("doc");
    }
    EditorServices services;
    services.applications = [this] {
        QList<ApplicationChoice> choices;
        for (const InstalledApplication& app : m_platform->launcher().installedApplications())
            choices.append({app.name, app.id});
        return choices;
    };
    services.shortcutNames = ShortcutList::names();
    services.shortcutsFolder = Actions::shortcutsFolder();
    auto* editor = new EditView(initial, !editing, services);
    m_editor = editor;
    const std::optional<QString> oldTitle = editing ? std::optional<QString>(editing->title) : std::nullopt;
    editor->onSave = [this, oldTitle, parent](const ButtonSpec& edited) {
        saveEdited(edited, oldTitle, parent);
    };
    editor->show();
    editor->raise();
    editor->activateWindow();
}

void AppDelegate::saveEdited(ButtonSpec edited, const std::optional<QString>& oldTitle,
                             const std::optional<QString>& parent)
{
    BarConfig& cfg = m_document->cfg();
    edited.title = Editing::uniqueTitle(cfg, edited.title.trimmed(), oldTitle);
    if (oldTitle) {
        if (!Editing::replace(cfg, *oldTitle, edited))
            return; // gone meanwhile, by a hand edit say
    } else if (parent == QLatin1String("@context")) {
        if (const auto index = AppContext::contextSetIndex(cfg, m_contextApp, true))
            (*cfg.appSets)[*index].buttons.append(edited);
        else
            cfg.buttons.append(edited);
    } else if (parent) {
        const auto stack = std::find_if(cfg.buttons.begin(), cfg.buttons.end(),
                                        [&](const ButtonSpec& b) { return b.title == *parent; });
        if (stack == cfg.buttons.end()) {
            cfg.buttons.append(edited);
        } else {
            if (!stack->children)
                stack->children.emplace();
            stack->children->append(edited);
        }
    } else {
        cfg.buttons.append(edited);
    }
    m_document->commit();
}
