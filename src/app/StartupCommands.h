#pragma once

#include <QProcessEnvironment>

class ConfigDocument;

/// Environment variables that let a script prepare the bar at start-up without user interaction.
namespace StartupCommands {

/// VANTRIL_RESTORE (a backup's file name in the backups folder, never a path), then VANTRIL_REMOVE_PRESET (a
/// preset name), then VANTRIL_PRESET (comma-separated preset names). Values that do not apply are ignored
/// silently.
void applyConfigCommands(ConfigDocument& document, const QProcessEnvironment& environment);

} // namespace StartupCommands
