#include "ButtonCommands.h"

#include "actions/Paths.h"
#include "app/ContextTracker.h"
#include "config/Editing.h"
#include "dragdrop/DragEditing.h"
#include "dragdrop/DragState.h"
#include "dragdrop/DropTarget.h"
#include "platform/Platform.h"

ButtonCommands::ButtonCommands(ConfigDocument& document, Platform& platform, DragState& drag,
                               const ContextTracker& context)
    : m_document(document)
    , m_platform(platform)
    , m_drag(drag)
    , m_context(context)
{}

QList<ButtonSpec> ButtonCommands::contextButtons() const
{
    return AppContext::contextButtons(m_document.cfg(), m_context.current());
}

void ButtonCommands::remove(const ButtonSpec& spec)
{
    BarConfig& cfg = m_document.cfg();
    if (const auto found = Editing::button(cfg, spec.title); found && found->isLocked()) {
        m_platform.beeper().beep();
        return;
    }
    if (Editing::detach(cfg, spec.title))
        m_document.commit();
}

void ButtonCommands::toggleLock(const ButtonSpec& spec)
{
    BarConfig& cfg = m_document.cfg();
    auto found = Editing::button(cfg, spec.title);
    if (!found)
        return;
    found->locked = found->isLocked() ? std::nullopt : std::optional<bool>(true);
    Editing::replace(cfg, spec.title, *found);
    m_document.commit();
}

void ButtonCommands::moveToGlobal(const ButtonSpec& spec)
{
    BarConfig& cfg = m_document.cfg();
    if (auto detached = Editing::detach(cfg, spec.title)) {
        cfg.buttons.append(*detached);
        m_document.commit();
    }
}

void ButtonCommands::moveToContext(const ButtonSpec& spec)
{
    if (AppContext::moveToContext(m_document.cfg(), m_context.current(), spec.title))
        m_document.commit();
}

void ButtonCommands::saveEdited(ButtonSpec edited, const std::optional<QString>& oldTitle,
                                const std::optional<QString>& parent)
{
    BarConfig& cfg = m_document.cfg();
    edited.title = Editing::uniqueTitle(cfg, edited.title.trimmed(), oldTitle);
    if (oldTitle) {
        if (!Editing::replace(cfg, *oldTitle, edited))
            return; // gone meanwhile, by a hand edit say
    } else if (parent == QLatin1String("@context")) {
        if (const auto index = AppContext::contextSetIndex(cfg, m_context.current(), true))
            (*cfg.appSets)[*index].buttons.append(edited);
        else
            cfg.buttons.append(edited);
    } else if (parent) {
        const auto stack = std::find_if(cfg.buttons.begin(), cfg.buttons.end(),
                                        [&](const ButtonSpec& b) { return b.title == *parent; });
        if (stack == cfg.buttons.end()) {
            cfg.buttons.append(edited);
        } else {
            if (!stack->children)
                stack->children.emplace();
            stack->children->append(edited);
        }
    } else {
        cfg.buttons.append(edited);
    }
    m_document.commit();
}

void ButtonCommands::clearFeedback()
{
    m_drag.setFeedback(std::nullopt, std::nullopt);
}

void ButtonCommands::dragMoved(const ButtonSpec& spec, const QPointF& point, const QRectF& bar)
{
    const auto feedback = DragEditing::dragFeedback(spec, point, bar, m_document.cfg(), m_drag.barFrames());
    if (feedback)
        m_drag.setFeedback(feedback->markerX, feedback->highlightGroup);
}

void ButtonCommands::dragEnded(const ButtonSpec& spec, const QPointF& point, const QRectF& bar)
{
    if (spec.isLocked())
        return;
    const DropTarget target = DropTargets::at(point, bar, spec, m_document.cfg(), m_drag.barFrames());
    clearFeedback();
    switch (DragEditing::dropChip(m_document.cfg(), spec, target)) {
    case DragEditing::Outcome::Changed:
        m_document.commit();
        break;
    case DragEditing::Outcome::Refused:
        m_platform.beeper().beep();
        break;
    case DragEditing::Outcome::Unchanged:
        break;
    }
}

void ButtonCommands::fileHover(const QPointF& local)
{
    const BarConfig& cfg = m_document.cfg();
    const DropTarget target =
        DropTargets::local(local, std::nullopt, true, true, cfg, contextButtons(), m_drag.barFrames());
    const DropFeedback feedback =
        DropTargets::feedback(target, std::nullopt, std::nullopt, cfg, m_drag.barFrames());
    m_drag.setFeedback(feedback.markerX, feedback.highlightGroup);
}

void ButtonCommands::fileHoverEnd()
{
    clearFeedback();
}

void ButtonCommands::fileDrop(const QList<QUrl>& urls, const QPointF& local)
{
    clearFeedback();
    if (urls.isEmpty())
        return;
    BarConfig& cfg = m_document.cfg();
    const DropTarget target =
        DropTargets::local(local, std::nullopt, true, true, cfg, contextButtons(), m_drag.barFrames());
    if (target.kind == DropTarget::Kind::OpenWith)
        return openWith(target.title, urls);
    DragEditing::dropItems(cfg, urls, target);
    m_document.commit();
}

void ButtonCommands::openWith(const QString& title, const QList<QUrl>& urls)
{
    const QList<ButtonSpec> candidates = QList<ButtonSpec>(m_document.cfg().buttons) + contextButtons();
    const auto found = std::find_if(candidates.begin(), candidates.end(),
                                    [&](const ButtonSpec& b) { return b.title == title; });
    if (found == candidates.end() || !found->argument)
        return;
    QStringList files;
    for (const QUrl& url : urls)
        files.append(url.isLocalFile() ? url.toLocalFile() : url.toString(QUrl::FullyEncoded));
    m_platform.launcher().launchApplication(Paths::expandTilde(*found->argument), files);
}
