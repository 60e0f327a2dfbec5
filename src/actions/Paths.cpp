#include "Paths.h"

#include <QDir>
#include <QFile>
#include <cerrno>
#include <pwd.h>
#include <sys/stat.h>

namespace Paths {

QString expandTilde(const QString& path)
{
    if (!path.startsWith(QLatin1Char('~')))
        return path;
    const qsizetype slash = path.indexOf(QLatin1Char('/'));
    const QString user = path.mid(1, slash < 0 ? -1 : slash - 1);
    QString home;
    if (user.isEmpty()) {
        home = QDir::homePath();
    } else {
        const passwd* entry = ::getpwnam(QFile::encodeName(user).constData());
        if (!entry || !entry->pw_dir)
            return path;
        home = QFile::decodeName(entry->pw_dir);
    }
    return slash < 0 ? home : home + path.mid(slash);
}

QString abbreviateHome(const QString& path)
{
    const QString home = QDir::homePath();
    if (path == home)
        return QStringLiteral("~");
    if (path.startsWith(home + QLatin1Char('/')))
        return QLatin1Char('~') + path.mid(home.size());
    return path;
}

std::optional<QString> makeUntitledFolder(const QString& parent)
{
    const QDir folder(parent);
    for (int n = 1; n < 10000; ++n) {
        const QString name =
            n == 1 ? QStringLiteral("untitled folder") : QStringLiteral("untitled folder %1").arg(n);
        const QString path = folder.filePath(name);
        // mkdir itself refuses any existing name, dangling links included, so there is no race with
        // another program making the same folder.
        if (::mkdir(QFile::encodeName(path).constData(), 0777) == 0)
            return path;
        if (errno != EEXIST)
            return std::nullopt;
    }
    return std::nullopt;
}

} // namespace Paths
