#pragma once

#include "config/Config.h"
#include "config/ConfigDocument.h"

#include <QObject>
#include <memory>

class ConfigWatcher;

/// The configuration while the program runs: read once at launch, backed up, and followed on disk.
///
/// Read once: the document it starts from is both the one shown and the one last saved, so reading it
/// twice would only repeat the recovery and its log line.
class ConfigSession : public QObject
{
    Q_OBJECT

public:
    explicit ConfigSession(QObject* parent = nullptr);
    ~ConfigSession() override;

    /// Takes the configuration as read at launch.
    void load(const Config::Loaded& loaded);
    /// Leaves a backup of the configuration this launch started from.
    void keepLaunchBackup();
    /// Follows hand edits of buttons.json from now on.
    void watch();

    ConfigDocument& document() { return *m_document; }
    const ConfigDocument& document() const { return *m_document; }

Q_SIGNALS:
    /// After every saved, undone, restored or hand-edited change.
    void changed();
    /// A request the document turned down, such as removing a preset that is not there.
    void refused();

private:
    std::unique_ptr<ConfigDocument> m_document;
    std::unique_ptr<ConfigWatcher> m_watcher;
    /// Whether buttons.json read, or was written, at launch: a file still unreadable was kept by the load
    /// already, and a second copy a moment later would only pile up.
    bool m_readable = false;
};
