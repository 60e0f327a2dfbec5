#include "ConfigDocument.h"

#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigReader.h"
#include "config/Editing.h"
#include "config/FileIO.h"
#include "config/Presets.h"

ConfigDocument::ConfigDocument(const BarConfig& loaded, Clock clock)
    : ConfigDocument(Config::Loaded{loaded, std::nullopt}, std::move(clock))
{}

ConfigDocument::ConfigDocument(const Config::Loaded& loaded, Clock clock)
    : m_cfg(loaded.config)
    , m_lastSaved(loaded.config)
    , m_knownBytes(loaded.knownBytes)
    , m_clock(std::move(clock))
{}

void ConfigDocument::commit()
{
    if (m_cfg.appSets) {
        m_cfg.appSets->removeIf([](const AppSet& set) { return set.buttons.isEmpty(); });
        if (m_cfg.appSets->isEmpty())
            m_cfg.appSets.reset();
    }
    if (m_history.size() >= maxHistory)
        m_history.removeFirst();
    m_history.append(m_lastSaved);
    m_lastSaved = m_cfg;
    save();
}

void ConfigDocument::undo()
{
    if (m_history.isEmpty())
        return;
    m_cfg = m_history.takeLast();
    m_lastSaved = m_cfg;
    save();
}

void ConfigDocument::save()
{
    if (mayOverwrite()) {
        if (auto written = Config::save(m_cfg))
            m_knownBytes = std::move(written);
    }
    Q_EMIT changed();
}

bool ConfigDocument::mayOverwrite()
{
    // Comparing only now, when a write is due, costs one small read per save and nothing while idle.
    if (const auto onDisk = FileIO::read(Config::buttonsPath()); onDisk && onDisk == m_knownBytes) {
        // buttons.json still holds the previous state, which is what the backup keeps.
        Config::snapshot(false, m_clock());
        return true;
    }
    return Config::keepCopy(m_clock());
}

bool ConfigDocument::restore(const QString& path)
{
    auto config = ConfigReader::readFile(path);
    if (!config)
        return false;
    Config::snapshot(true, m_clock());
    m_cfg = std::move(*config);
    commit();
    return true;
}

void ConfigDocument::adoptExternal(const BarConfig& edited)
{
    m_cfg = edited;
    m_lastSaved = edited;
    Q_EMIT changed();
}

void ConfigDocument::backupNow()
{
    Config::snapshot(true, m_clock());
}

void ConfigDocument::lockAll(bool locked)
{
    Editing::lockAll(m_cfg, locked);
    commit();
}

void ConfigDocument::addPreset(const QString& name)
{
    const AppPreset* preset = Presets::named(name);
    if (preset && Presets::merge(m_cfg, *preset) > 0)
        commit();
}

void ConfigDocument::removePreset(const QString& name)
{
    const AppPreset* preset = Presets::named(name);
    if (!preset)
        return;
    const bool hasSet = Presets::appliedNames(m_cfg).contains(preset->name);
    if (!hasSet)
        return;
    if (Presets::strip(m_cfg, *preset) > 0)
        commit();
    else
        Q_EMIT refused();
}
