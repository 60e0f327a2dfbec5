#include "BarConfig.h"

#include <algorithm>

ButtonSpec ButtonSpec::make(QString title, QString symbol, QString action, std::optional<QString> argument,
                            std::optional<QString> iconPath)
{
    ButtonSpec spec;
    spec.title = std::move(title);
    spec.symbol = std::move(symbol);
    spec.action = std::move(action);
    spec.argument = std::move(argument);
    spec.iconPath = std::move(iconPath);
    return spec;
}

QString ButtonSpec::defaultColor(const QString& action)
{
    return ActionKinds::info(ActionKinds::of(action)).colour;
}

ChipColor ButtonSpec::colorNamed(const QString& name)
{
    if (name == QLatin1String("orange"))
        return ChipColor::Orange;
    if (name == QLatin1String("green"))
        return ChipColor::Green;
    if (name == QLatin1String("purple"))
        return ChipColor::Purple;
    if (name == QLatin1String("red"))
        return ChipColor::Red;
    if (name == QLatin1String("yellow"))
        return ChipColor::Yellow;
    if (name == QLatin1String("white"))
        return ChipColor::White;
    return ChipColor::Cyan;
}

QString ButtonSpec::tintName() const
{
    if (color)
        return *color;
    // Only one level deep: a first member that is itself a stack counts with its own colour.
    if (isGroup() && children && !children->isEmpty()) {
        const ButtonSpec& first = children->first();
        return first.color.value_or(defaultColor(first.action));
    }
    return defaultColor(action);
}

bool ButtonSpec::operator==(const ButtonSpec& other) const
{
    const auto sameChildren = [&] {
        if (children.has_value() != other.children.has_value())
            return false;
        return !children ||
               std::equal(children->begin(), children->end(), other.children->begin(), other.children->end());
    };
    return title == other.title && symbol == other.symbol && action == other.action &&
           argument == other.argument && color == other.color && iconPath == other.iconPath &&
           locked == other.locked && sameChildren();
}
