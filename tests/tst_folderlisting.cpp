#include "TestSupport.h"
#include "bar/FolderListing.h"
#include "config/BarConfig.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <unistd.h>

class TestFolderListing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void foldersComeFirstInNaturalCaseInsensitiveOrder();
    void namesEqualButForCaseKeepOneOrder();
    void hiddenEntriesAreLeftOut();
    void longFoldersShowTheFirstEntriesAndCountTheRest_data();
    void longFoldersShowTheFirstEntriesAndCountTheRest();
    void longNamesAreShortened();
    void upRowAppearsOnlyBelowTheRoot();
    void topLevelFoldersGoUpToSlash();
    void missingOrNonFolderPathListsAsEmpty();
    void unreadableFolderListsAsEmpty();
    void linksCountByWhatTheyPointAt();
    void tildeIsExpandedInPathAndRoot();
};

namespace {

const QString kEllipsis = QString(QChar(0x2026));

void makeFile(const QString& path)
{
    QVERIFY2(writeAll(path, QByteArray()), qPrintable(path));
}

void makeFolder(const QString& path)
{
    QVERIFY2(QDir().mkpath(path), qPrintable(path));
}

QStringList titles(const QList<ButtonSpec>& rows)
{
    QStringList list;
    for (const ButtonSpec& row : rows)
        list.append(row.title);
    return list;
}

// The entry rows only: everything after the open row and the up row, if any.
QStringList entryTitles(const QList<ButtonSpec>& rows)
{
    QStringList list;
    for (const ButtonSpec& row : rows) {
        if (row.symbol == QLatin1String("folder") || row.symbol == QLatin1String("doc"))
            list.append(row.title);
    }
    return list;
}

ButtonSpec expected(const QString& title, const QString& symbol, const QString& action,
                    const QString& argument, std::optional<QString> iconPath = std::nullopt)
{
    ButtonSpec button;
    button.title = title;
    button.symbol = symbol;
    button.action = action;
    button.argument = argument;
    button.iconPath = std::move(iconPath);
    return button;
}

ButtonSpec openRow(const QString& folder)
{
    return expected(QStringLiteral("Open in File Manager"), QStringLiteral("arrow.up.forward.app"),
                    QStringLiteral("open"), folder);
}

ButtonSpec emptyRow(const QString& folder)
{
    return expected(QStringLiteral("(empty)"), QStringLiteral("tray"), QStringLiteral("navigate"), folder);
}

ButtonSpec upRow(const QString& name, const QString& parent)
{
    return expected(QStringLiteral("\u2039 ") + name, QStringLiteral("arrow.up"), QStringLiteral("navigate"),
                    parent);
}

} // namespace

void TestFolderListing::foldersComeFirstInNaturalCaseInsensitiveOrder()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    for (const char* name : {"b", "A10", "a2", "file10", "file2", "File1", "10.txt", "9.txt"})
        makeFile(root + QLatin1Char('/') + QString::fromUtf8(name));
    for (const char* name : {"Zeta", "alpha", "dir10", "Dir9"})
        makeFolder(root + QLatin1Char('/') + QString::fromUtf8(name));

    const QList<ButtonSpec> rows = FolderListing::items(root, std::nullopt);
    QCOMPARE(entryTitles(rows),
             (QStringList{QStringLiteral("alpha"), QStringLiteral("Dir9"), QStringLiteral("dir10"),
                          QStringLiteral("Zeta"), QStringLiteral("9.txt"), QStringLiteral("10.txt"),
                          QStringLiteral("a2"), QStringLiteral("A10"), QStringLiteral("b"),
                          QStringLiteral("File1"), QStringLiteral("file2"), QStringLiteral("file10")}));
    QCOMPARE(rows.size(), 13);
    QCOMPARE(rows.at(0), openRow(root));

    const QString alpha = root + QStringLiteral("/alpha");
    QCOMPARE(rows.at(1), expected(QStringLiteral("alpha"), QStringLiteral("folder"), QStringLiteral("folder"),
                                  alpha, alpha));
    const QString nine = root + QStringLiteral("/9.txt");
    QCOMPARE(rows.at(5),
             expected(QStringLiteral("9.txt"), QStringLiteral("doc"), QStringLiteral("open"), nine, nine));
    for (const ButtonSpec& row : rows)
        QVERIFY(!row.color && !row.locked && !row.children);
}

