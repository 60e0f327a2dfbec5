#include "ApplicationOfWindow.h"

#include "platform/freedesktop/DesktopEntries.h"

#include <QFileInfo>
#include <QSet>

namespace {

/// Terminals whose desktop entry may be missing or uncategorised.
bool isTerminalClass(const QString& windowClass)
{
    static const QSet<QString> classes = {
        QStringLiteral("xterm"),
        QStringLiteral("uxterm"),
        QStringLiteral("urxvt"),
        QStringLiteral("rxvt"),
        QStringLiteral("gnome-terminal"),
        QStringLiteral("gnome-terminal-server"),
        QStringLiteral("konsole"),
        QStringLiteral("alacritty"),
        QStringLiteral("kitty"),
        QStringLiteral("xfce4-terminal"),
        QStringLiteral("terminator"),
        QStringLiteral("tilix"),
        QStringLiteral("st-256color"),
        QStringLiteral("foot"),
        QStringLiteral("org.wezfurlong.wezterm"),
        QStringLiteral("lxterminal"),
        QStringLiteral("mate-terminal"),
        QStringLiteral("qterminal"),
        QStringLiteral("sakura"),
        QStringLiteral("guake"),
        QStringLiteral("terminology"),
        QStringLiteral("kgx"),
        QStringLiteral("ptyxis"),
    };
    return classes.contains(windowClass.toLower());
}

} // namespace

std::optional<ApplicationIdentity> applicationOfWindow(const WindowNames& window)
{
    const QString executable = window.pid > 0
                                   ? QFileInfo(QStringLiteral("/proc/%1/exe").arg(window.pid)).symLinkTarget()
                                   : QString();
    const QString executableName = QFileInfo(executable).fileName();

    ApplicationIdentity app;
    app.ownId = window.ownId;
    app.windowClass = window.windowClass;
    app.instance = window.instance;
    app.isTerminal = isTerminalClass(window.windowClass);
    // A window that names nothing (one already gone names nothing) matches no entry, and looking through
    // every installed one for it would be a waste.
    const bool named = !window.ownId.isEmpty() || !window.instance.isEmpty() ||
                       !window.windowClass.isEmpty() || !executableName.isEmpty();
    const auto entry = named ? DesktopEntries::entryForWindow(window.ownId, window.instance,
                                                              window.windowClass, executableName)
                             : std::nullopt;
    if (entry) {
        app.id = entry->id;
        app.name = entry->name;
        app.desktopEntry = entry->id;
        app.isTerminal = app.isTerminal || entry->isTerminal;
        return app;
    }
    app.id = !window.ownId.isEmpty()         ? window.ownId
             : !window.windowClass.isEmpty() ? window.windowClass
                                             : executableName;
    if (app.id.isEmpty())
        return std::nullopt;
    app.name = window.windowClass.isEmpty() ? app.id : window.windowClass;
    return app;
}
