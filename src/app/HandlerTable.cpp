#include "HandlerTable.h"

#include "actions/Actions.h"
#include "app/BarPlacement.h"
#include "app/BarVisibility.h"
#include "app/ButtonCommands.h"
#include "app/ConfigSession.h"
#include "app/ContextTracker.h"
#include "app/EditorLauncher.h"
#include "app/Preferences.h"
#include "app/TapRunner.h"
#include "app/UpdateCheck.h"
#include "bar/FlyoutController.h"
#include "config/Backups.h"
#include "config/Config.h"
#include "config/Editing.h"
#include "config/Presets.h"
#include "dragdrop/DragState.h"
#include "platform/Log.h"
#include "platform/Platform.h"

#include <QApplication>
#include <QDir>
#include <QPointer>

namespace {

/// Wraps `work` so that it runs only while the owner lives, else returns `fallback`.
template<typename Result, typename... Args, typename Work>
std::function<Result(Args...)> weakly(QObject& owner, Work work, Result fallback = Result())
{
    QPointer<QObject> weak(&owner);
    return [weak, work, fallback](Args... args) -> Result { return weak ? work(args...) : fallback; };
}

template<typename... Args, typename Work>
std::function<void(Args...)> weaklyDo(QObject& owner, Work work)
{
    QPointer<QObject> weak(&owner);
    return [weak, work](Args... args) {
        if (weak)
            work(args...);
    };
}

using Spec = const ButtonSpec&;

void addButtonCommands(BarHandlers& h, const HandlerParts& p, QObject& o)
{
    ButtonCommands& b = p.buttons;
    h.remove = weaklyDo<Spec>(o, [&b](Spec spec) { b.remove(spec); });
    h.toggleLock = weaklyDo<Spec>(o, [&b](Spec spec) { b.toggleLock(spec); });
    h.moveToGlobal = weaklyDo<Spec>(o, [&b](Spec spec) { b.moveToGlobal(spec); });
    h.moveToContext = weaklyDo<Spec>(o, [&b](Spec spec) { b.moveToContext(spec); });
    // Chips move only on the bar, not while a folder listing is open.
    const auto bar = [&flyouts = p.flyouts, &placement = p.placement]() -> std::optional<QRectF> {
        return flyouts.listingRoot() ? std::nullopt : placement.frame();
    };
    h.dragMove = weaklyDo<Spec, const QPointF&>(o, [&b, bar](Spec spec, const QPointF& at) {
        if (const auto frame = bar())
            b.dragMoved(spec, at, *frame);
    });
    h.dragEnd = weaklyDo<Spec, const QPointF&>(o, [&b, bar](Spec spec, const QPointF& at) {
        if (const auto frame = bar())
            b.dragEnded(spec, at, *frame);
    });
    h.fileHover = weaklyDo<const QPointF&>(o, [&b](const QPointF& at) { b.fileHover(at); });
    h.fileHoverEnd = weaklyDo<>(o, [&b] { b.fileHoverEnd(); });
    h.fileDrop = weaklyDo<const QList<QUrl>&, const QPointF&>(
        o, [&b](const QList<QUrl>& urls, const QPointF& at) { b.fileDrop(urls, at); });
}

void addDocumentCommands(BarHandlers& h, const HandlerParts& p, QObject& o)
{
    ConfigSession& s = p.session;
    h.isContext =
        weakly<bool, Spec>(o, [&s](Spec spec) { return Editing::isContext(s.document().cfg(), spec.title); });
    h.lockAll = weaklyDo<bool>(o, [&s](bool locked) { s.document().lockAll(locked); });
    h.presetNames = weakly<QStringList>(o, [] {
        QStringList names;
        for (const AppPreset& preset : Presets::all())
            names.append(preset.name);
        return names;
    });
    h.addPreset = weaklyDo<const QString&>(o, [&s](const QString& name) { s.document().addPreset(name); });
    h.appliedPresetNames = weakly<QStringList>(o, [&s] { return Presets::appliedNames(s.document().cfg()); });
    h.removePreset =
        weaklyDo<const QString&>(o, [&s](const QString& name) { s.document().removePreset(name); });
    h.backupInfos = weakly<QList<BackupInfo>>(o, [] { return Config::backupInfos(); });
    h.restoreBackup = weaklyDo<const QString&>(o, [&s](const QString& path) { s.document().restore(path); });
    h.backupNow = weaklyDo<>(o, [&s] { s.document().backupNow(); });
    h.undo = weaklyDo<>(o, [&s] { s.document().undo(); });
    const DragState& drag = p.drag;
    h.canUndo = weakly<bool>(o, [&drag] { return drag.canUndo(); });
    Actions& a = p.actions;
    h.showBackups = weaklyDo<>(o, [&a] {
        QDir().mkpath(Config::backupsDir());
        a.openDocument(Config::backupsDir());
    });
    h.editConfigFile = weaklyDo<>(o, [&a] { a.openDocument(Config::buttonsPath()); });
}

void addEditorCommands(BarHandlers& h, const HandlerParts& p, QObject& o)
{
    EditorLauncher& e = p.editor;
    ConfigSession& s = p.session;
    h.edit = weaklyDo<Spec>(o, [&e, &s](Spec spec) {
        // The menu's copy may be stale; edit what the document holds now.
        if (const auto current = Editing::button(s.document().cfg(), spec.title))
            e.open(current, std::nullopt, false);
    });
    h.add = weaklyDo<const std::optional<QString>&>(
        o, [&e](const std::optional<QString>& parent) { e.open(std::nullopt, parent, false); });
    h.newStack = weaklyDo<>(o, [&e] { e.open(std::nullopt, std::nullopt, true); });
    h.addContext = weaklyDo<>(o, [&e] { e.open(std::nullopt, QStringLiteral("@context"), false); });
}

void addShellCommands(BarHandlers& h, const HandlerParts& p, QObject& o)
{
    BarVisibility& v = p.visibility;
    Preferences& preferences = p.preferences;
    h.autoHide = weakly<bool>(o, [&preferences] { return preferences.autoHide(); });
    h.trayIconShown = weakly<bool>(o, [&preferences] { return preferences.showStatusItem(); });
    h.toggleAutoHide = weaklyDo<>(o, [&v] { v.toggleAutoHide(); });
    h.hideBar = weaklyDo<>(o, [&v] { v.hide(true); });
    h.toggleBar = weaklyDo<>(o, [&v] { v.toggleBar(); });
    h.barShown = weakly<bool>(o, [&v] { return v.isShown(); });
    UpdateCheck* updater = p.updater;
    h.canCheckForUpdates = weakly<bool>(o, [updater] { return updater != nullptr; });
    h.checkForUpdates = weaklyDo<>(o, [updater] {
        if (updater)
            updater->check();
    });
    Autostart& autostart = p.platform.autostart();
    h.launchAtLogin = weakly<bool>(o, [&autostart] { return autostart.isEnabled(); });
    h.toggleLaunchAtLogin = weaklyDo<>(o, [&autostart] {
        if (const auto error = autostart.setEnabled(!autostart.isEnabled()))
            Log::line(QStringLiteral("Launch at login failed: ") + *error);
    });
    h.quit = weaklyDo<>(o, [] { QApplication::quit(); });
}

} // namespace

BarHandlers makeHandlers(const HandlerParts& p, QObject& o)
{
    BarHandlers h;
    TapRunner& taps = p.taps;
    h.tap = weaklyDo<Spec, const QRectF&>(
        o, [&taps](Spec spec, const QRectF& frame) { taps.onBar(spec, frame); });
    h.tapInFlyout = weaklyDo<Spec>(o, [&taps](Spec spec) { taps.inFlyout(spec); });
    FlyoutController& flyouts = p.flyouts;
    h.isListing = weakly<bool>(o, [&flyouts] { return flyouts.listingRoot().has_value(); });
    ContextTracker& context = p.context;
    h.contextName = weakly<std::optional<QString>>(o, [&context] {
        return context.current() ? std::optional<QString>(context.current()->name) : std::nullopt;
    });
    addButtonCommands(h, p, o);
    addDocumentCommands(h, p, o);
    addEditorCommands(h, p, o);
    addShellCommands(h, p, o);
    return h;
}