void TestFolderListing::namesEqualButForCaseKeepOneOrder()
{
    // Filled in opposite orders, so the file system is likely to hand the names over differently.
    QTemporaryDir first;
    QTemporaryDir second;
    const QStringList names{QStringLiteral("readme"), QStringLiteral("README"), QStringLiteral("ReadMe")};
    for (const QString& name : names)
        makeFile(first.filePath(name));
    for (auto it = names.crbegin(); it != names.crend(); ++it)
        makeFile(second.filePath(*it));

    const QStringList once = entryTitles(FolderListing::items(first.path(), std::nullopt));
    QCOMPARE(once.size(), 3);
    QCOMPARE(entryTitles(FolderListing::items(second.path(), std::nullopt)), once);
    QCOMPARE(entryTitles(FolderListing::items(first.path(), std::nullopt)), once);
}

void TestFolderListing::hiddenEntriesAreLeftOut()
{
    QTemporaryDir dir;
    makeFile(dir.filePath(QStringLiteral(".profile")));
    makeFolder(dir.filePath(QStringLiteral(".git")));
    QCOMPARE(FolderListing::items(dir.path(), std::nullopt),
             (QList<ButtonSpec>{openRow(dir.path()), emptyRow(dir.path())}));

    makeFile(dir.filePath(QStringLiteral("visible")));
    makeFile(dir.filePath(QStringLiteral("not.hidden.")));
    QCOMPARE(entryTitles(FolderListing::items(dir.path(), std::nullopt)),
             (QStringList{QStringLiteral("not.hidden."), QStringLiteral("visible")}));
}

void TestFolderListing::longFoldersShowTheFirstEntriesAndCountTheRest_data()
{
    // With "rows", the listing is limited to that many rows, the opening and counting ones included.
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("shown");
    QTest::addColumn<QString>("overflow");
    QTest::newRow("2") << 2 << -1 << 2 << QString();
    QTest::newRow("24") << 24 << -1 << 24 << QString();
    QTest::newRow("25") << 25 << -1 << 24 << kEllipsis + QStringLiteral(" 1 more");
    QTest::newRow("30") << 30 << -1 << 24 << kEllipsis + QStringLiteral(" 6 more");
    QTest::newRow("1000") << 1000 << -1 << 24 << kEllipsis + QStringLiteral(" 976 more");
    QTest::newRow("30 in 20 rows") << 30 << 20 << 18 << kEllipsis + QStringLiteral(" 12 more");
    QTest::newRow("5 in 6 rows") << 5 << 6 << 5 << QString();
    QTest::newRow("6 in 6 rows") << 6 << 6 << 4 << kEllipsis + QStringLiteral(" 2 more");
    QTest::newRow("30 in 2 rows") << 30 << 2 << 0 << kEllipsis + QStringLiteral(" 30 more");
}

void TestFolderListing::longFoldersShowTheFirstEntriesAndCountTheRest()
{
    QFETCH(int, count);
    QFETCH(int, rows);
    QFETCH(int, shown);
    QFETCH(QString, overflow);

    // One folder and count - 1 files, created from the largest name down so that the entries shown are
    // not simply the first ones found. The folder sorts before every file despite its name.
    QTemporaryDir dir;
    makeFolder(dir.filePath(QStringLiteral("z%1").arg(count)));
    for (int i = count - 1; i >= 1; --i)
        makeFile(dir.filePath(QStringLiteral("f%1").arg(i)));

    const QList<ButtonSpec> listing = FolderListing::items(
        dir.path(), std::nullopt, rows < 0 ? std::nullopt : std::optional<qsizetype>(rows));
    QStringList wanted{QStringLiteral("z%1").arg(count)};
    for (int i = 1; i < count; ++i)
        wanted.append(QStringLiteral("f%1").arg(i));
    QCOMPARE(entryTitles(listing), wanted.mid(0, shown));

    if (overflow.isEmpty()) {
        QCOMPARE(listing.size(), 1 + count);
        return;
    }
    QCOMPARE(listing.size(), 1 + shown + 1);
    QCOMPARE(listing.last(),
             expected(overflow, QStringLiteral("ellipsis"), QStringLiteral("open"), dir.path()));
}

