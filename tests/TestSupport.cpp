#include "TestSupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <csignal>
#include <cstdio>
#include <grp.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

TempConfigDir::TempConfigDir()
    : m_previous(qgetenv("VANTRIL_CONFIG_DIR"))
    , m_wasSet(qEnvironmentVariableIsSet("VANTRIL_CONFIG_DIR"))
{
    qputenv("VANTRIL_CONFIG_DIR", m_dir.path().toLocal8Bit());
}

TempConfigDir::~TempConfigDir()
{
    openUp(m_dir.path());
    if (m_wasSet)
        qputenv("VANTRIL_CONFIG_DIR", m_previous);
    else
        qunsetenv("VANTRIL_CONFIG_DIR");
}

StderrCapture::StderrCapture()
    : m_path(m_dir.filePath(u"stderr.txt"_s))
{
    std::fflush(stderr);
    m_savedFd = ::dup(STDERR_FILENO);
    if (std::FILE* file = std::fopen(QFile::encodeName(m_path).constData(), "w")) {
        ::dup2(::fileno(file), STDERR_FILENO);
        std::fclose(file);
    }
}

StderrCapture::~StderrCapture()
{
    std::fflush(stderr);
    if (m_savedFd >= 0) {
        ::dup2(m_savedFd, STDERR_FILENO);
        ::close(m_savedFd);
    }
}

QString StderrCapture::text()
{
    std::fflush(stderr);
    return QString::fromUtf8(readAll(m_path));
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

QMap<QString, QByteArray> filesUnder(const QString& folder)
{
    QMap<QString, QByteArray> files;
    const QDir root(folder);
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(root.relativeFilePath(path), readAll(path));
    }
    return files;
}

void openUp(const QString& folder)
{
    const auto owner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    QFile::setPermissions(folder, QFile::permissions(folder) | owner);
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QFileInfo entry(it.next());
        if (entry.isSymLink())
            continue;
        if (entry.isDir())
            openUp(entry.filePath());
        else
            QFile::setPermissions(entry.filePath(),
                                  entry.permissions() | QFile::ReadOwner | QFile::WriteOwner);
    }
}

namespace {

/// The conventional unprivileged user and group ("nobody", "nogroup").
constexpr uid_t unprivileged = 65534;

void giveTo(const QString& folder, uid_t user)
{
    if (::lchown(QFile::encodeName(folder).constData(), user, user) != 0)
        return;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        (void)::lchown(QFile::encodeName(it.next()).constData(), user, user);
}

} // namespace

int inChild(const QString& folder, const std::function<int()>& body, qint64 fileSizeLimit)
{
    const bool root = ::geteuid() == 0;
    if (root)
        giveTo(folder, unprivileged);
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid == 0) {
        if (root &&
            (::setgroups(0, nullptr) != 0 || ::setgid(unprivileged) != 0 || ::setuid(unprivileged) != 0))
            ::_exit(125);
        if (fileSizeLimit >= 0) {
            std::signal(SIGXFSZ, SIG_IGN); // a write past the limit fails instead of ending the process
            const rlimit limit{rlim_t(fileSizeLimit), rlim_t(fileSizeLimit)};
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
                ::_exit(126);
        }
        const int code = body();
        std::fflush(nullptr);
        ::_exit(code); // no destructors: the parent's temporary folders are the parent's to remove
    }
    int status = 0;
    if (pid < 0 || ::waitpid(pid, &status, 0) != pid)
        return -1;
    if (root)
        giveTo(folder, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
