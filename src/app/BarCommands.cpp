#include "BarCommands.h"

#include "app/AppDelegate.h"
#include "app/BarVisibility.h"
#include "app/TapRunner.h"
#include "bar/TapRouting.h"
#include "config/ConfigDocument.h"
#include "config/Editing.h"

#include <QCoreApplication>

namespace BarCommands {

InstanceProtocol::Reply perform(AppDelegate& app, const BarCommand& command)
{
    BarVisibility& visibility = app.barVisibility();
    switch (command.kind) {
    case BarCommand::Kind::Show:
        visibility.show();
        break;
    case BarCommand::Kind::Toggle:
        visibility.toggleBar();
        break;
    case BarCommand::Kind::Hide:
        visibility.hide(true);
        break;
    case BarCommand::Kind::Open:
        if (!open(app, command.title))
            return {1, noSuchButton(command.title)};
        break;
    case BarCommand::Kind::Quit:
        QCoreApplication::quit();
        break;
    }
    return {};
}

bool open(AppDelegate& app, const QString& title)
{
    const BarConfig& cfg = app.document().cfg();
    const auto spec = Editing::button(cfg, title);
    if (!spec)
        return false;
    // A flyout hangs from the bar: a hidden bar comes back for it. A chip that only runs needs no bar.
    const bool opensFlyout = spec->isGroup() || spec->kind() == ActionKind::Folder;
    if (opensFlyout && !app.barVisibility().isShown())
        app.barVisibility().show();
    app.taps().onBar(*spec, TapRouting::anchorFor(cfg, app.drag().barFrames(), title));
    return true;
}

QString noSuchButton(const QString& title)
{
    return QStringLiteral("vantril: no button is titled \"%1\"").arg(title);
}

} // namespace BarCommands
