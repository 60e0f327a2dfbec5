#include "FolderListing.h"

#include "actions/Paths.h"

#include <QCollator>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace FolderListing {

namespace {

constexpr qsizetype kLongestName = 36;

QString cleaned(const QString& path)
{
    return QDir::cleanPath(Paths::expandTilde(path));
}

QString elided(const QString& name)
{
    if (name.length() <= kLongestName)
        return name;
    qsizetype keep = kLongestName - 1;
    // Cutting between the halves of a surrogate pair would leave a lone half that draws as garbage.
    if (name.at(keep - 1).isHighSurrogate())
        --keep;
    return name.left(keep) + QChar(0x2026);
}

QString childPath(const QString& folder, const QString& name)
{
    if (folder.endsWith(QLatin1Char('/')))
        return folder + name;
    return folder + QLatin1Char('/') + name;
}

std::optional<QString> parentOf(const QString& folder)
{
    if (folder == QLatin1String("/") || folder.isEmpty())
        return std::nullopt;
    const qsizetype slash = folder.lastIndexOf(QLatin1Char('/'));
    if (slash == 0)
        return QStringLiteral("/");
    if (slash > 0)
        return folder.left(slash);
    return QFileInfo(folder).absolutePath();
}

QString displayName(const QString& folder)
{
    const QString name = QFileInfo(folder).fileName();
    return name.isEmpty() ? QStringLiteral("/") : name;
}

bool pointsAtFolder(int folderFd, const char* name)
{
    struct stat info;
    return ::fstatat(folderFd, name, &info, 0) == 0 && S_ISDIR(info.st_mode);
}

std::vector<Entry> readEntries(const QString& folder)
{
    std::vector<Entry> entries;
    if (folder.isEmpty())
        return entries;
    // Read directly rather than through QDirIterator, which builds a path and a QFileInfo for every
    // entry and so takes about twice as long on a folder of 100,000 files.
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return entries;
    DIR* stream = ::fdopendir(fd);
    if (!stream) {
        ::close(fd);
        return entries;
    }
    while (const dirent* entry = ::readdir(stream)) {
        if (entry->d_name[0] == '.')
            continue;
        // The directory entry already says what most things are; only links, which count by what they
        // point at, and file systems that leave the type out cost a stat.
        bool isFolder = entry->d_type == DT_DIR;
        if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN)
            isFolder = pointsAtFolder(::dirfd(stream), entry->d_name);
        entries.push_back(Entry{QFile::decodeName(entry->d_name), isFolder});
    }
    ::closedir(stream);
    return entries;
}

QCollator naturalCollator()
{
    // In the C locale QCollator falls back to comparing code points and ignores numeric mode, so
    // "file10" would come before "file2"; English collation gives the order people expect there.
    QLocale locale;
    if (locale.language() == QLocale::C)
        locale = QLocale(QLocale::English, QLocale::UnitedStates);
    QCollator collator(locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

} // namespace

QList<ButtonSpec> items(const QString& path, const std::optional<QString>& root,
                        std::optional<qsizetype> maxRows)
{
    const QString folder = cleaned(path);
    return FolderListing::rows(folder, root ? cleaned(*root) : folder, readEntries(folder), maxRows);
}

QList<ButtonSpec> rows(const QString& folder, const QString& top, std::vector<Entry> entries,
                       std::optional<qsizetype> maxRows)
{
    QList<ButtonSpec> rows;
    rows.append(ButtonSpec::make(QStringLiteral("Open in File Manager"),
                                 QStringLiteral("arrow.up.forward.app"), QStringLiteral("open"), folder));

    if (folder != top) {
        if (const std::optional<QString> parent = parentOf(folder)) {
            rows.append(ButtonSpec::make(QStringLiteral("\u2039 ") + elided(displayName(*parent)),
                                         QStringLiteral("arrow.up"), QStringLiteral("navigate"), *parent));
        }
    }

    if (entries.empty()) {
        rows.append(ButtonSpec::make(QStringLiteral("(empty)"), QStringLiteral("tray"),
                                     QStringLiteral("navigate"), folder));
        return rows;
    }

    const QCollator collator = naturalCollator();
    const auto before = [&collator](const Entry& a, const Entry& b) {
        if (a.isFolder != b.isFolder)
            return a.isFolder;
        const int order = collator.compare(a.name, b.name);
        // Names equal but for case still need a fixed order, or the rows would shuffle between openings.
        return order != 0 ? order < 0 : a.name < b.name;
    };
    auto shown = std::min<std::size_t>(entries.size(), shownEntries);
    if (maxRows) {
        // What does not fit is counted by the last row, which then needs a place of its own.
        const auto room = std::max<qsizetype>(0, *maxRows - rows.size());
        if (qsizetype(shown) + (entries.size() > shown ? 1 : 0) > room)
            shown = std::max<qsizetype>(0, room - 1);
    }
    // Only the first few rows are ever shown, so selecting them is enough; sorting a huge folder is not.
    std::partial_sort(entries.begin(), entries.begin() + shown, entries.end(), before);

    for (std::size_t i = 0; i < shown; ++i) {
        const Entry& entry = entries[i];
        const QString full = childPath(folder, entry.name);
        if (entry.isFolder)
            rows.append(ButtonSpec::make(elided(entry.name), QStringLiteral("folder"),
                                         QStringLiteral("folder"), full, full));
        else
            rows.append(ButtonSpec::make(elided(entry.name), QStringLiteral("doc"), QStringLiteral("open"),
                                         full, full));
    }

    if (entries.size() > shown) {
        const auto more = static_cast<qulonglong>(entries.size() - shown);
        rows.append(ButtonSpec::make(QStringLiteral("\u2026 %1 more").arg(more), QStringLiteral("ellipsis"),
                                     QStringLiteral("open"), folder));
    }
    return rows;
}

} // namespace FolderListing
