// The drop-target hit test over made-up bars: every answer names something that can take the drop,
// the feedback shown for it matches it, and moving right along the bar never moves the insertion left.

#include "dragdrop/DropTarget.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>

namespace {

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void require(bool condition, const char* what)
{
    if (!condition)
        fail(what);
}

/// A handful of titles, so that duplicates, frames of absent chips and chips without frames all occur.
QString title(FuzzedDataProvider& input)
{
    return QString(QChar(u'a' + input.ConsumeIntegralInRange(0, 7)));
}

ButtonSpec button(FuzzedDataProvider& input)
{
    static const char16_t* const kinds[] = {u"app", u"group", u"open", u"keys"};
    ButtonSpec spec = ButtonSpec::make(title(input), QString(),
                                       QString::fromUtf16(kinds[input.ConsumeIntegralInRange(0, 3)]));
    if (spec.isGroup() && input.ConsumeBool())
        spec.children = QList<ButtonSpec>{ButtonSpec::make(title(input), QString(), QStringLiteral("open"))};
    return spec;
}

/// Positions as chip layouts and pointers give them: whole and half pixels, anywhere on a large desktop.
double coordinate(FuzzedDataProvider& input)
{
    return input.ConsumeIntegral<std::int16_t>() / 2.0;
}

QRectF rect(FuzzedDataProvider& input)
{
    const double x = coordinate(input);
    const double y = coordinate(input);
    return {x, y, input.ConsumeIntegral<std::uint8_t>() * 2.0, input.ConsumeIntegral<std::uint8_t>() / 2.0};
}

bool namesTopLevel(const BarConfig& cfg, const QString& name, bool (*kind)(const ButtonSpec&))
{
    return std::any_of(cfg.buttons.begin(), cfg.buttons.end(),
                       [&](const ButtonSpec& spec) { return spec.title == name && kind(spec); });
}

bool isGroup(const ButtonSpec& spec)
{
    return spec.isGroup();
}

bool isApp(const ButtonSpec& spec)
{
    return spec.action == QLatin1String("app");
}

qsizetype countOthers(const BarConfig& cfg, const std::optional<QString>& excluding)
{
    return std::count_if(cfg.buttons.begin(), cfg.buttons.end(),
                         [&](const ButtonSpec& spec) { return spec.title != excluding; });
}

void checkFeedback(const DropTarget& target, const std::optional<QString>& excluding,
                   const std::optional<QString>& source, const BarConfig& cfg,
                   const QHash<QString, QRectF>& frames)
{
    const DropFeedback shown = DropTargets::feedback(target, excluding, source, cfg, frames);
    switch (target.kind) {
    case DropTarget::Kind::Outside:
        require(shown == DropFeedback{}, "feedback for a drop outside the bar");
        break;
    case DropTarget::Kind::InsertAt:
        require(shown.markerX && std::isfinite(*shown.markerX) && !shown.highlightGroup,
                "an insertion without a marker");
        break;
    case DropTarget::Kind::IntoGroup:
        require(!shown.markerX && shown.highlightGroup ==
                                      (source == target.title ? std::nullopt : std::optional(target.title)),
                "a stack target highlights something else");
        break;
    case DropTarget::Kind::OpenWith:
        require(!shown.markerX && shown.highlightGroup == target.title,
                "an application target not highlighted");
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    BarConfig cfg;
    for (int n = input.ConsumeIntegralInRange(0, 8); n > 0; --n)
        cfg.buttons.append(button(input));
    QList<ButtonSpec> context;
    for (int n = input.ConsumeIntegralInRange(0, 3); n > 0; --n)
        context.append(button(input));
    QHash<QString, QRectF> frames;
    for (int n = input.ConsumeIntegralInRange(0, 10); n > 0; --n)
        frames.insert(title(input), rect(input));
    const QRectF bar = rect(input);
    const ButtonSpec dragging =
        input.ConsumeBool() && !cfg.buttons.isEmpty()
            ? cfg.buttons.at(input.ConsumeIntegralInRange<qsizetype>(0, cfg.buttons.size() - 1))
            : button(input);
    const QPointF point(coordinate(input), coordinate(input));

    // A chip dragged over the bar.
    const DropTarget target = DropTargets::at(point, bar, dragging, cfg, frames);
    const QRectF grown = bar.adjusted(-8, -8, 8, 8);
    if (grown.adjusted(1, 1, -1, -1).contains(point))
        require(target.kind != DropTarget::Kind::Outside, "a point on the bar counts as outside");
    if (!grown.adjusted(-1, -1, 1, 1).contains(point))
        require(target.kind == DropTarget::Kind::Outside, "a point off the bar counts as on it");
    require(target.kind != DropTarget::Kind::OpenWith, "a chip dragged onto an application");
    if (target.kind == DropTarget::Kind::IntoGroup)
        require(!dragging.isGroup() && target.title != dragging.title &&
                    namesTopLevel(cfg, target.title, isGroup),
                "a chip dropped into something that is not another stack");
    if (target.kind == DropTarget::Kind::InsertAt)
        require(target.index >= 0 && target.index <= countOthers(cfg, dragging.title),
                "insertion index out of range");
    checkFeedback(target, dragging.title, DropTargets::sourceStack(cfg, dragging.title), cfg, frames);

    // Files dropped on the bar, in bar coordinates.
    const bool allowGroups = input.ConsumeBool();
    const DropTarget files = DropTargets::local(point, std::nullopt, allowGroups, true, cfg, context, frames);
    if (files.kind == DropTarget::Kind::OpenWith)
        require(
            namesTopLevel(cfg, files.title, isApp) ||
                std::any_of(context.begin(), context.end(),
                            [&](const ButtonSpec& spec) { return spec.title == files.title && isApp(spec); }),
            "files opened with something that is not an application");
    if (files.kind == DropTarget::Kind::IntoGroup)
        require(allowGroups && namesTopLevel(cfg, files.title, isGroup), "files dropped into a non-stack");
    require(files.kind != DropTarget::Kind::Outside, "a local point counts as outside");
    if (files.kind == DropTarget::Kind::InsertAt)
        require(files.index >= 0 && files.index <= cfg.buttons.size(), "insertion index out of range");
    checkFeedback(files, std::nullopt, std::nullopt, cfg, frames);

    // Along the bar, insertion only moves right.
    const QPointF further = point + QPointF(input.ConsumeIntegral<std::uint8_t>(), 0);
    const DropTarget left = DropTargets::local(point, dragging.title, false, false, cfg, {}, frames);
    const DropTarget right = DropTargets::local(further, dragging.title, false, false, cfg, {}, frames);
    require(left.kind == DropTarget::Kind::InsertAt && right.kind == DropTarget::Kind::InsertAt,
            "only insertions without stacks and applications");
    require(right.index >= left.index, "moving right moved the insertion left");
    return 0;
}
