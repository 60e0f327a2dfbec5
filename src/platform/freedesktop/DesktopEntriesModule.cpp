#include "DesktopEntriesModule.h"

#include "platform/Log.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibrary>

namespace {

QString& firstFolder()
{
    static QString folder;
    return folder;
}

/// The module beside the program (where it is built), else where it is installed, relative to the
/// program so that a package unpacked anywhere finds its own.
QStringList folders()
{
    QStringList list;
    if (!firstFolder().isEmpty())
        list.append(firstFolder());
    if (QCoreApplication::instance()) {
        const QDir program(QCoreApplication::applicationDirPath());
        list.append(program.path());
        list.append(program.filePath(QStringLiteral(VANTRIL_MODULE_DIR_FROM_PROGRAM)));
    }
    return list;
}

const DesktopEntriesModule::Table* table()
{
    static const DesktopEntriesModule::Table* loaded = [] {
        using Export = const DesktopEntriesModule::Table* (*)();
        QString error;
        for (const QString& folder : folders()) {
            QLibrary module(QDir(folder).filePath(QStringLiteral("libvantril-desktop-entries.so")));
            if (const auto entry = reinterpret_cast<Export>(module.resolve("vantril_desktop_entries")))
                return entry();
            error = module.errorString();
        }
        Log::line(QStringLiteral("vantril: applications cannot be found or started: %1").arg(error));
        return static_cast<const DesktopEntriesModule::Table*>(nullptr);
    }();
    return loaded;
}

} // namespace

namespace DesktopEntriesModule {

void setFolder(const QString& folder)
{
    firstFolder() = folder;
}

} // namespace DesktopEntriesModule

namespace DesktopEntries {

bool launch(const QString& name, const QStringList& files)
{
    return table() && table()->launch(name, files);
}

std::optional<WindowApplication> entryForWindow(const QString& namedId, const QString& instance,
                                                const QString& windowClass, const QString& executable)
{
    return table() ? table()->entryForWindow(namedId, instance, windowClass, executable) : std::nullopt;
}

QList<InstalledApplication> installed()
{
    return table() ? table()->installed() : QList<InstalledApplication>();
}

bool openWithDefault(const QString& uri)
{
    return table() && table()->openWithDefault(uri);
}

} // namespace DesktopEntries
