#pragma once

#include "platform/FacilityReach.h"
#include "platform/Session.h"

#include <QList>
#include <QString>
#include <QStringList>

class Platform;

/// How far each desktop facility reaches in this session, in the probe's words and in the lines
/// start-up logs where the session cannot offer one everywhere.
namespace SessionReport {

enum class Facility
{
    Hotkey,
    KeyChips,
    MouseMonitor,
    FrontApplication,
};

struct Entry
{
    Facility facility;
    FacilityReach reach;
};

/// What the platform's backends say of themselves, in the order of the report.
QList<Entry> gather(Platform& platform);
/// "session: Wayland (GNOME), through XWayland"; `display` tells whether an X display answered.
QString sessionLine(const Session& session, bool display);
/// "hot key: X11 windows only; instead bind …", without a line break.
QString probeLine(const Entry& entry, const Session& session);
/// One line for each facility a Wayland session cannot offer in every window; none in any other session.
QStringList startupLines(const QList<Entry>& entries, const Session& session);

} // namespace SessionReport
