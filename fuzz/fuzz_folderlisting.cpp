// Folder listings over made-up folders: the rows always open the folder first, show each entry at most
// once under a name of at most 36 characters that never ends in half a character, keep folders first in
// one order, and count exactly the entries left out.

#include "bar/FolderListing.h"

#include <QFile>
#include <QSet>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>

namespace {

[[noreturn]] void fail(const char* what, const QString& detail = {})
{
    std::fprintf(stderr, "%s %s\n", what, detail.toUtf8().constData());
    std::abort();
}

void require(bool condition, const char* what, const QString& detail = {})
{
    if (!condition)
        fail(what, detail);
}

/// A name as the folder reader gets it: bytes without "/" or NUL, not hidden, in the file name encoding.
std::optional<QString> name(FuzzedDataProvider& input)
{
    QByteArray bytes = QByteArray::fromStdString(input.ConsumeRandomLengthString(64));
    bytes.replace('/', '_');
    bytes.replace('\0', '_');
    if (bytes.isEmpty() || bytes.startsWith('.'))
        return std::nullopt;
    return QFile::decodeName(bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const bool belowTop = input.ConsumeBool();
    const std::optional<qsizetype> maxRows =
        input.ConsumeBool() ? std::optional<qsizetype>(input.ConsumeIntegralInRange(0, 40)) : std::nullopt;
    std::vector<FolderListing::Entry> entries;
    QSet<QString> names;
    while (input.remaining_bytes() > 0 && entries.size() < 200) {
        const bool isFolder = input.ConsumeBool();
        if (const auto entry = name(input); entry && !names.contains(*entry)) {
            names.insert(*entry);
            entries.push_back({*entry, isFolder});
        }
    }
    const QString folder = QStringLiteral("/home/user/dir");
    const QList<ButtonSpec> rows =
        FolderListing::rows(folder, belowTop ? QStringLiteral("/home") : folder, entries, maxRows);

    require(!rows.isEmpty() && rows.first().action == QLatin1String("open") &&
                rows.first().argument == folder,
            "the first row does not open the folder");
    const qsizetype leading = belowTop ? 2 : 1;
    if (belowTop)
        require(rows.at(1).argument == QStringLiteral("/home/user"), "the second row does not go up");
    if (entries.empty()) {
        require(rows.size() == leading + 1 && rows.last().title == QLatin1String("(empty)"), "no empty row");
        return 0;
    }
    qsizetype shown = rows.size() - leading;
    qsizetype counted = 0;
    if (shown > 0 && rows.last().symbol == QLatin1String("ellipsis")) {
        bool ok = false;
        counted = rows.last().title.section(QLatin1Char(' '), 1, 1).toLongLong(&ok);
        require(ok && counted > 0, "a bad count", rows.last().title);
        --shown;
    }
    require(shown + counted == qsizetype(entries.size()), "rows shown and counted do not add up");
    require(shown <= FolderListing::shownEntries, "too many rows");
    if (maxRows)
        require(rows.size() <= std::max(*maxRows, leading + 1), "more rows than fit");
    else
        require(shown == std::min<qsizetype>(entries.size(), FolderListing::shownEntries), "too few rows");

    QSet<QString> paths;
    bool folders = true;
    for (qsizetype i = leading; i < leading + shown; ++i) {
        const ButtonSpec& row = rows.at(i);
        require(row.argument && row.argument->startsWith(folder + QLatin1Char('/')),
                "a row outside the folder");
        const QString entry = row.argument->mid(folder.size() + 1);
        require(names.contains(entry), "a row for no entry", entry);
        require(!paths.contains(entry), "an entry shown twice", entry);
        paths.insert(entry);
        const bool isFolder = row.action == QLatin1String("folder");
        require(folders || !isFolder, "a folder after a file");
        folders = isFolder;
        if (!isFolder)
            for (const FolderListing::Entry& left : entries)
                require(!left.isFolder || paths.contains(left.name), "a file shown before a folder left out");
        require(row.title.size() <= 36, "a long title", row.title);
        require(row.title == entry ||
                    (row.title.endsWith(QChar(0x2026)) && entry.startsWith(row.title.chopped(1))),
                "a title that is not the name or its beginning", row.title);
        if (row.title.size() >= 2)
            require(!row.title.at(row.title.size() - 2).isHighSurrogate() ||
                        row.title.back().isLowSurrogate(),
                    "a title cut inside a character", entry);
    }
    return 0;
}
