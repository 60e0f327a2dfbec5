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
    connect(m_document.get(), &ConfigDocument::refused, this, &ConfigSession::refused);
    connect(m_document.get(), &ConfigDocument::changed, this, &ConfigSession::changed);
}

void ConfigSession::keepLaunchBackup()
{
    if (m_readable)
        Config::snapshot(true);
}

void ConfigSession::watch()
{
    m_watcher = std::make_unique<ConfigWatcher>([this]() -> const BarConfig& { return m_document->cfg(); });
    connect(m_watcher.get(), &ConfigWatcher::edited, m_document.get(), &ConfigDocument::adoptExternal);
    m_watcher->start();
}
