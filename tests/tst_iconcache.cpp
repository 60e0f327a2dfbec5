#include "actions/IconCache.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
#include <sys/stat.h>

class TestIconCache : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void iconsAreSmallAndNeverMissing();
    void tildeAndFullPathShareOneEntry();
};

void TestIconCache::iconsAreSmallAndNeverMissing()
{
    QTemporaryDir dir;
    // A FIFO in a folder listing: looking at its type must not wait for a writer.
    const QString fifo = dir.filePath(QStringLiteral("x.desktop"));
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0644), 0);
    for (const QString& path : {dir.path(), dir.filePath(QStringLiteral("missing.txt")),
                                QStringLiteral("/bin/sh"), QStringLiteral(""), fifo}) {
        const QImage image = IconCache::image(path);
        QVERIFY2(!image.isNull(), qPrintable(path));
        QVERIFY2(image.width() <= 16 && image.height() <= 16, qPrintable(path));
    }
}

void TestIconCache::tildeAndFullPathShareOneEntry()
{
    const QImage viaTilde = IconCache::image(QStringLiteral("~"));
    const QImage full = IconCache::image(QDir::homePath());
    // The same cached image, not a second lookup that happens to look alike.
    QCOMPARE(viaTilde.cacheKey(), full.cacheKey());
    QVERIFY(IconCache::image(QStringLiteral("/")).cacheKey() != full.cacheKey() ||
            IconCache::image(QStringLiteral("/")) == full);
}

QTEST_MAIN(TestIconCache)
#include "tst_iconcache.moc"
