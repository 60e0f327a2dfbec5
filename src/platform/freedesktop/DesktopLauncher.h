#pragma once

#include "platform/Launcher.h"

/// Launching through the freedesktop conventions: desktop entries and MIME defaults via GIO.
class DesktopLauncher final : public Launcher
{
public:
    void startDetached(const QString& program, const QStringList& arguments) override;
    QString loginShell() override;
    void open(const QUrl& url) override;
    bool launchApplication(const QString& name, const QStringList& files) override;
    QList<InstalledApplication> installedApplications() override;
};
