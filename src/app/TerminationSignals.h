#pragma once

/// SIGTERM, SIGINT and SIGHUP end the bar the way "vantril --quit" does. The session sends them when it
/// ends, and a bar that died of them would leave its lock, its command socket and the desktop's script
/// behind, for the next login to clear up. A second signal ends the program at once.
namespace TerminationSignals {

/// From now on, the first of them quits the application's event loop.
void quitOnThem();

} // namespace TerminationSignals
