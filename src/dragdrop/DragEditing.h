#pragma once

#include "config/BarConfig.h"
#include "dragdrop/DropTarget.h"

#include <QList>
#include <QUrl>

/// What finishing a drag does to the document: moving chips along the bar, into stacks and out of
/// them, and turning dropped files and links into buttons. The caller commits when told to.
namespace DragEditing {

enum class Outcome
{
    Unchanged, ///< nothing to save
    Changed,   ///< commit
    Refused,   ///< beep: a stack member would take the title of a top-level button
};

/// The colour a button takes when it joins a stack: the stack's own, else its first member's (or that
/// member's kind's), else none.
std::optional<QString> stackColour(const ButtonSpec& stack);

/// The feedback while a chip is dragged to `point` (global), or nothing at all for a locked chip.
/// Buttons of an application set are never reordered, so between chips they show nothing.
std::optional<DropFeedback> dragFeedback(const ButtonSpec& dragged, const QPointF& point, const QRectF& bar,
                                         const BarConfig& cfg, const QHash<QString, QRectF>& frames);

/// Applies a finished chip drag onto `target`.
Outcome dropChip(BarConfig& cfg, const ButtonSpec& dragged, const DropTarget& target);

/// A button for a dropped file: a folder lists its contents, an installed desktop entry that is a regular
/// file or "….app" starts the application, anything else (programs and stray desktop entries included)
/// opens as a document. The title is made unique in `cfg`.
ButtonSpec specForFile(const QString& path, const BarConfig& cfg);
/// A button for a dropped link, titled by its host without "www.".
ButtonSpec specForLink(const QUrl& url, const BarConfig& cfg);
/// Adds buttons for every dropped item at an insertion point (one index for all, so they end up in
/// reverse order) or at the end of a stack (in order, in the stack's colour).
void dropItems(BarConfig& cfg, const QList<QUrl>& urls, const DropTarget& target);

} // namespace DragEditing
