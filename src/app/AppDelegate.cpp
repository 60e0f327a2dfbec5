#include "AppDelegate.h"

#include "app/StartupCommands.h"
#include "config/Backups.h"
#include "config/Config.h"

void AppDelegate::finishLaunching(const QProcessEnvironment& environment)
{
    m_document = std::make_unique<ConfigDocument>(Config::load());
    // Every launch leaves a backup of the configuration it started from.
    Config::snapshot(true);
    StartupCommands::applyConfigCommands(*m_document, environment);
}
