#include "ConfigWatcher.h"

#include "config/Config.h"
#include "config/ConfigReader.h"

#include <QFileInfo>

ConfigWatcher::ConfigWatcher(std::function<const BarConfig&()> current, QObject* parent)
    : QObject(parent)
    , m_current(std::move(current))
{
    m_debounce.setSingleShot(true);
    m_debounce.setInterval(debounceMs);
    connect(&m_debounce, &QTimer::timeout, this, &ConfigWatcher::reloadFromDisk);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &ConfigWatcher::changed);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &ConfigWatcher::changed);
}

void ConfigWatcher::start()
{
    m_folder = Config::dir();
    m_file = Config::buttonsPath();
    if (!QFileInfo(m_folder).isDir())
        return;
    m_watcher.addPath(m_folder);
    if (QFileInfo::exists(m_file))
        m_watcher.addPath(m_file);
}

void ConfigWatcher::changed()
{
    // Editors (and our own atomic saves) replace the file, which ends a watch on it: watch the new one.
    if (!m_watcher.files().contains(m_file) && QFileInfo::exists(m_file))
        m_watcher.addPath(m_file);
    m_debounce.start();
}

void ConfigWatcher::reloadFromDisk()
{
    const auto onDisk = ConfigReader::readFile(m_file);
    if (!onDisk)
        return;
    // Layout and key order do not count as an edit: only what the document would be saved as.
    if (Config::encoded(*onDisk) == Config::encoded(m_current()))
        return;
    Q_EMIT edited(*onDisk);
}
