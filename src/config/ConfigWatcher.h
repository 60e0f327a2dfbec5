#pragma once

#include "config/BarConfig.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <functional>

/// Follows hand edits of buttons.json: 0.3 s after the last change to the file or its folder, the
/// document is read again and handed on when it decodes and differs from the one shown. An invalid
/// file is left alone until it is fixed; the program's own saves read back identical and pass silently.
class ConfigWatcher : public QObject
{
    Q_OBJECT

public:
    /// `current` gives the configuration shown now, which an edit is told apart from.
    explicit ConfigWatcher(std::function<const BarConfig&()> current, QObject* parent = nullptr);

    /// Watches the configuration folder and buttons.json, if the folder exists now.
    void start();
    /// Reads the file now, as the debounce does.
    void reloadFromDisk();

    static constexpr int debounceMs = 300;

Q_SIGNALS:
    /// buttons.json decodes to a document other than the one shown.
    void edited(const BarConfig& config);

private:
    void changed();

    std::function<const BarConfig&()> m_current;
    QFileSystemWatcher m_watcher;
    QTimer m_debounce;
    QString m_folder;
    QString m_file;
};
