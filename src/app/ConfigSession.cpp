#include "ConfigSession.h"

#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigReader.h"
#include "config/ConfigWatcher.h"

ConfigSession::ConfigSession(QObject* parent)
    : QObject(parent)
{}

ConfigSession::~ConfigSession() = default;

void ConfigSession::load()
{
    m_document = std::make_unique<ConfigDocument>(Config::loadDocument());
    m_document->setBeep([this] { Q_EMIT refused(); });
    m_document->setAfterChange([this] { Q_EMIT changed(); });
    // Every launch leaves a backup of the configuration it started from. A file that is still unreadable
    // was kept by the load already; a second copy a second later would only pile up.
    if (ConfigReader::readFile(Config::buttonsPath()))
        Config::snapshot(true);
}

void ConfigSession::watch()
{
    m_watcher = std::make_unique<ConfigWatcher>(
        [this]() -> const BarConfig& { return m_document->cfg(); },
        [this](const BarConfig& edited) { m_document->adoptExternal(edited); });
    m_watcher->start();
}
