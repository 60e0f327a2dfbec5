#include "EditorLauncher.h"

#include "actions/Actions.h"
#include "actions/ShortcutList.h"
#include "editor/EditView.h"
#include "platform/Launcher.h"

namespace {

ButtonSpec blank(bool newStack)
{
    ButtonSpec initial;
    if (newStack) {
        initial.action = QStringLiteral("group");
        initial.symbol = QStringLiteral("folder");
        initial.children = QList<ButtonSpec>();
    } else {
        initial.action = QStringLiteral("open");
        initial.symbol = QStringLiteral("doc");
    }
    return initial;
}

} // namespace

EditorLauncher::EditorLauncher(Launcher& launcher, QObject* parent)
    : QObject(parent)
    , m_launcher(launcher)
{}

bool EditorLauncher::isShown() const
{
    return m_editor && m_editor->isVisible();
}

void EditorLauncher::open(const std::optional<ButtonSpec>& editing, const std::optional<QString>& parent,
                          bool newStack)
{
    if (!m_editor) {
        EditorServices services;
        services.applications = [this] {
            QList<ApplicationChoice> choices;
            for (const InstalledApplication& app : m_launcher.installedApplications())
                choices.append({app.name, app.id});
            return choices;
        };
        services.shortcutNames = ShortcutList::names();
        services.shortcutsFolder = Actions::shortcutsFolder();
        m_editor = new EditView(editing.value_or(blank(newStack)), !editing, services);
        const std::optional<QString> oldTitle =
            editing ? std::optional<QString>(editing->title) : std::nullopt;
        connect(m_editor, &EditView::saved, this, [this, oldTitle, parent](const ButtonSpec& edited) {
            Q_EMIT saved(edited, oldTitle, parent);
        });
    }
    m_editor->show();
    m_editor->raise();
    m_editor->activateWindow();
}
