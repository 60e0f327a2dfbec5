#pragma once

#include "app/BarCommand.h"
#include "app/FolderLock.h"

#include <memory>
#include <optional>

/// One bar per configuration folder. The bar holds a lock file in the folder for as long as it runs; a
/// copy started while it runs hands its command line to it over a local socket, prints the answer and
/// ends. A lock or socket left behind by a copy that crashed is taken over: the kernel let go of the
/// lock when that copy ended.
class InstanceClaim
{
public:
    /// Takes the configuration folder for the bar that `command` needs, or hands `arguments` to the bar
    /// that holds it. Writes nothing when `command` needs no bar and none runs.
    static InstanceClaim take(const QStringList& arguments, const BarCommand& command);

    /// Set when this process is done: its command went to the running bar, or needed no bar at all.
    std::optional<int> exitStatus() const { return m_exitStatus; }
    /// Where this bar listens for commands; empty when the user has no private folder for a socket.
    /// Asked only when needed: the fallback folder is made on first use.
    QString socketPath() const;
    /// Lets the folder go, for the next bar. Commands must no longer be taken by then.
    void release();

private:
    std::optional<int> m_exitStatus;
    std::unique_ptr<FolderLock> m_lock;
    QString m_dir;
};
