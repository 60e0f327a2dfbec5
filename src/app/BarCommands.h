#pragma once

#include "app/BarCommand.h"
#include "app/InstanceProtocol.h"

class AppDelegate;

/// The commands of the command line, carried out on the running bar.
namespace BarCommands {

/// Shows, hides or toggles the bar, taps a button or quits; the reply is what the copy of the program
/// that sent the command ends with.
InstanceProtocol::Reply perform(AppDelegate& app, const BarCommand& command);

/// A tap on the button titled `title` (looked up as everywhere: the bar, the stacks' members, then the
/// applications' sets), from its chip on the bar when it has one. False when no button has that title.
bool open(AppDelegate& app, const QString& title);

/// The line for an "--open" title that names no button.
QString noSuchButton(const QString& title);

} // namespace BarCommands
