#pragma once

#include <QString>

class Platform;
struct Session;

/// The self-test behind "--probe": what the program may do in this session, one line per facility.
namespace Probe {

/// Runs every check and returns the report; `platform` is null when there is no display to use.
QString run(Platform* platform, const Session& session);
/// Prints the report and writes it, atomically, to probe.txt in the temporary folder.
void publish(const QString& report);

} // namespace Probe
