#pragma once

#include <QString>

/// What is at a path, as far as opening it is concerned. Links count as what they point at.
enum class FileKind
{
    Missing,      ///< nothing there, or nothing this user may look at
    Folder,       ///< a directory
    Document,     ///< a regular file without an execute bit
    Program,      ///< a regular file with any execute bit, whatever the others say (an ELF at 0111 too)
    DesktopEntry, ///< a regular file named "….desktop", in any case, whatever its mode
    Refused,      ///< a FIFO, a device or a socket: opening one could hang or reach hardware
};

/// Asks the file system only (one stat), so it never blocks on what it finds, FIFOs included.
FileKind fileKind(const QString& path);
