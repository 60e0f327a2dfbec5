#include "ConfigSession.h"

#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigWatcher.h"

ConfigSession::ConfigSession(QObject* parent)
    : QObject(parent)
{}

ConfigSession::~ConfigSession() = default;

void ConfigSession::load(const Config::Loaded& loaded)
{
    m_readable = loaded.knownBytes.has_value();
    m_document = std::make_unique<ConfigDocument>(loaded);
    m_document->setBeep([this] { Q_EMIT refused(); });
    m_document->setAfterChange([this] { Q_EMIT changed(); });
}

void ConfigSession::keepLaunchBackup()
{
    if (m_readable)
        Config::snapshot(true);
}

void ConfigSession::watch()
{
    m_watcher = std::make_unique<ConfigWatcher>(
        [this]() -> const BarConfig& { return m_document->cfg(); },
        [this](const BarConfig& edited) { m_document->adoptExternal(edited); });
    m_watcher->start();
}
