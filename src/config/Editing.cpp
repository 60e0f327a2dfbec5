#include "Editing.h"

#include <QSet>

namespace {

qsizetype indexOf(const QList<ButtonSpec>& list, const QString& title)
{
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (list.at(i).title == title)
            return i;
    }
    return -1;
}

/// The list holding the first button with this title, and its index there; for const and mutable documents.
template<typename Document>
auto locate(Document& config, const QString& title) -> std::pair<decltype(&config.buttons), qsizetype>
{
    if (const auto i = indexOf(config.buttons, title); i >= 0)
        return {&config.buttons, i};
    for (auto& stack : config.buttons) {
        if (!stack.children)
            continue;
        if (const auto i = indexOf(*stack.children, title); i >= 0)
            return {&*stack.children, i};
    }
    if (config.appSets) {
        for (auto& set : *config.appSets) {
            if (const auto i = indexOf(set.buttons, title); i >= 0)
                return {&set.buttons, i};
        }
    }
    return {nullptr, -1};
}

void markLocked(QList<ButtonSpec>& list, bool locked)
{
    for (ButtonSpec& spec : list) {
        spec.locked = locked ? std::optional<bool>(true) : std::nullopt;
        if (spec.children)
            markLocked(*spec.children, locked);
    }
}

} // namespace

namespace Editing {

std::optional<ButtonSpec> button(const BarConfig& config, const QString& title)
{
    const auto [list, index] = locate(config, title);
    if (!list)
        return std::nullopt;
    return list->at(index);
}

std::optional<ButtonSpec> detach(BarConfig& config, const QString& title)
{
    const auto [list, index] = locate(config, title);
    if (!list)
        return std::nullopt;
    return list->takeAt(index);
}

bool replace(BarConfig& config, const QString& title, const ButtonSpec& replacement)
{
    const auto [list, index] = locate(config, title);
    if (!list)
        return false;
    (*list)[index] = replacement;
    return true;
}

QString uniqueTitle(const BarConfig& config, const QString& wanted, const std::optional<QString>& excluding)
{
    QSet<QString> used;
    for (const ButtonSpec& spec : config.buttons) {
        used.insert(spec.title);
        if (spec.children) {
            for (const ButtonSpec& member : *spec.children)
                used.insert(member.title);
        }
    }
    if (config.appSets) {
        for (const AppSet& set : *config.appSets) {
            for (const ButtonSpec& spec : set.buttons)
                used.insert(spec.title);
        }
    }
    if (excluding)
        used.remove(*excluding);
    if (!used.contains(wanted))
        return wanted;
    for (qsizetype n = 2;; ++n) {
        const QString candidate = wanted + QLatin1Char(' ') + QString::number(n);
        if (!used.contains(candidate))
            return candidate;
    }
}

void lockAll(BarConfig& config, bool locked)
{
    markLocked(config.buttons, locked);
    if (config.appSets) {
        for (AppSet& set : *config.appSets)
            markLocked(set.buttons, locked);
    }
}

bool isContext(const BarConfig& config, const QString& title)
{
    if (!config.appSets)
        return false;
    for (const AppSet& set : *config.appSets) {
        if (indexOf(set.buttons, title) >= 0)
            return true;
    }
    return false;
}

} // namespace Editing
