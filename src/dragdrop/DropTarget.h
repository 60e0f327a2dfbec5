#pragma once

#include "config/BarConfig.h"

#include <QHash>
#include <QPointF>
#include <QRectF>
#include <optional>

/// Where something dragged over the bar would land.
struct DropTarget
{
    enum class Kind
    {
        IntoGroup, ///< onto the middle of a stack chip: into that stack
        InsertAt,  ///< between chips: at this index of the top-level buttons
        OpenWith,  ///< files onto the middle of an application chip: opened with it
        Outside,   ///< not over the bar: nothing happens
    };
    Kind kind = Kind::Outside;
    QString title; ///< IntoGroup, OpenWith
    qsizetype index = 0;

    static DropTarget intoGroup(const QString& title) { return {Kind::IntoGroup, title, 0}; }
    static DropTarget insertAt(qsizetype index) { return {Kind::InsertAt, {}, index}; }
    static DropTarget openWith(const QString& title) { return {Kind::OpenWith, title, 0}; }
    static DropTarget outside() { return {}; }

    bool operator==(const DropTarget&) const = default;
};

/// The marker and highlight that show a drop target.
struct DropFeedback
{
    std::optional<double> markerX;
    std::optional<QString> highlightGroup;

    bool operator==(const DropFeedback&) const = default;
};

/// The hit test shared by chip drags and file drops, so that what the user sees while dragging is
/// exactly what the drop does. Frames are the chips' frames in bar coordinates, by title.
namespace DropTargets {

/// `point` and `bar` in global coordinates; the bar's frame grown by 8 pixels still counts as the bar.
/// A stack is never a target for a dragged stack, and application chips are not targets for chips.
DropTarget at(const QPointF& point, const QRectF& bar, const ButtonSpec& dragging, const BarConfig& cfg,
              const QHash<QString, QRectF>& frames);

/// `local` in bar coordinates. Application chips (shared and the front application's) come first,
/// then stacks, then the insertion index among the top-level buttons other than `excluding`.
DropTarget local(const QPointF& local, const std::optional<QString>& excluding, bool allowGroups,
                 bool allowOpenWith, const BarConfig& cfg, const QList<ButtonSpec>& contextButtons,
                 const QHash<QString, QRectF>& frames);

/// The marker goes 4 pixels beside the chip it follows or precedes; a stack being dragged back over
/// its own stack (`sourceGroup`) is not highlighted.
DropFeedback feedback(const DropTarget& target, const std::optional<QString>& excluding,
                      const std::optional<QString>& sourceGroup, const BarConfig& cfg,
                      const QHash<QString, QRectF>& frames);

/// The first top-level stack whose members hold this title.
std::optional<QString> sourceStack(const BarConfig& cfg, const QString& title);

} // namespace DropTargets
