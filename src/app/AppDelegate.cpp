#include "AppDelegate.h"

#include "actions/Actions.h"
#include "app/BarPlacement.h"
#include "app/BarVisibility.h"
#include "app/ButtonCommands.h"
#include "app/ConfigSession.h"
#include "app/ContextTracker.h"
#include "app/EditorLauncher.h"
#include "app/HandlerTable.h"
#include "app/Hotkey.h"
#include "app/ShellMenus.h"
#include "app/StartupScript.h"
#include "app/TapRunner.h"
#include "app/UpdateCheck.h"
#include "bar/BarPanel.h"
#include "bar/BarView.h"
#include "bar/FlyoutController.h"
#include "bar/RunQuestionBox.h"
#include "bar/SymbolStore.h"
#include "bar/SymbolView.h"
#include "diagnostics/SessionReport.h"
#include "editor/ItemMenu.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/Session.h"

#include <QTimer>
#include <utility>

AppDelegate::AppDelegate(std::unique_ptr<Platform> platform, std::unique_ptr<UpdateCheck> updater)
    : m_platform(std::move(platform))
    , m_runQuestion(std::make_unique<RunQuestionBox>())
    , m_actions(std::make_unique<Actions>(*m_platform, m_runQuestion.get()))
    , m_session(new ConfigSession(this))
    , m_context(new ContextTracker(m_platform->frontApplication(), this))
    , m_updater(updater.release())
    , m_visibility(new BarVisibility(*m_platform, m_preferences, this))
    , m_editor(new EditorLauncher(m_platform->launcher(), this))
    , m_hotkey(std::make_unique<Hotkey>(m_platform->hotkey(), [this] { m_visibility->toggleBar(); }))
    , m_flyouts(std::make_unique<FlyoutController>(*m_platform, m_handlers, m_drag))
    , m_taps(std::make_unique<TapRunner>(*m_flyouts, *m_actions))
    , m_placement(new BarPlacement(*m_platform, m_preferences, *m_session, *m_context, m_drag, m_handlers,
                                   *m_flyouts, this))
{
    if (m_updater)
        m_updater->setParent(this);
    connectParts();
}

AppDelegate::~AppDelegate()
{
    // The flyout and the bar call back into the platform; they go first.
    m_flyouts.reset();
    delete m_placement;
}

ConfigDocument& AppDelegate::document()
{
    return m_session->document();
}

void AppDelegate::connectParts()
{
    connect(m_session, &ConfigSession::changed, this, [this] {
        m_drag.setCanUndo(m_session->document().canUndo());
        m_flyouts->closeFlyout();
        updateHotkey();
        m_placement->reload();
    });
    connect(m_session, &ConfigSession::refused, this, [this] { m_platform->beeper().beep(); });
    connect(m_context, &ContextTracker::activated, this, [this](const ContextApp& app) {
        m_actions->keys().setPasteKeys(app.isTerminal ? QStringLiteral("ctrl+shift+v")
                                                      : QStringLiteral("ctrl+v"));
    });
    connect(m_context, &ContextTracker::changed, this, [this] {
        m_flyouts->closeFlyout();
        m_placement->reload();
    });
}

void AppDelegate::loadConfiguration(const Config::Loaded& loaded)
{
    m_session->load(loaded);
    m_buttons = std::make_unique<ButtonCommands>(m_session->document(), *m_platform, m_drag, *m_context);
    connect(
        m_editor, &EditorLauncher::saved, this,
        [this](const ButtonSpec& edited, const std::optional<QString>& oldTitle,
               const std::optional<QString>& parent) { m_buttons->saveEdited(edited, oldTitle, parent); });
}

void AppDelegate::finishLaunching(const QProcessEnvironment& environment)
{
    auto* script = new StartupScript(environment, this);
    m_handlers =
        makeHandlers({*m_platform, *m_actions, *m_session, *m_buttons, *m_context, *m_taps, *m_flyouts,
                      *m_placement, *m_visibility, *m_editor, m_preferences, m_drag, m_updater},
                     *this);
    // The application wires the button's menu, which lives above the bar, to the bar's chips.
    m_handlers.chipMenu = [this](const ButtonSpec& spec, const QPoint& at) {
        ItemMenu::popup(spec, m_handlers, at);
    };
    script->fixContext(*m_context);
    m_placement->create(script->barAtTop());
    m_menus = new ShellMenus(m_preferences, m_handlers, this);
    m_handlers.toggleTrayIcon = [this] { m_menus->toggleTrayIcon(); };
    connect(m_placement->view(), &BarView::menuRequested, m_menus, &ShellMenus::showBarMenu);
    connect(
        m_placement->view(), &BarView::overflowTapped, this,
        [this](const QList<ButtonSpec>& items, const QRectF& frame) { m_taps->onOverflow(items, frame); });
    m_visibility->attach(m_placement->panel(), m_flyouts.get(), [this] { return m_editor->isShown(); });

    // Nothing else is needed to see the bar, so the rest waits until it has been painted once: the bar is
    // on screen as soon as it can be, and what follows is done a few milliseconds later. A window manager
    // that never maps the bar only delays it.
    auto settleOnce = [this, script, environment, settled = std::make_shared<bool>(false)] {
        if (!std::exchange(*settled, true))
            settle(*script, environment);
    };
    connect(m_placement->panel(), &BarPanel::firstPainted, this, settleOnce);
    QTimer::singleShot(settleAnywayMs, this, settleOnce);
}

void AppDelegate::settle(StartupScript& script, const QProcessEnvironment& environment)
{
    updateHotkey();
    m_menus->updateTrayIcon();
    m_placement->watchScreens();
    // The backup is of the file as this launch found it, before the start-up commands change it.
    m_session->keepLaunchBackup();
    script.applyConfigCommands(m_session->document());
    m_session->watch();
    script.followContext(*m_context);
    // Under Wayland the X server's facilities reach only XWayland's windows: the user hears it once, with
    // what works instead, rather than wondering why a chip types nothing.
    const Session session = Session::detect(environment);
    for (const QString& line : SessionReport::startupLines(SessionReport::gather(*m_platform), session))
        Log::line(line);
    m_visibility->start();
    // The symbols of this start, for the next one to show without the icon themes.
    if (const SymbolView::Drawn drawn = SymbolView::drawn(); drawn.fresh)
        m_symbolsKept = SymbolStore::write(SymbolStore::encode(drawn.pictures, SymbolStore::stamp()));
    script.scheduleLaterSteps({m_session->document(), *m_placement, *m_editor, *m_taps, m_drag, m_updater});
}

void AppDelegate::updateHotkey()
{
    m_hotkey->update(m_session->document().cfg().hotkey);
}
