#include "Actions.h"

#include "actions/Paths.h"
#include "config/BarConfig.h"
#include "config/Config.h"
#include "platform/FileKind.h"
#include "platform/Log.h"
#include "platform/Platform.h"
#include "platform/RunQuestion.h"

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

/// Hands a file or folder to its default application. Only regular files and folders go there: a FIFO
/// would hold up whoever reads it, and a device is no document.
void openAsDocument(Platform& platform, const QString& path)
{
    switch (fileKind(path)) {
    case FileKind::Missing:
        return;
    case FileKind::Refused:
        platform.beeper().beep();
        return;
    case FileKind::Folder:
    case FileKind::Document:
    case FileKind::Program:
    case FileKind::DesktopEntry:
        platform.launcher().open(QUrl::fromLocalFile(path));
        return;
    }
}

/// Carries out the user's answer about a program. The file may have changed while the question was
/// open, so it is looked at again: Run starts only what is still the kind of file the user was asked about.
void answered(Platform& platform, const QString& path, FileKind asked, RunQuestion::Answer answer)
{
    if (answer == RunQuestion::Answer::Open) {
        openAsDocument(platform, path);
        return;
    }
    if (answer != RunQuestion::Answer::Run)
        return;
    const FileKind now = fileKind(path);
    if (now == FileKind::Missing)
        return;
    if (now != asked) {
        platform.beeper().beep();
        return;
    }
    if (now == FileKind::DesktopEntry)
        platform.launcher().launchApplication(path, {});
    else
        platform.launcher().startDetached(path, {});
}

/// An "app" chip's argument is a name or a path; a path may begin with "~", as dropped files' do.
QString applicationArgument(const QString& argument)
{
    if (argument.startsWith(QLatin1Char('~')) && argument.contains(QLatin1Char('/')))
        return Paths::expandTilde(argument);
    return argument;
}

} // namespace

Actions::Actions(Platform& platform, RunQuestion* question)
    : m_platform(platform)
    , m_question(question)
    , m_keys(platform.input(), platform.clipboard(), platform.beeper(), platform.scheduler())
{}

QString Actions::shortcutsFolder()
{
    return QDir(Config::dir()).filePath(QStringLiteral("shortcuts"));
}

void Actions::run(const ButtonSpec& button)
{
    const ActionKind kind = button.kind();
    if (kind == ActionKind::NewFolder)
        return makeNewFolder();
    // Stacks and a listing's rows are never run, and a kind this program does not know cannot be.
    if (kind == ActionKind::Group || kind == ActionKind::Navigate || kind == ActionKind::Unknown)
        return m_platform.beeper().beep();
    if (!button.argument)
        return;
    const QString& argument = *button.argument;
    switch (kind) {
    case ActionKind::Open:
    case ActionKind::Folder:
        return open(argument);
    case ActionKind::App:
        return void(m_platform.launcher().launchApplication(applicationArgument(argument), {}));
    case ActionKind::Shortcut:
        return runShortcut(argument);
    case ActionKind::Url:
        return openUrl(argument);
    case ActionKind::Keys:
        return m_keys.press(argument);
    case ActionKind::Paste:
        return m_keys.paste(argument);
    case ActionKind::Shell:
        return launch(m_platform.launcher().loginShell(), {QStringLiteral("-lc"), argument});
    case ActionKind::AppleScript:
        return Log::line(QStringLiteral("AppleScript error: AppleScript is not available on this system"));
    case ActionKind::NewFolder:
    case ActionKind::Group:
    case ActionKind::Navigate:
    case ActionKind::Unknown:
        return;
    }
}

void Actions::launch(const QString& path, const QStringList& arguments)
{
    m_platform.launcher().startDetached(path, arguments);
}

void Actions::openDocument(const QString& path)
{
    openAsDocument(m_platform, QFileInfo(Paths::expandTilde(path)).absoluteFilePath());
}

void Actions::open(const QString& path)
{
    const QString full = QFileInfo(Paths::expandTilde(path)).absoluteFilePath();
    const FileKind kind = fileKind(full);
    if (kind != FileKind::Program && kind != FileKind::DesktopEntry) {
        openAsDocument(m_platform, full);
        return;
    }
    if (!m_question)
        return;
    // The file's own name, not a desktop entry's Name, which could pose as a document.
    Platform& platform = m_platform;
    m_question->ask(QFileInfo(full).fileName(), [&platform, full, kind](RunQuestion::Answer answer) {
        answered(platform, full, kind, answer);
    });
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
    // A file address is a file like any other: its default application opens it, nothing runs it.
    if (url.isLocalFile()) {
        open(url.toLocalFile());
        return;
    }
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
