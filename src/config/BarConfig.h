#pragma once

#include "config/ActionKind.h"

#include <QList>
#include <QString>
#include <optional>

/// The seven colours a chip can be drawn in. Any colour name outside the list draws as Cyan.
enum class ChipColor
{
    Orange,
    Green,
    Purple,
    Red,
    Yellow,
    White,
    Cyan,
};

/// One button on the bar, or a stack ("group") of buttons. Its title is its identity.
struct ButtonSpec
{
    QString title;
    QString symbol;
    QString action;
    std::optional<QString> argument;
    std::optional<QString> color;
    std::optional<QString> iconPath;
    std::optional<bool> locked;
    std::optional<QList<ButtonSpec>> children;

    /// A button with the given fields and every other one absent.
    static ButtonSpec make(QString title, QString symbol, QString action,
                           std::optional<QString> argument = {}, std::optional<QString> iconPath = {});

    const QString& id() const { return title; }
    bool isLocked() const { return locked.value_or(false); }
    ActionKind kind() const { return ActionKinds::of(action); }
    bool isGroup() const { return kind() == ActionKind::Group; }

    /// The colour name used when a button carries none: by action kind, "white" for unknown kinds.
    static QString defaultColor(const QString& action);
    /// Maps a colour name to a chip colour; exact and case-sensitive, everything unknown is cyan.
    static ChipColor colorNamed(const QString& name);
    /// The colour name the chip is drawn in; a stack without its own colour takes its first member's.
    QString tintName() const;
    ChipColor tint() const { return colorNamed(tintName()); }

    // Not defaulted: Qt's container comparison cannot see through a type that holds a list of itself.
    bool operator==(const ButtonSpec& other) const;
};

/// The buttons that belong to one application, shown while it is in front.
struct AppSet
{
    QString app;
    QString name;
    QList<ButtonSpec> buttons;

    bool operator==(const AppSet&) const = default;
};

/// The whole configuration document.
struct BarConfig
{
    QList<ButtonSpec> buttons;
    std::optional<QList<AppSet>> appSets;
    std::optional<QString> hotkey;

    bool operator==(const BarConfig&) const = default;
};
