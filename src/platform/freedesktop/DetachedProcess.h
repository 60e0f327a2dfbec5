#pragma once

#include <QString>
#include <QStringList>

/// Starts programs for the user's chips: in a session of their own, like a daemon, inheriting the bar's
/// environment, folder and streams.
namespace DetachedProcess {

/// Starts `program` (looked up in PATH when it names no folder) and returns at once; false when it could
/// not be started. posix_spawn does not copy the bar's memory map, which a fork does (QProcess's double
/// fork took 10 to 50 ms in a Qt program; a spawn well under one), and the child is reaped through a
/// pidfd when it ends, so no zombie is left. Kernels without pidfds get QProcess's double fork.
bool start(const QString& program, const QStringList& arguments);

} // namespace DetachedProcess
