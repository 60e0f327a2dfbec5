#include "FileIO.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace FileIO {

std::optional<QByteArray> read(const QString& path)
{
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
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

bool makeFolder(const QString& path)
{
    return QDir().mkpath(path);
}

} // namespace FileIO