void TestFolderListing::longNamesAreShortened()
{
    QTemporaryDir dir;
    const QString exact = QString(36, QLatin1Char('a'));
    const QString longer = QStringLiteral("b123456789012345678901234567890123456789");
    QCOMPARE(longer.size(), 40);
    // U+1F600 takes two UTF-16 units; here they would straddle the cut.
    const QString face =
        QStringLiteral("c") + QString(33, QLatin1Char('x')) + QStringLiteral("\U0001F600tail");
    QCOMPARE(face.at(34).isHighSurrogate(), true);
    for (const QString& name : {exact, longer, face})
        makeFile(dir.filePath(name));

    const QList<ButtonSpec> rows = FolderListing::items(dir.path(), std::nullopt);
    QCOMPARE(entryTitles(rows), (QStringList{exact, longer.left(35) + kEllipsis, face.left(34) + kEllipsis}));
    // The title is shortened, the path it opens is not.
    QCOMPARE(rows.at(2).argument, dir.filePath(longer));
    QCOMPARE(rows.at(2).iconPath, dir.filePath(longer));

    const QString parent = dir.filePath(longer);
    QVERIFY(QFile::remove(parent));
    makeFolder(parent + QStringLiteral("/inner"));
    const QList<ButtonSpec> inside = FolderListing::items(parent + QStringLiteral("/inner"), dir.path());
    QCOMPARE(inside.at(1), upRow(longer.left(35) + kEllipsis, parent));
}

void TestFolderListing::upRowAppearsOnlyBelowTheRoot()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    const QString documents = root + QStringLiteral("/Documents");
    const QString work = documents + QStringLiteral("/Work");
    makeFolder(work);
    makeFile(work + QStringLiteral("/plan.txt"));

    QCOMPARE(titles(FolderListing::items(work, root)),
             (QStringList{QStringLiteral("Open in File Manager"), QStringLiteral("\u2039 Documents"),
                          QStringLiteral("plan.txt")}));
    QCOMPARE(FolderListing::items(work, root).at(1), upRow(QStringLiteral("Documents"), documents));
    QCOMPARE(FolderListing::items(documents, root).at(1), upRow(QFileInfo(root).fileName(), root));

    // At the root itself, however it is spelled, there is nowhere to go up to.
    const QList<ButtonSpec> atRoot = FolderListing::items(documents, documents);
    QCOMPARE(titles(atRoot), (QStringList{QStringLiteral("Open in File Manager"), QStringLiteral("Work")}));
    QCOMPARE(titles(FolderListing::items(documents + QStringLiteral("/"), documents)), titles(atRoot));
    QCOMPARE(titles(FolderListing::items(documents, root + QStringLiteral("//./Documents/Work/../"))),
             titles(atRoot));
    QCOMPARE(titles(FolderListing::items(documents, std::nullopt)), titles(atRoot));

    // The folder's own path is given back cleaned, so the rows below it are too.
    const QList<ButtonSpec> messy = FolderListing::items(work + QStringLiteral("/./"), root);
    QCOMPARE(messy.at(0), openRow(work));
    QCOMPARE(messy.at(2).argument, work + QStringLiteral("/plan.txt"));
}

void TestFolderListing::topLevelFoldersGoUpToSlash()
{
    const QString missing = QStringLiteral("/vantril-no-such-folder");
    QVERIFY(!QFileInfo::exists(missing));
    QCOMPARE(FolderListing::items(missing, QStringLiteral("/")),
             (QList<ButtonSpec>{openRow(missing), upRow(QStringLiteral("/"), QStringLiteral("/")),
                                emptyRow(missing)}));

    const QList<ButtonSpec> top = FolderListing::items(QStringLiteral("/"), std::nullopt);
    QCOMPARE(top.first(), openRow(QStringLiteral("/")));
    QVERIFY(top.size() >= 2);
    for (const ButtonSpec& row : top.mid(1)) {
        if (row.symbol != QLatin1String("folder") && row.symbol != QLatin1String("doc"))
            continue;
        QCOMPARE(row.argument, QStringLiteral("/") + row.title);
        QCOMPARE(row.iconPath, row.argument);
    }
    QCOMPARE(titles(FolderListing::items(QStringLiteral("/"), QStringLiteral("/"))), titles(top));
    // Above the root there is no parent to offer.
    QCOMPARE(titles(FolderListing::items(QStringLiteral("/"), QStringLiteral("/usr"))), titles(top));
}

