#pragma once

#include "platform/FileManager.h"

class Launcher;

/// The desktop folder from the XDG user directories, and the file manager over D-Bus.
class DesktopFileManager final : public FileManager
{
public:
    explicit DesktopFileManager(Launcher& launcher);

    QString desktopFolder() override;
    void reveal(const QString& path) override;

private:
    Launcher& m_launcher;
};
