#pragma once

#include "config/BarConfig.h"

#include <QHash>
#include <QRectF>
#include <optional>

/// What a tap on a chip does, decided from the button and the flyout that is open.
namespace TapRouting {

struct Route
{
    enum class Kind
    {
        CloseFlyout, ///< the tapped stack or folder's flyout was open: a second tap closes it
        OpenStack,   ///< close any flyout, open this stack's members
        OpenFolder,  ///< close any flyout (or replace the listing in place), list `path`
        Run,         ///< close any flyout, then run the button's action
    };
    Kind kind = Kind::Run;
    QList<ButtonSpec> items; ///< OpenStack: the members
    QString path;            ///< OpenFolder: the folder to list
    std::optional<QString> root;
    QString id; ///< the button the flyout belongs to
};

/// The id of the overflow chip's flyout: no title a person types, so no stack can share it.
QString overflowId();

/// A chip on the bar.
Route onBar(const ButtonSpec& spec, const std::optional<QString>& openGroup);
/// The overflow chip, holding the chips that did not fit on the bar.
Route onOverflow(const QList<ButtonSpec>& items, const std::optional<QString>& openGroup);
/// A row in the open flyout; folder and "navigate" rows walk the listing in place. The overflow's rows
/// are chips of the bar and do what they would do there.
Route inFlyout(const ButtonSpec& spec, const std::optional<QString>& openGroup,
               const std::optional<QString>& listingRoot);

/// The chip a tap on `title` comes from when no click made it (a command to the running bar): the
/// button's own chip in `frames`, else the chip of the stack it belongs to, else the first chip's place.
QRectF anchorFor(const BarConfig& config, const QHash<QString, QRectF>& frames, const QString& title);

} // namespace TapRouting