void TestFolderListing::missingOrNonFolderPathListsAsEmpty()
{
    QTemporaryDir dir;
    const QString missing = dir.filePath(QStringLiteral("gone"));
    QCOMPARE(FolderListing::items(missing, std::nullopt),
             (QList<ButtonSpec>{openRow(missing), emptyRow(missing)}));

    const QString file = dir.filePath(QStringLiteral("notes.txt"));
    makeFile(file);
    QCOMPARE(FolderListing::items(file, std::nullopt), (QList<ButtonSpec>{openRow(file), emptyRow(file)}));
    QCOMPARE(FolderListing::items(file, dir.path()),
             (QList<ButtonSpec>{openRow(file), upRow(QFileInfo(dir.path()).fileName(), dir.path()),
                                emptyRow(file)}));
}

void TestFolderListing::unreadableFolderListsAsEmpty()
{
    QTemporaryDir dir;
    const QString locked = dir.filePath(QStringLiteral("locked"));
    makeFolder(locked);
    makeFile(locked + QStringLiteral("/secret"));
    QVERIFY(QFile::setPermissions(locked, QFileDevice::Permissions()));
    const QList<ButtonSpec> rows = FolderListing::items(locked, std::nullopt);
    QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    if (::geteuid() == 0)
        QSKIP("Permissions do not stop root from reading a folder");
    QCOMPARE(rows, (QList<ButtonSpec>{openRow(locked), emptyRow(locked)}));
}

void TestFolderListing::linksCountByWhatTheyPointAt()
{
    QTemporaryDir dir;
    makeFolder(dir.filePath(QStringLiteral("real")));
    makeFile(dir.filePath(QStringLiteral("target.txt")));
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("real")), dir.filePath(QStringLiteral("a-folder-link"))));
    QVERIFY(
        QFile::link(dir.filePath(QStringLiteral("target.txt")), dir.filePath(QStringLiteral("b-file-link"))));
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("nowhere")), dir.filePath(QStringLiteral("c-dangling"))));

    const QList<ButtonSpec> rows = FolderListing::items(dir.path(), std::nullopt);
    QCOMPARE(entryTitles(rows), (QStringList{QStringLiteral("a-folder-link"), QStringLiteral("real"),
                                             QStringLiteral("b-file-link"), QStringLiteral("c-dangling"),
                                             QStringLiteral("target.txt")}));
    // The link is browsed under its own name, not its target's.
    const QString link = dir.filePath(QStringLiteral("a-folder-link"));
    QCOMPARE(rows.at(1), expected(QStringLiteral("a-folder-link"), QStringLiteral("folder"),
                                  QStringLiteral("folder"), link, link));
    QCOMPARE(rows.at(3).action, QStringLiteral("open"));
}

void TestFolderListing::tildeIsExpandedInPathAndRoot()
{
    QTemporaryDir home;
    const QByteArray previous = qgetenv("HOME");
    qputenv("HOME", QFile::encodeName(home.path()));
    const auto restore = qScopeGuard([&] { qputenv("HOME", previous); });

    const QString documents = home.filePath(QStringLiteral("Documents"));
    makeFolder(documents + QStringLiteral("/Taxes"));

    const QList<ButtonSpec> rows = FolderListing::items(QStringLiteral("~/Documents"), QStringLiteral("~"));
    const QString taxes = documents + QStringLiteral("/Taxes");
    QCOMPARE(rows,
             (QList<ButtonSpec>{openRow(documents), upRow(QFileInfo(home.path()).fileName(), home.path()),
                                expected(QStringLiteral("Taxes"), QStringLiteral("folder"),
                                         QStringLiteral("folder"), taxes, taxes)}));

    QCOMPARE(titles(FolderListing::items(QStringLiteral("~/Documents"), documents + QStringLiteral("/"))),
             (QStringList{QStringLiteral("Open in File Manager"), QStringLiteral("Taxes")}));
    QCOMPARE(titles(FolderListing::items(documents, QStringLiteral("~/Documents/"))),
             (QStringList{QStringLiteral("Open in File Manager"), QStringLiteral("Taxes")}));
}

QTEST_APPLESS_MAIN(TestFolderListing)
#include "tst_folderlisting.moc"
