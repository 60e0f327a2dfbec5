#include "Actions.h"

#include "actions/Paths.h"
#include "config/BarConfig.h"
#include "config/Config.h"
#include "platform/Log.h"
#include "platform/Platform.h"

#include <QDir>
#include <QFileInfo>

namespace {

bool isSpaceOrTab(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

QString trimSpacesAndTabs(const QString& text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isSpaceOrTab(text.at(begin)))
        ++begin;
    while (end > begin && isSpaceOrTab(text.at(end - 1)))
        --end;
    return text.mid(begin, end - begin);
}

/// Desktop entries and programs are started rather than opened as documents, as a double click in a
/// file manager would.
bool isLaunchable(const QFileInfo& info)
{
    if (info.isDir())
        return false;
    return info.suffix() == QLatin1String("desktop") || info.isExecutable();
}

} // namespace

Actions::Actions(Platform& platform)
    : m_platform(platform)
    , m_keys(platform.input(), platform.clipboard(), platform.beeper(), platform.scheduler())
{}

QString Actions::shortcutsFolder()
{
    return QDir(Config::dir()).filePath(QStringLiteral("shortcuts"));
}

void Actions::run(const ButtonSpec& button)
{
    const QString& kind = button.action;
    const std::optional<QString>& argument = button.argument;
    if (kind == QLatin1String("newFolder")) {
        makeNewFolder();
        return;
    }
    static const QStringList known = {
        QStringLiteral("open"),  QStringLiteral("app"),    QStringLiteral("shortcut"),
        QStringLiteral("url"),   QStringLiteral("folder"), QStringLiteral("keys"),
        QStringLiteral("paste"), QStringLiteral("shell"),  QStringLiteral("applescript"),
    };
    if (!known.contains(kind)) {
        m_platform.beeper().beep();
        return;
    }
    if (!argument)
        return;

    if (kind == QLatin1String("open") || kind == QLatin1String("folder"))
        open(*argument);
    else if (kind == QLatin1String("app"))
        m_platform.launcher().launchApplication(*argument, {});
    else if (kind == QLatin1String("shortcut"))
        runShortcut(*argument);
    else if (kind == QLatin1String("url"))
        openUrl(*argument);
    else if (kind == QLatin1String("keys"))
        m_keys.press(*argument);
    else if (kind == QLatin1String("paste"))
        m_keys.paste(*argument);
    else if (kind == QLatin1String("shell"))
        launch(m_platform.launcher().loginShell(), {QStringLiteral("-lc"), *argument});
    else if (kind == QLatin1String("applescript"))
        Log::line(QStringLiteral("AppleScript error: AppleScript is not available on this system"));
}

void Actions::launch(const QString& path, const QStringList& arguments)
{
    m_platform.launcher().startDetached(path, arguments);
}

void Actions::open(const QString& path)
{
    const QFileInfo info(Paths::expandTilde(path));
    if (isLaunchable(info)) {
        m_platform.launcher().launchApplication(info.absoluteFilePath(), {});
        return;
    }
    m_platform.launcher().open(QUrl::fromLocalFile(info.absoluteFilePath()));
}

void Actions::openUrl(const QString& text)
{
    QString address = trimSpacesAndTabs(text);
    if (address.isEmpty())
        return;
    if (!address.contains(QLatin1Char(':')))
        address.prepend(QStringLiteral("https://"));
    const QUrl url(address, QUrl::StrictMode);
    if (!url.isValid())
        return;
    m_platform.launcher().open(url);
}

void Actions::runShortcut(const QString& name)
{
    // A name is a file in the scripts folder, never a path out of it.
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name == QLatin1String(".") ||
        name == QLatin1String(".."))
        return;
    launch(QDir(shortcutsFolder()).filePath(name), {});
}

void Actions::makeNewFolder()
{
    if (const auto folder = Paths::makeUntitledFolder(m_platform.fileManager().desktopFolder()))
        m_platform.fileManager().reveal(*folder);
}
