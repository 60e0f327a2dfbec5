#pragma once

#include <QString>

/// Files a user may meet in a download folder that run if anything starts them, each leaving
/// markerOf(path) behind when it does: a shell script with an execute bit, an ELF at --x--x--x, a
/// desktop entry at 0644 whose Exec makes the marker, and a FIFO named like a desktop entry, which
/// nothing can start and which hangs whoever reads it.
enum class Stray
{
    Script,
    Elf,
    DesktopEntry,
    Fifo,
};

/// Makes `kind` in `folder`; its path, or nothing when it could not be made.
QString makeStray(Stray kind, const QString& folder);
inline QString markerOf(const QString& path)
{
    return path + QStringLiteral(".ran");
}
