#pragma once

#include <QString>

/// The user's desktop folder and file manager.
class FileManager
{
public:
    FileManager() = default;
    virtual ~FileManager() = default;
    Q_DISABLE_COPY_MOVE(FileManager)

    /// The XDG desktop folder, else ~/Desktop, else the home folder; whichever exists first.
    virtual QString desktopFolder() = 0;
    /// Shows the item selected in the file manager, or at least opens the folder that holds it.
    virtual void reveal(const QString& path) = 0;
};
