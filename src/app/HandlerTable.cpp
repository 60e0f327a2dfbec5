#include "HandlerTable.h"

#include "app/AppDelegate.h"
#include "app/BarVisibility.h"
#include "bar/FlyoutController.h"
#include "config/Presets.h"
#include "dragdrop/Editing.h"
#include "platform/Platform.h"

#include <QApplication>
#include <QPointer>

namespace {

/// Wraps `work` so that it runs only while the controller lives, else returns `fallback`.
template<typename Result, typename... Args, typename Work>
std::function<Result(Args...)> weakly(AppDelegate& delegate, Work work, Result fallback = Result())
{
    QPointer<AppDelegate> weak(&delegate);
    return [weak, work, fallback](Args... args) -> Result {
        if (!weak)
            return fallback;
        return work(*weak, args...);
    };
}

template<typename... Args, typename Work>
std::function<void(Args...)> weaklyDo(AppDelegate& delegate, Work work)
{
    QPointer<AppDelegate> weak(&delegate);
    return [weak, work](Args... args) {
        if (weak)
            work(*weak, args...);
    };
}

} // namespace

BarHandlers makeHandlers(AppDelegate& d)
{
    BarHandlers h;
    h.tap = weaklyDo<const ButtonSpec&, const QRectF&>(
        d, [](AppDelegate& a, const ButtonSpec& spec, const QRectF& frame) { a.tapped(spec, frame); });
    h.tapInFlyout = weaklyDo<const ButtonSpec&>(
        d, [](AppDelegate& a, const ButtonSpec& spec) { a.tappedInFlyout(spec); });
    h.isListing = weakly<bool>(d, [](AppDelegate& a) { return a.flyouts().listingRoot().has_value(); });
    h.remove =
        weaklyDo<const ButtonSpec&>(d, [](AppDelegate& a, const ButtonSpec& spec) { a.removeButton(spec); });
    h.toggleLock =
        weaklyDo<const ButtonSpec&>(d, [](AppDelegate& a, const ButtonSpec& spec) { a.toggleLock(spec); });
    h.lockAll = weaklyDo<bool>(d, [](AppDelegate& a, bool locked) { a.document().lockAll(locked); });
    h.moveToGlobal =
        weaklyDo<const ButtonSpec&>(d, [](AppDelegate& a, const ButtonSpec& spec) { a.moveToGlobal(spec); });
    h.isContext = weakly<bool, const ButtonSpec&>(d, [](AppDelegate& a, const ButtonSpec& spec) {
        return Editing::isContext(a.document().cfg(), spec.title);
    });
    h.contextName = weakly<std::optional<QString>>(d, [](AppDelegate& a) {
        return a.contextApp() ? std::optional<QString>(a.contextApp()->name) : std::nullopt;
    });
    h.moveToContext =
        weaklyDo<const ButtonSpec&>(d, [](AppDelegate& a, const ButtonSpec& spec) { a.moveToContext(spec); });
    h.dragMove = weaklyDo<const ButtonSpec&, const QPointF&>(
        d, [](AppDelegate& a, const ButtonSpec& spec, const QPointF& at) { a.dragMoved(spec, at); });
    h.dragEnd = weaklyDo<const ButtonSpec&, const QPointF&>(
        d, [](AppDelegate& a, const ButtonSpec& spec, const QPointF& at) { a.dragEnded(spec, at); });
    h.fileHover = weaklyDo<const QPointF&>(d, [](AppDelegate& a, const QPointF& at) { a.fileHover(at); });
    h.fileHoverEnd = weaklyDo<>(d, [](AppDelegate& a) { a.fileHoverEnd(); });
    h.fileDrop = weaklyDo<const QList<QUrl>&, const QPointF&>(
        d, [](AppDelegate& a, const QList<QUrl>& urls, const QPointF& at) { a.fileDrop(urls, at); });
    h.presetNames = weakly<QStringList>(d, [](AppDelegate&) {
        QStringList names;
        for (const AppPreset& preset : Presets::all())
            names.append(preset.name);
        return names;
    });
    h.addPreset = weaklyDo<const QString&>(
        d, [](AppDelegate& a, const QString& name) { a.document().addPreset(name); });
    h.appliedPresetNames =
        weakly<QStringList>(d, [](AppDelegate& a) { return Presets::appliedNames(a.document().cfg()); });
    h.removePreset = weaklyDo<const QString&>(
        d, [](AppDelegate& a, const QString& name) { a.document().removePreset(name); });
    h.backupInfos = weakly<QList<BackupInfo>>(d, [](AppDelegate&) { return Config::backupInfos(); });
    h.restoreBackup =
        weaklyDo<const QString&>(d, [](AppDelegate& a, const QString& path) { a.document().restore(path); });
    h.backupNow = weaklyDo<>(d, [](AppDelegate& a) { a.document().backupNow(); });
    h.showBackups = weaklyDo<>(d, [](AppDelegate& a) { a.showBackups(); });
    h.undo = weaklyDo<>(d, [](AppDelegate& a) { a.document().undo(); });
    h.autoHide = weakly<bool>(d, [](AppDelegate& a) { return a.preferences().autoHide(); });
    h.toggleAutoHide = weaklyDo<>(d, [](AppDelegate& a) { a.barVisibility().toggleAutoHide(); });
    h.hideBar = weaklyDo<>(d, [](AppDelegate& a) { a.barVisibility().hide(true); });
    h.canCheckForUpdates = weakly<bool>(d, [](AppDelegate& a) { return a.hasUpdater(); });
    h.checkForUpdates = weaklyDo<>(d, [](AppDelegate& a) { a.checkForUpdates(); });
    h.launchAtLogin = weakly<bool>(d, [](AppDelegate& a) { return a.platform().autostart().isEnabled(); });
    h.toggleLaunchAtLogin = weaklyDo<>(d, [](AppDelegate& a) { a.toggleLaunchAtLogin(); });
    h.edit = weaklyDo<const ButtonSpec&>(d, [](AppDelegate& a, const ButtonSpec& spec) {
        // The menu's copy may be stale; edit what the document holds now.
        if (const auto current = Editing::button(a.document().cfg(), spec.title))
            a.openEditor(current, std::nullopt, false);
    });
    h.add =
        weaklyDo<const std::optional<QString>&>(d, [](AppDelegate& a, const std::optional<QString>& parent) {
            a.openEditor(std::nullopt, parent, false);
        });
    h.newStack = weaklyDo<>(d, [](AppDelegate& a) { a.openEditor(std::nullopt, std::nullopt, true); });
    h.addContext =
        weaklyDo<>(d, [](AppDelegate& a) { a.openEditor(std::nullopt, QStringLiteral("@context"), false); });
    h.editConfigFile = weaklyDo<>(d, [](AppDelegate& a) { a.editConfig(); });
    h.quit = weaklyDo<>(d, [](AppDelegate&) { QApplication::quit(); });
    return h;
}
