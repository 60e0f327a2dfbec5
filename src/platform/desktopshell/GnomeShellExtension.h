#pragma once

#include <QString>

/// The GNOME Shell extension shipped with the program (data/gnome-shell), which reports the focused
/// window to the bar.
namespace GnomeShellExtension {

/// Its uuid, which is also the name of its folder and what `gnome-extensions enable` takes.
QString uuid();
/// Whether GNOME Shell runs it now: installed, enabled and started without error.
bool isActive();

} // namespace GnomeShellExtension
