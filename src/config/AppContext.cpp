#include "AppContext.h"

#include "config/Editing.h"

namespace AppContext {

std::optional<ContextApp> fromEnvironment(const QString& value)
{
    const QStringList pieces = value.split(QLatin1Char('|'), Qt::SkipEmptyParts);
    if (pieces.size() != 2)
        return std::nullopt;
    ContextApp app;
    app.id = pieces.at(0);
    app.name = pieces.at(1);
    return app;
}

QStringList names(const ContextApp& app)
{
    QStringList result;
    for (const QString& name : {app.ownId, app.windowClass, app.instance, app.desktopEntry, app.id}) {
        if (!name.isEmpty() && !result.contains(name, Qt::CaseInsensitive))
            result.append(name);
    }
    return result;
}

std::optional<qsizetype> setFor(const BarConfig& cfg, const std::optional<ContextApp>& app)
{
    if (!app || !cfg.appSets)
        return std::nullopt;
    for (const QString& name : names(*app)) {
        for (qsizetype i = 0; i < cfg.appSets->size(); ++i) {
            if (cfg.appSets->at(i).app.compare(name, Qt::CaseInsensitive) == 0)
                return i;
        }
    }
    return std::nullopt;
}

QList<ButtonSpec> contextButtons(const BarConfig& cfg, const std::optional<ContextApp>& app)
{
    const auto index = setFor(cfg, app);
    return index ? cfg.appSets->at(*index).buttons : QList<ButtonSpec>();
}

std::optional<qsizetype> contextSetIndex(BarConfig& cfg, const std::optional<ContextApp>& app, bool create)
{
    if (!app)
        return std::nullopt;
    if (const auto index = setFor(cfg, app))
        return index;
    if (!create)
        return std::nullopt;
    if (!cfg.appSets)
        cfg.appSets.emplace();
    cfg.appSets->append(AppSet{app->id, app->name, {}});
    return cfg.appSets->size() - 1;
}

bool moveToContext(BarConfig& cfg, const std::optional<ContextApp>& app, const QString& title)
{
    auto button = Editing::detach(cfg, title);
    if (!button)
        return false;
    if (const auto index = contextSetIndex(cfg, app, true))
        (*cfg.appSets)[*index].buttons.append(std::move(*button));
    else
        cfg.buttons.append(std::move(*button));
    return true;
}

} // namespace AppContext
