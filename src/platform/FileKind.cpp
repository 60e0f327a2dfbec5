#include "FileKind.h"

#include <QFile>
#include <sys/stat.h>

FileKind fileKind(const QString& path)
{
    struct stat info;
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &info) != 0)
        return FileKind::Missing;
    if (S_ISDIR(info.st_mode))
        return FileKind::Folder;
    if (!S_ISREG(info.st_mode))
        return FileKind::Refused;
    // Any case: the MIME database matches "*.desktop" without regard to case, and so do the openers
    // of some desktops, which start what they take for a desktop entry.
    if (path.endsWith(QLatin1String(".desktop"), Qt::CaseInsensitive))
        return FileKind::DesktopEntry;
    // The mode bits, not access(): root may run anything with one bit set, and a program at 0111
    // runs without being readable.
    if (info.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH))
        return FileKind::Program;
    return FileKind::Document;
}
