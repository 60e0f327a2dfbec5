#include "DropTarget.h"

#include "config/Editing.h"

#include <limits>

namespace {

constexpr double barGrowth = 8;
constexpr double verticalGrowth = 20;
constexpr double appInset = 0.15;
constexpr double stackInset = 0.20;
constexpr double markerGap = 4;

/// Minimum edges inside, maximum edges outside, so that adjoining zones never both claim a point.
bool contains(const QRectF& rect, const QPointF& point)
{
    return point.x() >= rect.left() && point.x() < rect.right() && point.y() >= rect.top() &&
           point.y() < rect.bottom();
}

QRectF zone(const QRectF& frame, double inset)
{
    return frame.adjusted(frame.width() * inset, -verticalGrowth, -frame.width() * inset, verticalGrowth);
}

QList<const ButtonSpec*> candidates(const BarConfig& cfg, const std::optional<QString>& excluding)
{
    QList<const ButtonSpec*> list;
    for (const ButtonSpec& spec : cfg.buttons) {
        if (spec.title != excluding)
            list.append(&spec);
    }
    return list;
}

} // namespace

namespace DropTargets {

DropTarget at(const QPointF& point, const QRectF& bar, const ButtonSpec& dragging, const BarConfig& cfg,
              const QHash<QString, QRectF>& frames)
{
    if (!contains(bar.adjusted(-barGrowth, -barGrowth, barGrowth, barGrowth), point))
        return DropTarget::outside();
    const QPointF inBar = point - bar.topLeft();
    return local(inBar, dragging.title, !dragging.isGroup(), false, cfg, {}, frames);
}

DropTarget local(const QPointF& point, const std::optional<QString>& excluding, bool allowGroups,
                 bool allowOpenWith, const BarConfig& cfg, const QList<ButtonSpec>& contextButtons,
                 const QHash<QString, QRectF>& frames)
{
    if (allowOpenWith) {
        for (const QList<ButtonSpec>* list : {&cfg.buttons, &contextButtons}) {
            for (const ButtonSpec& spec : *list) {
                const auto frame = frames.constFind(spec.title);
                if (spec.kind() == ActionKind::App && frame != frames.constEnd() &&
                    contains(zone(*frame, appInset), point))
                    return DropTarget::openWith(spec.title);
            }
        }
    }
    // One pass with no copies: it runs on every pointer movement of a drag, over every chip. The first
    // stack whose zone holds the point wins; otherwise the chips whose middle lies left of the point
    // count, and a chip without a frame (not shown) counts as lying right of every point.
    qsizetype before = 0;
    for (const ButtonSpec& spec : cfg.buttons) {
        if (spec.title == excluding)
            continue;
        const auto frame = frames.constFind(spec.title);
        if (frame == frames.constEnd())
            continue;
        if (allowGroups && spec.isGroup() && contains(zone(*frame, stackInset), point))
            return DropTarget::intoGroup(spec.title);
        if (frame->center().x() < point.x())
            ++before;
    }
    return DropTarget::insertAt(before);
}

DropFeedback feedback(const DropTarget& target, const std::optional<QString>& excluding,
                      const std::optional<QString>& sourceGroup, const BarConfig& cfg,
                      const QHash<QString, QRectF>& frames)
{
    switch (target.kind) {
    case DropTarget::Kind::Outside:
        return {};
    case DropTarget::Kind::OpenWith:
        return {std::nullopt, target.title};
    case DropTarget::Kind::IntoGroup:
        if (sourceGroup == target.title)
            return {};
        return {std::nullopt, target.title};
    case DropTarget::Kind::InsertAt:
        break;
    }
    const QList<const ButtonSpec*> list = candidates(cfg, excluding);
    if (target.index == 0) {
        if (!list.isEmpty() && frames.contains(list.first()->title))
            return {frames.value(list.first()->title).left() - markerGap, std::nullopt};
        return {8.0, std::nullopt};
    }
    const qsizetype follows = std::min(target.index, list.size()) - 1;
    if (follows >= 0 && frames.contains(list.at(follows)->title))
        return {frames.value(list.at(follows)->title).right() + markerGap, std::nullopt};
    return {markerGap, std::nullopt};
}

std::optional<QString> sourceStack(const BarConfig& cfg, const QString& title)
{
    for (const ButtonSpec& stack : cfg.buttons) {
        if (!stack.children)
            continue;
        for (const ButtonSpec& member : *stack.children) {
            if (member.title == title)
                return stack.title;
        }
    }
    return std::nullopt;
}

} // namespace DropTargets
