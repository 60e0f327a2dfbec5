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
        auto* editor = new EditView(editing.value_or(blank(newStack)), !editing, services);
        const std::optional<QString> oldTitle =
            editing ? std::optional<QString>(editing->title) : std::nullopt;
        // Accepting closes the window, but it is deleted only later: what it holds can still be read.
        connect(editor, &QDialog::accepted, this,
                [this, editor, oldTitle, parent] { Q_EMIT saved(editor->edited(), oldTitle, parent); });
        m_editor = editor;
    }
    m_editor->show();
    // Opened from a bar that never takes focus: without this the typing would go to whatever was in front.
    m_editor->raise();
    m_editor->activateWindow();
}
