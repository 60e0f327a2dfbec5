#include "Presets.h"

#include "config/Editing.h"

#include <QRegularExpression>
#include <algorithm>

namespace {

AppSet* setFor(BarConfig& cfg, const QString& app)
{
    if (!cfg.appSets)
        return nullptr;
    const auto it = std::find_if(cfg.appSets->begin(), cfg.appSets->end(),
                                 [&](const AppSet& set) { return set.app == app; });
    return it == cfg.appSets->end() ? nullptr : &*it;
}

/// A set button stems from a preset button when it does the same and carries its title, or the title
/// that making it unique gave it ("Reply 2").
bool stemsFrom(const ButtonSpec& button, const ButtonSpec& presetButton)
{
    if (button.action != presetButton.action || button.argument != presetButton.argument)
        return false;
    if (button.title == presetButton.title)
        return true;
    static const QRegularExpression numbered(QStringLiteral("\\A [+-]?[0-9]+\\z"));
    return button.title.startsWith(presetButton.title) &&
           numbered.match(QStringView(button.title).mid(presetButton.title.size())).hasMatch();
}

} // namespace

namespace Presets {

const AppPreset* named(const QString& name)
{
    const QList<AppPreset>& presets = all();
    const auto it = std::find_if(presets.begin(), presets.end(),
                                 [&](const AppPreset& preset) { return preset.name == name; });
    return it == presets.end() ? nullptr : &*it;
}

int merge(BarConfig& cfg, const AppPreset& preset)
{
    if (!setFor(cfg, preset.bundleID)) {
        if (!cfg.appSets)
            cfg.appSets.emplace();
        cfg.appSets->append(AppSet{preset.bundleID, preset.name, {}});
    }
    int appended = 0;
    for (const ButtonSpec& presetButton : preset.buttons) {
        const QList<ButtonSpec>& existing = setFor(cfg, preset.bundleID)->buttons;
        const bool present = std::any_of(existing.begin(), existing.end(), [&](const ButtonSpec& button) {
            return button.action == presetButton.action && button.argument == presetButton.argument;
        });
        if (present)
            continue;
        ButtonSpec copy = presetButton;
        copy.title = Editing::uniqueTitle(cfg, presetButton.title);
        setFor(cfg, preset.bundleID)->buttons.append(std::move(copy));
        ++appended;
    }
    return appended;
}

int strip(BarConfig& cfg, const AppPreset& preset)
{
    AppSet* set = setFor(cfg, preset.bundleID);
    if (!set)
        return 0;
    const auto removed = set->buttons.removeIf([&](const ButtonSpec& button) {
        return !button.isLocked() &&
               std::any_of(preset.buttons.begin(), preset.buttons.end(),
                           [&](const ButtonSpec& presetButton) { return stemsFrom(button, presetButton); });
    });
    return static_cast<int>(removed);
}

QStringList appliedNames(const BarConfig& cfg)
{
    QStringList names;
    for (const AppPreset& preset : all()) {
        if (cfg.appSets && std::any_of(cfg.appSets->begin(), cfg.appSets->end(),
                                       [&](const AppSet& set) { return set.app == preset.bundleID; }))
            names.append(preset.name);
    }
    return names;
}

} // namespace Presets
