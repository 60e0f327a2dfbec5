#pragma once

#include "platform/freedesktop/DesktopEntries.h"

// GIO, with GObject and what they load (libmount, libblkid, libselinux, libffi), is nearly a tenth of an
// idle bar's memory and a good part of what the dynamic linker does at start-up, while a bar that only
// shows itself never needs it. So the code that uses it is a module of its own, loaded on first use; the
// functions of DesktopEntries load it and call through this table.
namespace DesktopEntriesModule {

/// What the module exports, through `vantril_desktop_entries()`.
struct Table
{
    bool (*launch)(const QString& name, const QStringList& files);
    std::optional<DesktopEntries::WindowApplication> (*entryForWindow)(const QString& namedId,
                                                                       const QString& instance,
                                                                       const QString& windowClass,
                                                                       const QString& executable);
    QList<InstalledApplication> (*installed)();
    bool (*openWithDefault)(const QString& uri);
};

/// Where the module is looked for first: for a program that does not sit where it was built or
/// installed, such as a test.
void setFolder(const QString& folder);

} // namespace DesktopEntriesModule
