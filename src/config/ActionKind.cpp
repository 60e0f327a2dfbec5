#include "ActionKind.h"

#include <algorithm>

namespace ActionKinds {

const QList<ActionKindInfo>& all()
{
    static const QList<ActionKindInfo> kinds = {
        {ActionKind::Open, QLatin1String("open"), QLatin1String("cyan"), true, "Open a file or folder"},
        {ActionKind::Folder, QLatin1String("folder"), QLatin1String("cyan"), true, "Browse a folder"},
        {ActionKind::App, QLatin1String("app"), QLatin1String("orange"), true, "Start an application"},
        {ActionKind::Url, QLatin1String("url"), QLatin1String("green"), true, "Open a web address"},
        {ActionKind::Shortcut, QLatin1String("shortcut"), QLatin1String("purple"), true, "Run a script"},
        {ActionKind::Keys, QLatin1String("keys"), QLatin1String("yellow"), true, "Press keys"},
        {ActionKind::Paste, QLatin1String("paste"), QLatin1String("yellow"), true, "Paste text"},
        {ActionKind::Shell, QLatin1String("shell"), QLatin1String("white"), true, "Run a shell command"},
        {ActionKind::NewFolder, QLatin1String("newFolder"), QLatin1String("cyan"), false,
         "Make a new folder on the desktop"},
        {ActionKind::Group, QLatin1String("group"), QLatin1String("white"), false, "Stack of buttons"},
        {ActionKind::AppleScript, QLatin1String("applescript"), QLatin1String("white"), true, nullptr},
        {ActionKind::Navigate, QLatin1String("navigate"), QLatin1String("white"), true, nullptr},
    };
    return kinds;
}

ActionKind of(const QString& name)
{
    const QList<ActionKindInfo>& kinds = all();
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&](const ActionKindInfo& row) { return row.name == name; });
    return found == kinds.end() ? ActionKind::Unknown : found->kind;
}

const ActionKindInfo& info(ActionKind kind)
{
    static const ActionKindInfo unknown{ActionKind::Unknown, QLatin1String(""), QLatin1String("white"), true,
                                        nullptr};
    const QList<ActionKindInfo>& kinds = all();
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&](const ActionKindInfo& row) { return row.kind == kind; });
    return found == kinds.end() ? unknown : *found;
}

} // namespace ActionKinds
