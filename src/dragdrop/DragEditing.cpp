#include "DragEditing.h"

#include "actions/Paths.h"
#include "config/Editing.h"
#include "platform/DesktopEntryFile.h"
#include "platform/FileKind.h"

#include <QDir>
#include <QFileInfo>

namespace {

ButtonSpec* topLevel(BarConfig& cfg, const QString& title)
{
    for (ButtonSpec& spec : cfg.buttons) {
        if (spec.title == title)
            return &spec;
    }
    return nullptr;
}

void appendToStack(ButtonSpec& stack, ButtonSpec member)
{
    if (const auto colour = DragEditing::stackColour(stack))
        member.color = colour;
    if (!stack.children)
        stack.children.emplace();
    stack.children->append(std::move(member));
}

} // namespace

namespace DragEditing {

std::optional<QString> stackColour(const ButtonSpec& stack)
{
    if (stack.color)
        return stack.color;
    if (stack.children && !stack.children->isEmpty()) {
        const ButtonSpec& first = stack.children->first();
        return first.color.value_or(ButtonSpec::defaultColor(first.action));
    }
    return std::nullopt;
}

std::optional<DropFeedback> dragFeedback(const ButtonSpec& dragged, const QPointF& point, const QRectF& bar,
                                         const BarConfig& cfg, const QHash<QString, QRectF>& frames)
{
    if (dragged.isLocked())
        return std::nullopt;
    const DropTarget target = DropTargets::at(point, bar, dragged, cfg, frames);
    if (Editing::isContext(cfg, dragged.title) && target.kind == DropTarget::Kind::InsertAt)
        return DropFeedback{};
    return DropTargets::feedback(target, dragged.title, DropTargets::sourceStack(cfg, dragged.title), cfg,
                                 frames);
}

Outcome dropChip(BarConfig& cfg, const ButtonSpec& dragged, const DropTarget& target)
{
    const std::optional<QString> source = DropTargets::sourceStack(cfg, dragged.title);
    const bool fromSet = Editing::isContext(cfg, dragged.title);
    if (target.kind == DropTarget::Kind::InsertAt && !fromSet) {
        if (source && topLevel(cfg, dragged.title))
            return Outcome::Refused;
        auto moved = Editing::detach(cfg, dragged.title);
        if (!moved)
            return Outcome::Unchanged;
        cfg.buttons.insert(std::min(target.index, cfg.buttons.size()), std::move(*moved));
        return Outcome::Changed;
    }
    if (target.kind == DropTarget::Kind::IntoGroup) {
        if (dragged.isGroup() || source == target.title)
            return Outcome::Unchanged;
        auto moved = Editing::detach(cfg, dragged.title);
        if (!moved)
            return Outcome::Unchanged;
        ButtonSpec* stack = topLevel(cfg, target.title);
        if (!stack)
            return Outcome::Unchanged; // unreachable through the hit test, which names only existing stacks
        appendToStack(*stack, std::move(*moved));
        return Outcome::Changed;
    }
    return Outcome::Unchanged;
}

ButtonSpec specForFile(const QString& path, const BarConfig& cfg)
{
    const QFileInfo info(path);
    const QString shown = Paths::abbreviateHome(path);
    // Only an installed desktop entry that is a regular file names an application. A stray one (saved
    // from a web page, say), a program and anything else under such a name (a FIFO) become documents:
    // dropping never runs them, opening a program later asks first, and a FIFO refuses to open.
    const bool desktopEntry = fileKind(path) == FileKind::DesktopEntry && isInstalledDesktopEntry(path);
    if (desktopEntry || info.suffix() == QLatin1String("app")) {
        QString title =
            desktopEntry ? desktopEntryValue(path, QStringLiteral("Name")).value_or(QString()) : QString();
        if (title.isEmpty())
            title = info.completeBaseName();
        return ButtonSpec::make(Editing::uniqueTitle(cfg, title), QStringLiteral("app"),
                                QStringLiteral("app"), shown, path);
    }
    const QString title = Editing::uniqueTitle(cfg, info.fileName());
    // Linux has no packages: every directory is a folder to browse.
    if (info.isDir())
        return ButtonSpec::make(title, QStringLiteral("folder"), QStringLiteral("folder"), shown);
    return ButtonSpec::make(title, QStringLiteral("doc"), QStringLiteral("open"), shown, path);
}

ButtonSpec specForLink(const QUrl& url, const BarConfig& cfg)
{
    QString title = url.host().isEmpty() ? url.toString(QUrl::FullyEncoded) : url.host();
    if (title.startsWith(QLatin1String("www.")))
        title.remove(0, 4);
    return ButtonSpec::make(Editing::uniqueTitle(cfg, title), QStringLiteral("globe"), QStringLiteral("url"),
                            url.toString(QUrl::FullyEncoded), std::nullopt);
}

void dropItems(BarConfig& cfg, const QList<QUrl>& urls, const DropTarget& target)
{
    for (const QUrl& url : urls) {
        ButtonSpec spec = url.isLocalFile() ? specForFile(url.toLocalFile(), cfg) : specForLink(url, cfg);
        if (target.kind == DropTarget::Kind::IntoGroup) {
            if (ButtonSpec* stack = topLevel(cfg, target.title))
                appendToStack(*stack, std::move(spec));
        } else if (target.kind == DropTarget::Kind::InsertAt) {
            cfg.buttons.insert(std::min(target.index, cfg.buttons.size()), std::move(spec));
        }
    }
}

} // namespace DragEditing
