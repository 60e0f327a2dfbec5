#include "PortalSettings.h"

#include <QSettings>
#include <memory>

namespace {

// The same file as the application's preferences: one file of settings outside buttons.json.
std::unique_ptr<QSettings> settings()
{
    return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("vantril"),
                                       QStringLiteral("vantril"));
}

const QString tokenKey = QStringLiteral("portals/remoteDesktopRestoreToken");
const QString triggerKey = QStringLiteral("portals/hotkeyTrigger");

} // namespace

namespace PortalSettings {

QString restoreToken()
{
    return settings()->value(tokenKey).toString();
}

void setRestoreToken(const QString& token)
{
    settings()->setValue(tokenKey, token);
}

QString assignedTrigger()
{
    return settings()->value(triggerKey).toString();
}

void setAssignedTrigger(const QString& trigger)
{
    settings()->setValue(triggerKey, trigger);
}

} // namespace PortalSettings
