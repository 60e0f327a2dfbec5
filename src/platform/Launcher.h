#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

/// An application the desktop's menus offer.
struct InstalledApplication
{
    QString name;
    QString id; ///< the desktop-entry id without ".desktop"
};

/// Starting programs and opening documents. Nothing here waits for a child or reports a failure:
/// a button that cannot start its program simply does nothing.
class Launcher
{
public:
    Launcher() = default;
    virtual ~Launcher() = default;
    Q_DISABLE_COPY_MOVE(Launcher)

    /// Starts a program detached from the bar, inheriting its environment, folder and streams.
    virtual void startDetached(const QString& program, const QStringList& arguments) = 0;
    /// The user's login shell: $SHELL, else the password database, else /bin/sh.
    virtual QString loginShell() = 0;
    /// Opens a file, folder or address with the user's default application for it.
    virtual void open(const QUrl& url) = 0;
    /// Starts the application that `name` resolves to (a desktop-entry path, id or name, a well-known
    /// application role, or a program on PATH), with files to open, if any; false when none was found.
    virtual bool launchApplication(const QString& name, const QStringList& files) = 0;
    /// The applications shown in the desktop's menus, by name.
    virtual QList<InstalledApplication> installedApplications() = 0;
};
