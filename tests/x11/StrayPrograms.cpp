#include "StrayPrograms.h"

#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <sys/stat.h>

QString makeStray(Stray kind, const QString& folder)
{
    const QDir dir(folder);
    QString path;
    bool made = false;
    mode_t mode = 0644;
    switch (kind) {
    case Stray::Script:
        path = dir.filePath(QStringLiteral("invoice.pdf.sh"));
        // The marker holds what the program found in QT_QPA_PLATFORM: the bar's own choice must not reach it.
        made = writeAll(path, "#!/bin/sh\nprintf '%s' \"${QT_QPA_PLATFORM-unset}\" > \"$0.ran\"\n");
        mode = 0755;
        break;
    case Stray::Elf:
        path = dir.filePath(QStringLiteral("tool"));
        made = QFile::copy(QStringLiteral(MARKER_BINARY), path);
        mode = 0111;
        break;
    case Stray::DesktopEntry:
        path = dir.filePath(QStringLiteral("invoice.desktop"));
        made =
            writeAll(path, QStringLiteral("[Desktop Entry]\nType=Application\nName=Invoice\nExec=touch %1\n")
                               .arg(markerOf(path))
                               .toUtf8());
        break;
    case Stray::Fifo:
        path = dir.filePath(QStringLiteral("x.desktop"));
        return ::mkfifo(QFile::encodeName(path).constData(), 0644) == 0 ? path : QString();
    }
    return made && ::chmod(QFile::encodeName(path).constData(), mode) == 0 ? path : QString();
}
