#include "DesktopEntryFile.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTextStream>
#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Desktop entries are a few kilobytes; translations into every language stay well below this.
constexpr qint64 kLargestEntry = 1 << 20;

} // namespace

std::optional<QByteArray> readDesktopEntryFile(const QString& path)
{
    // O_NONBLOCK: opening a FIFO for reading would otherwise wait for a writer, on the UI thread.
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return std::nullopt;
    QFile file;
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return std::nullopt;
    }
    // Asked of the open file, not the name, which could be swapped for a FIFO after a check by name.
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode) || info.st_size > kLargestEntry)
        return std::nullopt;
    const QByteArray bytes = file.read(kLargestEntry + 1);
    if (bytes.size() > kLargestEntry)
        return std::nullopt;
    return bytes;
}

bool isInstalledDesktopEntry(const QString& path)
{
    // The path as given, links unresolved: a link the user put into an applications folder installs
    // what it points at, and a link elsewhere to an installed entry is no less stray for it.
    const QString cleaned = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    const QStringList folders = QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
    return std::any_of(folders.begin(), folders.end(), [&](const QString& folder) {
        return cleaned.startsWith(QDir::cleanPath(folder) + QLatin1Char('/'));
    });
}

std::optional<QString> desktopEntryValue(const QString& path, const QString& key)
{
    const std::optional<QByteArray> bytes = readDesktopEntryFile(path);
    if (!bytes)
        return std::nullopt;
    QTextStream in(*bytes);
    bool mainGroup = false;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.startsWith(QLatin1Char('[')))
            mainGroup = line == QLatin1String("[Desktop Entry]");
        else if (mainGroup && line.section(QLatin1Char('='), 0, 0).trimmed() == key)
            return line.section(QLatin1Char('='), 1).trimmed();
    }
    return std::nullopt;
}
