#pragma once

#include <QString>
#include <QtGlobal>
#include <memory>

/// The configuration folder's lock: an exclusive flock(2) on a file in it, held while the object lives.
///
/// The kernel lets go of the lock however the process ends, so a bar that crashed leaves nothing to take
/// over, and taking the lock writes nothing that must reach the disk (QLockFile, used before, synced its
/// file to disk on every start, at every login, and went through its stale-lock checks after every
/// crash). QLockFile takes the same kind of lock on its file, so a bar of an earlier version that holds
/// its lock is seen holding this one. The file names its holder in QLockFile's layout (process id,
/// program, host) for the message of a copy that finds the lock held, and is removed when the lock is let
/// go.
class FolderLock
{
public:
    enum class Outcome
    {
        Taken,
        Held,
        Failed
    };
    struct Attempt
    {
        Outcome outcome = Outcome::Failed;
        std::unique_ptr<FolderLock> lock; // with Taken
        QString error;                    // with Failed: why, in a few words
    };
    /// Takes the lock on `path`, creating the file; never waits for a holder.
    static Attempt take(const QString& path);

    struct Holder
    {
        qint64 pid = 0;
        QString host;
    };
    /// Who the file at `path` says holds it.
    static Holder holder(const QString& path);

    /// Removes the file, then lets go of the lock: a copy that opened the file before sees that it is no
    /// longer the one at the path, and tries again.
    ~FolderLock();
    Q_DISABLE_COPY_MOVE(FolderLock)

private:
    FolderLock(QString path, int descriptor);

    QString m_path;
    int m_descriptor;
};
