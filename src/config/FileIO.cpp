#include "FileIO.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace FileIO {

std::optional<QByteArray> read(const QString& path)
{
    if (!QFileInfo(path).isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes;
}

bool write(const QString& path, const QByteArray& bytes)
{
    // QSaveFile keeps the permissions of the file it replaces; the symlink it would replace is resolved
    // here so that a dotfiles setup linking buttons.json elsewhere keeps its link.
    const QFileInfo info(path);
    const QString target = info.isSymLink() ? info.symLinkTarget() : path;
    QSaveFile file(target);
    // WORKAROUND: Qt 6.4's buffered QSaveFile reports every byte written and commits successfully when the
    // flush inside commit() fails, so a full disk or a file-size limit renamed a truncated file over the
    // document. Unbuffered, a short write shows in write()'s count before anything is committed.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return false;
    if (file.write(bytes) != bytes.size() || file.error() != QFileDevice::NoError ||
        file.size() != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

bool writeVerified(const QString& path, const QByteArray& bytes)
{
    if (!write(path, bytes))
        return false;
    if (read(path) == bytes)
        return true;
    QFile::remove(path);
    return false;
}

bool makeFolder(const QString& path)
{
    return QDir().mkpath(path);
}

} // namespace FileIO
