#include "DesktopEntryFile.h"

#include <QDir>
#include <QFile>
#include <QList>
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

namespace {

/// Only spaces and tabs surround the "=" in a desktop entry; anything else belongs to the key or value.
QStringView trimmedBlanks(QStringView text)
{
    const auto isBlank = [](QChar c) { return c == u' ' || c == u'\t' || c == u'\r'; };
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

QString unescaped(QStringView value)
{
    QString result;
    result.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c != u'\\' || i + 1 == value.size()) {
            result += c;
            continue;
        }
        switch (value.at(++i).unicode()) {
        case u's':
            result += u' ';
            break;
        case u'n':
            result += u'\n';
            break;
        case u't':
            result += u'\t';
            break;
        case u'r':
            result += u'\r';
            break;
        case u'\\':
            result += u'\\';
            break;
        default:
            // Not an escape of the value itself, such as the quoting inside "Exec": left for its reader.
            result += c;
            result += value.at(i);
        }
    }
    return result;
}

} // namespace

std::optional<QString> desktopEntryValue(const QString& path, const QString& key)
{
    const std::optional<QByteArray> bytes = readDesktopEntryFile(path);
    if (!bytes)
        return std::nullopt;
    QTextStream in(*bytes);
    return desktopEntryValue(in, key);
}

std::optional<QString> desktopEntryValue(QTextStream& in, const QString& key)
{
    bool mainGroup = false;
    while (!in.atEnd()) {
        const QString line = in.readLine();
        const QStringView content = trimmedBlanks(line);
        if (content.startsWith(u'[')) {
            mainGroup = content == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = content.indexOf(u'=');
        if (mainGroup && equals > 0 && trimmedBlanks(content.left(equals)) == key)
            return unescaped(trimmedBlanks(content.sliced(equals + 1)));
    }
    return std::nullopt;
}

QString desktopEntryEscaped(const QString& value)
{
    QString result;
    result.reserve(value.size() + 8);
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c == u'\\')
            result += QLatin1String("\\\\");
        else if (c == u'\n')
            result += QLatin1String("\\n");
        else if (c == u'\t')
            result += QLatin1String("\\t");
        else if (c == u'\r')
            result += QLatin1String("\\r");
        else if (c == u' ' && (i == 0 || i == value.size() - 1))
            result += QLatin1String("\\s");
        else
            result += c;
    }
    return result;
}

QString desktopEntryExecArgument(const QString& path)
{
    QString quoted = QStringLiteral("\"");
    for (const QChar c : path) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += u'\\';
        else if (c == u'%')
            quoted += u'%';
        quoted += c;
    }
    quoted += u'"';
    return desktopEntryEscaped(quoted);
}

std::optional<QByteArray> autostartEntryFrom(const QByteArray& entry)
{
    // Whether it starts is the autostart entry's own business, whatever the installed one says.
    const auto decidesStart = [](const QByteArray& line) {
        const QByteArray key = line.left(line.indexOf('=')).trimmed();
        return key == "Hidden" || key == "X-GNOME-Autostart-enabled";
    };
    QByteArray result;
    bool mainGroup = false;
    bool found = false;
    for (const QByteArray& line : entry.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.startsWith('[')) {
            mainGroup = trimmed == "[Desktop Entry]" && !found;
            found = found || mainGroup;
            if (mainGroup)
                result += "[Desktop Entry]\n";
        } else if (mainGroup && !trimmed.isEmpty() && !decidesStart(trimmed)) {
            result += trimmed + '\n';
        }
    }
    if (!found)
        return std::nullopt;
    return result + "X-GNOME-Autostart-enabled=true\n";
}
