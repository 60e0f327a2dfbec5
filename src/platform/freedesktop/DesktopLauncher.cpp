#include "DesktopLauncher.h"

#include "platform/FileKind.h"
#include "platform/freedesktop/DesktopEntries.h"
#include "platform/freedesktop/DetachedProcess.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <pwd.h>
#include <unistd.h>

void DesktopLauncher::startDetached(const QString& program, const QStringList& arguments)
{
    DetachedProcess::start(program, arguments);
}

QString DesktopLauncher::loginShell()
{
    QString shell = qEnvironmentVariable("SHELL");
    if (shell.isEmpty()) {
        if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_shell)
            shell = QFile::decodeName(entry->pw_shell);
    }
    const QString name = QFileInfo(shell).fileName();
    // csh and tcsh accept -l only as their sole option, so "-lc" would fail there.
    if (shell.isEmpty() || name == QLatin1String("csh") || name == QLatin1String("tcsh") ||
        !QFileInfo(shell).isExecutable())
        return QStringLiteral("/bin/sh");
    return shell;
}

void DesktopLauncher::open(const QUrl& url)
{
    // GIO first: it honours the same mimeapps.list as every desktop and needs no helper script, and it
    // hands a file only to the application chosen for its type.
    if (DesktopEntries::openWithDefault(url.toString(QUrl::FullyEncoded)))
        return;
    // xdg-open still knows a few desktops' own tools and $BROWSER, but it hands files to each desktop's
    // own opener (exo-open, kde-open, …), some of which start the desktop entries and programs they are
    // given: those stay with GIO alone, and so do files that are no document at all.
    if (url.isLocalFile()) {
        const FileKind kind = fileKind(url.toLocalFile());
        if (kind == FileKind::Program || kind == FileKind::DesktopEntry || kind == FileKind::Refused)
            return;
    }
    QDesktopServices::openUrl(url);
}

bool DesktopLauncher::launchApplication(const QString& name, const QStringList& files)
{
    return DesktopEntries::launch(name, files);
}

QList<InstalledApplication> DesktopLauncher::installedApplications()
{
    return DesktopEntries::installed();
}
