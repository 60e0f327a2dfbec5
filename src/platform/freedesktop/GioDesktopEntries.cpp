// The module behind DesktopEntries: everything that needs GIO, loaded only when an application is first
// looked up or started.
#include "platform/DesktopEntryFile.h"
#include "platform/freedesktop/DesktopEntriesModule.h"
#include "platform/freedesktop/DetachedProcess.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <memory>

namespace {

struct GObjectUnref
{
    void operator()(gpointer object) const
    {
        if (object)
            g_object_unref(object);
    }
};
using AppInfo = std::unique_ptr<GAppInfo, GObjectUnref>;

struct GListFree
{
    void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};
using ObjectList = std::unique_ptr<GList, GListFree>;

/// What a name resolved to: an application entry, or a bare program.
struct Target
{
    AppInfo app;
    QString program;
};

QString utf8(const char* text)
{
    return text ? QString::fromUtf8(text) : QString();
}

QString withoutDesktopSuffix(QString id)
{
    if (id.endsWith(QLatin1String(".desktop")))
        id.chop(8);
    return id;
}

struct KeyFileFree
{
    void operator()(GKeyFile* keyFile) const { g_key_file_free(keyFile); }
};

/// Read here rather than by GIO from the name, which would wait forever on a FIFO called "x.desktop",
/// on the UI thread.
AppInfo entryFromFile(const QString& path)
{
    const std::optional<QByteArray> bytes = readDesktopEntryFile(path);
    if (!bytes)
        return nullptr;
    const std::unique_ptr<GKeyFile, KeyFileFree> keyFile(g_key_file_new());
    if (!g_key_file_load_from_data(keyFile.get(), bytes->constData(), gsize(bytes->size()), G_KEY_FILE_NONE,
                                   nullptr))
        return nullptr;
    return AppInfo(G_APP_INFO(g_desktop_app_info_new_from_keyfile(keyFile.get())));
}

AppInfo entryWithId(const QString& id)
{
    const QString withSuffix = id.endsWith(QLatin1String(".desktop")) ? id : id + QStringLiteral(".desktop");
    return AppInfo(G_APP_INFO(g_desktop_app_info_new(withSuffix.toUtf8().constData())));
}

/// The first installed entry, in id order, for which `matches` holds.
template<typename Predicate>
AppInfo firstEntry(Predicate matches)
{
    const ObjectList all(g_app_info_get_all());
    QList<GAppInfo*> hits;
    for (GList* node = all.get(); node; node = node->next) {
        if (matches(G_APP_INFO(node->data)))
            hits.append(G_APP_INFO(node->data));
    }
    if (hits.isEmpty())
        return nullptr;
    // GIO lists entries in no particular order; the id order keeps the choice the same from run to run.
    const auto first = std::min_element(hits.begin(), hits.end(), [](GAppInfo* a, GAppInfo* b) {
        return qstrcmp(g_app_info_get_id(a), g_app_info_get_id(b)) < 0;
    });
    return AppInfo(G_APP_INFO(g_object_ref(*first)));
}

bool isTerminalEntry(GAppInfo* app)
{
    if (!G_IS_DESKTOP_APP_INFO(app))
        return false;
    const QStringList categories =
        utf8(g_desktop_app_info_get_categories(G_DESKTOP_APP_INFO(app))).split(QLatin1Char(';'));
    return categories.contains(QStringLiteral("TerminalEmulator"));
}

QString startupWmClass(GAppInfo* app)
{
    return G_IS_DESKTOP_APP_INFO(app) ? utf8(g_desktop_app_info_get_startup_wm_class(G_DESKTOP_APP_INFO(app)))
                                      : QString();
}

Target resolve(const QString& name, int depth = 0);

Target terminalEmulator(int depth)
{
    const QString preferred = qEnvironmentVariable("TERMINAL");
    if (!preferred.isEmpty() && depth == 0) {
        if (Target target = resolve(preferred, depth + 1); target.app || !target.program.isEmpty())
            return target;
    }
    // Debian's choice of terminal, set by the administrator or the desktop's packages.
    if (const QString debian = QStandardPaths::findExecutable(QStringLiteral("x-terminal-emulator"));
        !debian.isEmpty())
        return {nullptr, debian};
    return {firstEntry(isTerminalEntry), QString()};
}

/// The other desktop's well-known applications, as the user's default application for their role.
Target wellKnown(const QString& name, int depth)
{
    const auto is = [&](const char* known) {
        return name.compare(QLatin1String(known), Qt::CaseInsensitive) == 0;
    };
    if (is("Safari"))
        return {AppInfo(g_app_info_get_default_for_uri_scheme("https")), QString()};
    if (is("Mail"))
        return {AppInfo(g_app_info_get_default_for_uri_scheme("mailto")), QString()};
    if (is("Finder"))
        return {AppInfo(g_app_info_get_default_for_type("inode/directory", FALSE)), QString()};
    if (is("Calendar"))
        return {AppInfo(g_app_info_get_default_for_type("text/calendar", FALSE)), QString()};
    if (is("Notes") || is("TextEdit"))
        return {AppInfo(g_app_info_get_default_for_type("text/plain", FALSE)), QString()};
    if (is("Terminal"))
        return terminalEmulator(depth);
    return {};
}

Target resolve(const QString& name, int depth)
{
    if (name.isEmpty())
        return {};
    if (QFileInfo(name).isAbsolute()) {
        const QFileInfo file(name);
        if (file.suffix().compare(QLatin1String("desktop"), Qt::CaseInsensitive) == 0)
            return {entryFromFile(name), QString()};
        if (file.isFile() && file.isExecutable())
            return {nullptr, name};
        return {};
    }
    if (AppInfo byId = entryWithId(name))
        return {std::move(byId), QString()};
    const QString bareName = withoutDesktopSuffix(name);
    if (AppInfo byId = firstEntry([&](GAppInfo* app) {
            return withoutDesktopSuffix(utf8(g_app_info_get_id(app)))
                       .compare(bareName, Qt::CaseInsensitive) == 0;
        }))
        return {std::move(byId), QString()};
    if (AppInfo byName = firstEntry([&](GAppInfo* app) {
            return utf8(g_app_info_get_name(app)).compare(name, Qt::CaseInsensitive) == 0 ||
                   utf8(g_app_info_get_display_name(app)).compare(name, Qt::CaseInsensitive) == 0;
        }))
        return {std::move(byName), QString()};
    if (Target known = wellKnown(name, depth); known.app || !known.program.isEmpty())
        return known;
    return {nullptr, QStandardPaths::findExecutable(name)};
}

bool launchEntry(GAppInfo* app, const QStringList& files)
{
    GList* list = nullptr;
    for (const QString& file : files)
        list = g_list_append(list, g_file_new_for_path(QFile::encodeName(file).constData()));
    const ObjectList fileList(list);
    const std::unique_ptr<GAppLaunchContext, GObjectUnref> context(g_app_launch_context_new());
    GError* error = nullptr;
    const bool launched = g_app_info_launch(app, fileList.get(), context.get(), &error);
    g_clear_error(&error);
    return launched;
}

std::optional<DesktopEntries::WindowApplication> entryForWindow(const QString& namedId,
                                                                const QString& instance,
                                                                const QString& windowClass,
                                                                const QString& executable)
{
    AppInfo entry = namedId.isEmpty() ? nullptr : entryWithId(namedId);
    const auto sameText = [](const QString& a, const QString& b) {
        return !a.isEmpty() && !b.isEmpty() && a.compare(b, Qt::CaseInsensitive) == 0;
    };
    if (!entry) {
        entry = firstEntry([&](GAppInfo* app) {
            const QString id = withoutDesktopSuffix(utf8(g_app_info_get_id(app)));
            return sameText(id, windowClass) || sameText(id, instance);
        });
    }
    if (!entry) {
        entry = firstEntry([&](GAppInfo* app) {
            const QString wmClass = startupWmClass(app);
            return sameText(wmClass, windowClass) || sameText(wmClass, instance);
        });
    }
    if (!entry && !executable.isEmpty()) {
        entry = firstEntry([&](GAppInfo* app) {
            return QFileInfo(utf8(g_app_info_get_executable(app))).fileName() == executable;
        });
    }
    if (!entry)
        return std::nullopt;
    return DesktopEntries::WindowApplication{withoutDesktopSuffix(utf8(g_app_info_get_id(entry.get()))),
                                             utf8(g_app_info_get_name(entry.get())),
                                             isTerminalEntry(entry.get())};
}

bool launch(const QString& name, const QStringList& files)
{
    const Target target = resolve(name);
    if (target.app)
        return launchEntry(target.app.get(), files);
    if (!target.program.isEmpty())
        return DetachedProcess::start(target.program, files);
    return false;
}

QList<InstalledApplication> installed()
{
    const ObjectList all(g_app_info_get_all());
    QList<InstalledApplication> list;
    for (GList* node = all.get(); node; node = node->next) {
        GAppInfo* app = G_APP_INFO(node->data);
        if (g_app_info_should_show(app))
            list.append({utf8(g_app_info_get_name(app)), withoutDesktopSuffix(utf8(g_app_info_get_id(app)))});
    }
    std::sort(list.begin(), list.end(), [](const InstalledApplication& a, const InstalledApplication& b) {
        return a.name.compare(b.name, Qt::CaseInsensitive) < 0;
    });
    return list;
}

bool openWithDefault(const QString& uri)
{
    GError* error = nullptr;
    const bool opened = g_app_info_launch_default_for_uri(uri.toUtf8().constData(), nullptr, &error);
    g_clear_error(&error);
    return opened;
}

} // namespace

extern "C" Q_DECL_EXPORT const DesktopEntriesModule::Table* vantril_desktop_entries()
{
    static const DesktopEntriesModule::Table table{&launch, &entryForWindow, &installed, &openWithDefault};
    return &table;
}
