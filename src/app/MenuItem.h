#pragma once

#include <QList>
#include <QString>
#include <optional>

/// One entry of a menu model: a command with its argument and check mark, a submenu, or a separator.
template<typename Command>
struct MenuItem
{
    QString title; ///< empty for a separator
    Command command = Command::None;
    QString argument;
    std::optional<bool> checked;
    QList<MenuItem> submenu;

    bool isSeparator() const { return title.isEmpty(); }
    bool operator==(const MenuItem&) const = default;

    static MenuItem action(const QString& title, Command command, QString argument = {})
    {
        return {title, command, std::move(argument), std::nullopt, {}};
    }
    static MenuItem toggle(const QString& title, Command command, bool on)
    {
        return {title, command, {}, on, {}};
    }
    static MenuItem menu(const QString& title, QList<MenuItem> items)
    {
        return {title, Command::None, {}, std::nullopt, std::move(items)};
    }
    static MenuItem separator() { return {}; }
};
