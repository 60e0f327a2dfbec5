#pragma once

#include "platform/Launcher.h"

#include <QString>
#include <QStringList>
#include <optional>

/// Finding and starting applications through the installed desktop entries (GIO underneath).
namespace DesktopEntries {

/// Starts the application `name` resolves to, in this order: an absolute path to a desktop entry or
/// an executable, either only when it is a regular file; a desktop-entry id, with or without
/// ".desktop"; an entry's name, ignoring case; a well-known application of another desktop ("Safari",
/// "Mail", "Terminal", "Finder", "Calendar", "Notes", "TextEdit") as the user's default application for
/// that role; a program on PATH.
/// `files` are handed to the application to open. False when nothing was found or started.
bool launch(const QString& name, const QStringList& files);

/// The installed application a window belongs to.
struct WindowApplication
{
    QString id; ///< the desktop-entry id without ".desktop"
    QString name;
    bool isTerminal = false;
};
/// Matches a window to a desktop entry: by the id the window names itself (GTK and KDE set one), else
/// an entry whose id or StartupWMClass is the window's class or instance, else one whose program is
/// the window's executable.
std::optional<WindowApplication> entryForWindow(const QString& namedId, const QString& instance,
                                                const QString& windowClass, const QString& executable);

/// The entries the desktop's menus show, sorted by name.
QList<InstalledApplication> installed();

/// Opens a URL (a file's too) with the user's default application for it.
bool openWithDefault(const QString& uri);

} // namespace DesktopEntries
