#pragma once

#include "config/BarConfig.h"
#include "config/Clock.h"
#include "config/Config.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <optional>

/// The configuration being edited, the configuration last saved, and the undo history.
///
/// Every change goes the same way: edit `cfg()` with the editing primitives, then `commit()`, which
/// records the undo step, backs up the previous file (throttled), saves, and tells the bar to rebuild.
///
/// The document remembers the bytes it last wrote or loaded. A save that would overwrite other bytes (a
/// hand edit, a foreign or unreadable file) backs them up first whatever the throttle, and is skipped
/// when no copy can be made: no undo step leads back to them, so the backup is their only way back. A
/// failed save is silent and leaves the file on disk as it was; the document in memory stays authoritative.
class ConfigDocument : public QObject
{
    Q_OBJECT

public:
    /// A document that knows nothing of the file on disk, which is backed up before it is first replaced.
    explicit ConfigDocument(const BarConfig& loaded, Clock clock = systemNow);
    explicit ConfigDocument(const Config::Loaded& loaded, Clock clock = systemNow);

    BarConfig& cfg() { return m_cfg; }
    const BarConfig& cfg() const { return m_cfg; }
    const BarConfig& lastSaved() const { return m_lastSaved; }
    const QList<BarConfig>& history() const { return m_history; }
    bool canUndo() const { return !m_history.isEmpty(); }

    /// Saves `cfg()`: drops empty application sets, pushes the last saved state onto the history (at most
    /// `maxHistory` entries), backs up the file on disk unless throttled, and writes the new document.
    void commit();
    /// Goes back to the state before the last commit; does nothing when there is none.
    void undo();
    /// Replaces the configuration with a readable backup, keeping the current file as a backup first;
    /// false (and nothing changed) when the file cannot be read or decoded.
    bool restore(const QString& path);
    /// Shows a document edited by hand: it becomes the current and the last saved one, with no undo
    /// step and no backup now, as the file already holds it; the save that replaces it backs it up first.
    void adoptExternal(const BarConfig& edited);
    /// A forced backup of the file on disk.
    void backupNow();

    /// Locks or unlocks every button, then commits.
    void lockAll(bool locked);
    /// Merges the named preset into its application's set; commits only when something was added.
    void addPreset(const QString& name);
    /// Takes the named preset's unlocked buttons out of its application's set; beeps when none was there.
    void removePreset(const QString& name);

    static constexpr qsizetype maxHistory = 30;

Q_SIGNALS:
    /// After every saved, undone, restored or adopted change, to close any flyout and rebuild the bar.
    void changed();
    /// A request turned down (nothing to remove, say).
    void refused();

private:
    void save();
    /// Backs up what buttons.json holds, as the rules above say; false when it must not be written over.
    bool mayOverwrite();

    BarConfig m_cfg;
    BarConfig m_lastSaved;
    QList<BarConfig> m_history;
    std::optional<QByteArray> m_knownBytes;
    Clock m_clock;
};
