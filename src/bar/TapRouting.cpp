#include "TapRouting.h"

#include <algorithm>

namespace TapRouting {

QString overflowId()
{
    return QStringLiteral("\u0001overflow");
}

Route onBar(const ButtonSpec& spec, const std::optional<QString>& openGroup)
{
    const bool folder = spec.kind() == ActionKind::Folder;
    if (!folder && !spec.isGroup())
        return {Route::Kind::Run, {}, {}, {}, spec.title};
    if (openGroup == spec.title)
        return {Route::Kind::CloseFlyout, {}, {}, {}, spec.title};
    if (folder)
        return {Route::Kind::OpenFolder,
                {},
                spec.argument.value_or(QStringLiteral("~")),
                spec.argument,
                spec.title};
    return {Route::Kind::OpenStack, spec.children.value_or(QList<ButtonSpec>()), {}, {}, spec.title};
}

Route onOverflow(const QList<ButtonSpec>& items, const std::optional<QString>& openGroup)
{
    if (openGroup == overflowId())
        return {Route::Kind::CloseFlyout, {}, {}, {}, overflowId()};
    return {Route::Kind::OpenStack, items, {}, {}, overflowId()};
}

Route inFlyout(const ButtonSpec& spec, const std::optional<QString>& openGroup,
               const std::optional<QString>& listingRoot)
{
    if (openGroup == overflowId())
        return onBar(spec, std::nullopt);
    if (spec.kind() != ActionKind::Folder && spec.kind() != ActionKind::Navigate)
        return {Route::Kind::Run, {}, {}, {}, spec.title};
    return {Route::Kind::OpenFolder,
            {},
            spec.argument.value_or(QStringLiteral("~")),
            listingRoot ? listingRoot : spec.argument,
            openGroup.value_or(spec.title)};
}

QRectF anchorFor(const BarConfig& config, const QHash<QString, QRectF>& frames, const QString& title)
{
    if (const auto own = frames.constFind(title); own != frames.constEnd())
        return *own;
    for (const ButtonSpec& top : config.buttons) {
        const QList<ButtonSpec> members = top.children.value_or(QList<ButtonSpec>());
        const bool member = std::any_of(members.begin(), members.end(),
                                        [&](const ButtonSpec& b) { return b.title == title; });
        if (member && frames.contains(top.title))
            return frames.value(top.title);
    }
    // Where the first chip sits after the grip: the place VANTRIL_OPEN falls back to as well.
    return QRectF(12, 0, 100, 40);
}

} // namespace TapRouting
