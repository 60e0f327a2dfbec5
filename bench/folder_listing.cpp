// Times FolderListing::items on folders of 100,000 files, with and without a few hundred subfolders.
// Usage: bench_folder_listing [runs]

#include "bar/FolderListing.h"

#include <QByteArray>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kFiles = 100000;
constexpr int kFolders = 300;

// Names that make the collator work: shared prefixes, embedded numbers, mixed case, some non-ASCII.
QString fileName(int i)
{
    static const char* const stems[] = {"Report", "photo_IMG_", "invoice-", "Notes ", "track", "Résumé "};
    const int n = static_cast<int>((static_cast<long long>(i) * 7919) % kFiles);
    return QString::fromUtf8(stems[i % 6]) + QString::number(n) + QStringLiteral(".txt");
}

bool populate(const QString& root, int folders)
{
    for (int i = 0; i < folders; ++i) {
        if (!QDir().mkdir(root + QStringLiteral("/Folder %1").arg(i)))
            return false;
    }
    for (int i = 0; i < kFiles; ++i) {
        const QByteArray path = QFile::encodeName(root + QLatin1Char('/') + fileName(i));
        const int fd = ::open(path.constData(), O_CREAT | O_WRONLY | O_EXCL, 0644);
        if (fd < 0)
            return false;
        ::close(fd);
    }
    return true;
}

void time(const QString& folder, const char* label, int runs)
{
    std::vector<qint64> times;
    qsizetype rows = 0;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer timer;
        timer.start();
        rows = FolderListing::items(folder, std::nullopt).size();
        times.push_back(timer.nsecsElapsed());
    }
    std::sort(times.begin(), times.end());
    const auto ms = [](qint64 ns) { return static_cast<double>(ns) / 1e6; };
    std::printf("%s: median %.1f ms, fastest %.1f ms, slowest %.1f ms over %d runs (%lld rows)\n", label,
                ms(times[times.size() / 2]), ms(times.front()), ms(times.back()), runs,
                static_cast<long long>(rows));
}

} // namespace

int main(int argc, char** argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 5;

    // With folders present every file loses to a folder at once; with none, every file goes through the
    // collator, which is the slower case.
    QTemporaryDir mixed;
    QTemporaryDir filesOnly;
    if (!mixed.isValid() || !filesOnly.isValid() || !populate(mixed.path(), kFolders) ||
        !populate(filesOnly.path(), 0)) {
        std::fprintf(stderr, "could not create the test folders\n");
        return 1;
    }
    time(mixed.path(), "100000 files and 300 folders", runs);
    time(filesOnly.path(), "100000 files, no folders", runs);
    return 0;
}
