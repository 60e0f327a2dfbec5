#pragma once

#include <QString>

/// What the portals gave this program that must outlive it, kept in vantril.ini beside the other
/// preferences.
namespace PortalSettings {

/// The keyboard portal's single-use token, which spares the user the consent dialog on the next start.
QString restoreToken();
void setRestoreToken(const QString& token);

/// What the desktop last assigned to the hot key, in its own words; empty when nothing was assigned.
QString assignedTrigger();
void setAssignedTrigger(const QString& trigger);

} // namespace PortalSettings
