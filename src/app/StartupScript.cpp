#include "StartupScript.h"

#include "app/BarPlacement.h"
#include "app/ContextTracker.h"
#include "app/EditorLauncher.h"
#include "app/StartupCommands.h"
#include "app/TapRunner.h"
#include "app/UpdateCheck.h"
#include "bar/Geometry.h"
#include "bar/TapRouting.h"
#include "config/ConfigDocument.h"
#include "config/Editing.h"
#include "dragdrop/DragState.h"

#include <QPointer>
#include <QTimer>

namespace {

// Long enough for the window manager to have placed and shown the bar, and for it to be laid out.
constexpr int moveDelayMs = 500;
constexpr int editorDelayMs = 1000;
constexpr int openDelayMs = 1200;
constexpr int updateDelayMs = 1500;

/// The button VANTRIL_SHOW_EDITOR names: top-level buttons first, then stack members; the
/// applications' sets are not searched.
std::optional<ButtonSpec> shownInEditor(const BarConfig& cfg, const QString& id)
{
    if (id.isEmpty())
        return std::nullopt;
    for (const ButtonSpec& top : cfg.buttons) {
        if (top.title == id)
            return top;
    }
    for (const ButtonSpec& top : cfg.buttons) {
        for (const ButtonSpec& member : top.children.value_or(QList<ButtonSpec>())) {
            if (member.title == id)
                return member;
        }
    }
    return std::nullopt;
}

} // namespace

StartupScript::StartupScript(QProcessEnvironment environment, QObject* parent)
    : QObject(parent)
    , m_environment(std::move(environment))
{}

QString StartupScript::value(const char* name) const
{
    return m_environment.value(QString::fromLatin1(name));
}

bool StartupScript::has(const char* name) const
{
    return m_environment.contains(QString::fromLatin1(name));
}

bool StartupScript::barAtTop() const
{
    return has("VANTRIL_TOP");
}

void StartupScript::fixContext(ContextTracker& context) const
{
    if (has("VANTRIL_CONTEXT_APP"))
        context.fix(AppContext::fromEnvironment(value("VANTRIL_CONTEXT_APP")));
}

void StartupScript::followContext(ContextTracker& context) const
{
    if (!has("VANTRIL_CONTEXT_APP"))
        context.follow();
}

void StartupScript::applyConfigCommands(ConfigDocument& document) const
{
    StartupCommands::applyConfigCommands(document, m_environment);
}

void StartupScript::scheduleLaterSteps(const Parts& parts)
{
    if (const auto found = shownInEditor(parts.document.cfg(), value("VANTRIL_SHOW_EDITOR"))) {
        EditorLauncher* editor = &parts.editor;
        QTimer::singleShot(editorDelayMs, editor,
                           [editor, found] { editor->open(found, std::nullopt, false); });
    }
    if (has("VANTRIL_CHECK_UPDATES") && parts.updater) {
        QPointer<UpdateCheck> updater(parts.updater);
        QTimer::singleShot(updateDelayMs, this, [updater] {
            if (updater)
                updater->check();
        });
    }
    if (const auto offset = Geometry::offsetFrom(value("VANTRIL_MOVE")); offset && has("VANTRIL_MOVE")) {
        BarPlacement* placement = &parts.placement;
        QTimer::singleShot(moveDelayMs, placement,
                           [placement, offset = *offset] { placement->moveBy(offset); });
    }
    if (has("VANTRIL_OPEN")) {
        const QString id = value("VANTRIL_OPEN");
        const Parts copy = parts;
        QTimer::singleShot(openDelayMs, this, [copy, id] {
            const BarConfig& cfg = copy.document.cfg();
            if (const auto spec = Editing::button(cfg, id))
                copy.taps.onBar(*spec, TapRouting::anchorFor(cfg, copy.drag.barFrames(), id));
        });
    }
}
