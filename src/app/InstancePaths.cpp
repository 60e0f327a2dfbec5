#include "InstancePaths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <unistd.h>

namespace {

/// Longest path a local socket address holds on Linux (sun_path is 108 bytes with its terminating zero).
constexpr qsizetype maxSocketPathBytes = 107;

/// No one else may even look inside: then the socket needs no permissions of its own, which Qt could
/// only set by binding it elsewhere first.
bool isPrivateFolder(const QString& path)
{
    constexpr QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                          QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    const QFileInfo folder(path);
    return QDir::isAbsolutePath(path) && !folder.isSymLink() && folder.isDir() &&
           folder.ownerId() == ::getuid() && !(folder.permissions() & others);
}

QString inFolder(const QString& folder, const QString& name)
{
    const QString path = QDir(folder).filePath(name);
    return QFile::encodeName(path).size() <= maxSocketPathBytes ? path : QString();
}

} // namespace

namespace InstancePaths {

QString lockFile(const QString& configDir)
{
    return QDir(configDir).filePath(QStringLiteral("vantril.lock"));
}

QString socketName(const QString& configDir)
{
    QString canonical = QFileInfo(configDir).canonicalFilePath();
    if (canonical.isEmpty())
        canonical = QDir::cleanPath(QDir(configDir).absolutePath());
    const QByteArray hash = QCryptographicHash::hash(canonical.toUtf8(), QCryptographicHash::Sha256);
    return QStringLiteral("vantril-") + QString::fromLatin1(hash.toHex().left(16));
}

QString socketPath(const QString& configDir, const QString& runtimeDir, const QString& tempDir)
{
    const QString name = socketName(configDir);
    if (isPrivateFolder(runtimeDir)) {
        if (QString path = inFolder(runtimeDir, name); !path.isEmpty())
            return path;
    }
    const QString fallback = QDir(tempDir).filePath(QStringLiteral("vantril-%1").arg(::getuid()));
    // Made private from the start: a folder made with the usual mode and narrowed afterwards would be
    // open to others for a moment.
    if (!QFileInfo::exists(fallback))
        QDir().mkdir(fallback, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    if (!isPrivateFolder(fallback))
        return {};
    return inFolder(fallback, name);
}

} // namespace InstancePaths
