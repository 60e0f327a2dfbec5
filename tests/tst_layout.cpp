// Where the bar and its flyouts go on the screen, what overflows, and what a folder's flyout lists.

#include "TestSupport.h"
#include "bar/FolderListing.h"
#include "bar/Geometry.h"
#include "bar/Overflow.h"
#include "config/BarConfig.h"
#include "platform/DisplayNumber.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <limits>
#include <unistd.h>

class TestLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaultPlaceIsCentredNearTheEdge();
    void savedPlaceIsClampedIntoTheAvailableArea();
    void hostileNumbersKeepTheBarOnScreen_data();
    void hostileNumbersKeepTheBarOnScreen();
    void fractionsRoundTrip();
    void directionFollowsTheHalfOfTheScreen();
    void refitKeepsLeftAndBottomEdges();
    void flyoutsHangFromTheirChip();
    void tallFlyoutsGetTheRoomThereIs_data();
    void tallFlyoutsGetTheRoomThereIs();
    void displayNumbersAreStableHashes();
    void chipsThatDoNotFitOverflow_data();
    void chipsThatDoNotFitOverflow();
    void overflowFlyoutFillsColumns_data();
    void overflowFlyoutFillsColumns();

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

const QRect screen(0, 0, 1440, 900);
const QRect panelAtBottom(0, 0, 1440, 875);       // a 25-pixel panel along the bottom
const QRect panelsTopAndBottom(0, 25, 1440, 850); // 25 pixels at each end

} // namespace

void TestLayout::defaultPlaceIsCentredNearTheEdge()
{
    QCOMPARE(Geometry::defaultOrigin(QSize(300, 50), panelAtBottom, false),
             QPoint(570, 819)); // 31 above the bottom of the screen
    QCOMPARE(Geometry::defaultOrigin(QSize(300, 50), panelAtBottom, true), QPoint(570, 6));
    QCOMPARE(Geometry::defaultOrigin(QSize(301, 40), QRect(1440, 0, 1920, 1080), false),
             QPoint(1440 + 810, 1034));
}

void TestLayout::savedPlaceIsClampedIntoTheAvailableArea()
{
    // Saved at the very bottom of the screen: lifted onto the available area.
    QCOMPARE(Geometry::originFromFractions({0.25, 0}, QSize(300, 40), screen, panelsTopAndBottom),
             QPoint(360, 835));
    // Too far right: pushed back so the whole bar shows.
    QCOMPARE(Geometry::originFromFractions({0.95, 0.5}, QSize(300, 40), screen, panelsTopAndBottom).x(),
             1140);
    // Wider than the area: pinned to its left edge; taller: pinned to its bottom.
    QCOMPARE(Geometry::clampToAvailable(QPoint(500, 100), QSize(2000, 40), panelsTopAndBottom).x(), 0);
    QCOMPARE(Geometry::clampToAvailable(QPoint(0, 0), QSize(100, 1000), panelsTopAndBottom).y(), 875 - 1000);
    // Above the area: moved down into it.
    QCOMPARE(Geometry::clampToAvailable(QPoint(10, 0), QSize(100, 40), panelsTopAndBottom), QPoint(10, 25));
}

void TestLayout::hostileNumbersKeepTheBarOnScreen_data()
{
    // A start-up offset ("dx,dy", y up) from a bar at (570, 500), or saved fractions when it is empty;
    // a null origin means the bar does not move.
    QTest::addColumn<QString>("offset");
    QTest::addColumn<double>("ox");
    QTest::addColumn<double>("oy");
    QTest::addColumn<QPoint>("origin");
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const auto offset = [](const char* name, const char* text, QPoint origin) {
        QTest::newRow(name) << QString::fromLatin1(text) << 0.0 << 0.0 << origin;
    };
    offset("moved", "10,-20.4", QPoint(580, 520));
    offset("not finite", "nan,nan", QPoint());
    offset("infinite", "inf,-inf", QPoint());
    offset("one number", "10", QPoint());
    offset("three numbers", "1,2,3", QPoint());
    offset("words", "left,up", QPoint());
    offset("beyond every screen", "1e300,1e300", QPoint(1140, 25));
    offset("beyond int", "3000000000,0", QPoint(1140, 500));
    offset("beyond int the other way", "-3000000000,-1e20", QPoint(0, 835));
    const auto fractions = [](const char* name, double ox, double oy, QPoint origin) {
        QTest::newRow(name) << QString() << ox << oy << origin;
    };
    fractions("huge fractions", 1e300, 1e300, QPoint(1140, 25));
    fractions("huge negative fractions", -1e300, -1e300, QPoint(0, 835));
    fractions("infinite fractions", inf, -inf, QPoint(1140, 835));
    fractions("fractions that are no numbers", nan, nan, QPoint(0, 25));
}

void TestLayout::hostileNumbersKeepTheBarOnScreen()
{
    QFETCH(QString, offset);
    QFETCH(double, ox);
    QFETCH(double, oy);
    QFETCH(QPoint, origin);
    const QSize size(300, 40);
    if (offset.isNull()) {
        QCOMPARE(Geometry::originFromFractions({ox, oy}, size, screen, panelsTopAndBottom), origin);
        return;
    }
    const auto parsed = Geometry::offsetFrom(offset);
    QCOMPARE(parsed.has_value(), !origin.isNull());
    if (parsed)
        QCOMPARE(Geometry::movedBy(QPoint(570, 500), *parsed, size, panelsTopAndBottom), origin);
}

void TestLayout::fractionsRoundTrip()
{
    const QRect bar(360, 835, 300, 40);
    const Geometry::Fractions fractions = Geometry::fractionsOf(bar, screen);
    QCOMPARE(fractions.ox, 0.25);
    QCOMPARE(fractions.oy, 25.0 / 900);
    QCOMPARE(Geometry::originFromFractions(fractions, bar.size(), screen, screen), bar.topLeft());
    // On a screen of another size the bar keeps its relative place.
    const QRect large(0, 0, 2880, 1800);
    QCOMPARE(Geometry::originFromFractions(fractions, bar.size(), large, large), QPoint(720, 1800 - 50 - 40));
    // A second monitor to the right: fractions are of that monitor.
    const QRect right(1440, 0, 1920, 1080);
    QCOMPARE(Geometry::fractionsOf(QRect(1440 + 480, 1080 - 40, 300, 40), right).ox, 0.25);
}

void TestLayout::directionFollowsTheHalfOfTheScreen()
{
    QVERIFY(Geometry::expandsUp(QRect(0, 855, 300, 40), screen));
    QVERIFY(!Geometry::expandsUp(QRect(0, 6, 300, 40), screen));
    QVERIFY(!Geometry::expandsUp(QRect(0, 430, 300, 40), screen)); // centre exactly in the middle
    QVERIFY(Geometry::expandsUp(QRect(0, 431, 300, 40), screen));
}

void TestLayout::refitKeepsLeftAndBottomEdges()
{
    QCOMPARE(Geometry::refit(QRect(100, 800, 300, 40), QSize(400, 40), screen), QRect(100, 800, 400, 40));
    QCOMPARE(Geometry::refit(QRect(100, 800, 300, 50), QSize(300, 40), screen), QRect(100, 810, 300, 40));
    // Grown past the right edge: pushed left just enough.
    QCOMPARE(Geometry::refit(QRect(1200, 800, 200, 40), QSize(300, 40), screen), QRect(1140, 800, 300, 40));
    // Wider than the screen: never past its left edge.
    QCOMPARE(Geometry::refit(QRect(1200, 800, 200, 40), QSize(2000, 40), screen).x(), 0);
}

void TestLayout::flyoutsHangFromTheirChip()
{
    const QRect lowBar(570, 829, 300, 40);
    const QRectF chip(40, 6, 80, 28);
    // Centred on the chip, its bottom 4 pixels above the bar.
    QCOMPARE(Geometry::flyoutOrigin(lowBar, chip, QSize(160, 200), screen, panelAtBottom), QPoint(570, 625));
    // A bar in the upper half: below it, 4 pixels under its bottom edge.
    const QRect highBar(570, 6, 300, 40);
    QCOMPARE(Geometry::flyoutOrigin(highBar, chip, QSize(160, 200), screen, panelAtBottom).y(), 50);
    // At the left edge of the screen: kept 4 pixels inside.
    QCOMPARE(Geometry::flyoutOrigin(QRect(0, 829, 300, 40), QRectF(12, 6, 40, 28), QSize(160, 200), screen,
                                    panelAtBottom)
                 .x(),
             4);
    // Wider than the screen: the right margin wins.
    QCOMPARE(Geometry::flyoutOrigin(lowBar, chip, QSize(1500, 200), screen, panelAtBottom).x(),
             1440 - 1500 - 4);
    // No screen known: above the bar, clamped to the bar itself.
    QCOMPARE(Geometry::flyoutOrigin(highBar, chip, QSize(100, 50), std::nullopt, std::nullopt),
             QPoint(600, -48));
}

void TestLayout::tallFlyoutsGetTheRoomThereIs_data()
{
    // Rows 30 pixels tall, 6 apart, 8 pixels of margin: 27 rows (a long folder listing) take 982 pixels.
    QTest::addColumn<QRect>("bar");
    QTest::addColumn<QRect>("available");
    QTest::addColumn<int>("room");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("top"); // of a flyout 982 pixels tall
    QTest::newRow("above a bar at the bottom") << QRect(570, 829, 300, 40) << panelAtBottom << 821 << 22 << 4;
    QTest::newRow("below a bar at the top") << QRect(570, 6, 300, 40) << panelAtBottom << 821 << 22 << 4;
    QTest::newRow("800 pixels high") << QRect(570, 754, 300, 40) << QRect(0, 0, 1440, 800) << 746 << 20 << 4;
    QTest::newRow("under panels at both ends")
        << QRect(570, 829, 300, 40) << panelsTopAndBottom << 796 << 21 << 29;
    QTest::newRow("no room at all") << QRect(0, 0, 300, 900) << screen << 0 << 0 << 4;
}

void TestLayout::tallFlyoutsGetTheRoomThereIs()
{
    QFETCH(QRect, bar);
    QFETCH(QRect, available);
    QFETCH(int, room);
    QFETCH(int, rows);
    QFETCH(int, top);
    QCOMPARE(Geometry::flyoutRoom(bar, screen, available), std::optional<int>(room));
    QCOMPARE(Geometry::rowsFitting(room, 30, 6, 8), rows);
    QCOMPARE(Geometry::rowsFitting(rows * 36 - 6 + 16, 30, 6, 8), rows);
    // Placed whole, the first rows stay inside the area even when the flyout is too tall for it.
    QCOMPARE(Geometry::flyoutOrigin(bar, QRectF(40, 6, 80, 28), QSize(200, 982), screen, available).y(), top);
}

void TestLayout::displayNumbersAreStableHashes()
{
    const quint32 byName = displayNumber(QString(), QString(), QString(), u"screen"_s);
    QCOMPARE(byName, displayNumber(u"ACME"_s, u"X1"_s, QString(), u"screen"_s));
    QCOMPARE(byName, 0x8f43c982u); // FNV-1a of "name|screen"
    const quint32 byEdid = displayNumber(u"DEL"_s, u"U2720Q"_s, u"ABC123"_s, u"DP-1"_s);
    QCOMPARE(byEdid, displayNumber(u"DEL"_s, u"U2720Q"_s, u"ABC123"_s, u"HDMI-2"_s));
    QVERIFY(byEdid != displayNumber(u"DEL"_s, u"U2720Q"_s, u"ABC124"_s, u"DP-1"_s));
}

void TestLayout::chipsThatDoNotFitOverflow_data()
{
    // The bar's own numbers: 12-pixel margins, 8 apart, a 14-wide grip, a 1-wide separator and a 30-wide
    // overflow chip. Three chips of 100 make a bar of 24 + 14 + 3 * 108 = 362.
    QTest::addColumn<QList<int>>("widths");
    QTest::addColumn<qsizetype>("contextStart");
    QTest::addColumn<int>("maxWidth");
    QTest::addColumn<qsizetype>("shown");
    const QList<int> three = {100, 100, 100};
    QTest::newRow("all fit") << three << qsizetype(3) << 1000 << qsizetype(3);
    QTest::newRow("all fit exactly") << three << qsizetype(3) << 362 << qsizetype(3);
    // One pixel short: the last chip goes, and the overflow chip (38 with its gap) takes its place.
    QTest::newRow("one pixel short") << three << qsizetype(3) << 361 << qsizetype(2);
    // 24 + 14 + 108 + 38 = 184: one chip and the overflow chip.
    QTest::newRow("overflow chip needs room too") << three << qsizetype(3) << 253 << qsizetype(1);
    QTest::newRow("only the overflow chip") << three << qsizetype(3) << 183 << qsizetype(0);
    QTest::newRow("no room at all") << three << qsizetype(3) << 0 << qsizetype(0);
    QTest::newRow("empty bar") << QList<int>() << qsizetype(0) << 0 << qsizetype(0);
    // With the front application's chips from index 2, the separator (9 with its gap) counts once one
    // of them is on the bar: 362 + 9 fits all; 370 leaves the last out, and with it the separator.
    QTest::newRow("separator counted") << three << qsizetype(2) << 371 << qsizetype(3);
    QTest::newRow("separator leaves with the chips") << three << qsizetype(2) << 370 << qsizetype(2);
    // Long chips early and short ones late: the row keeps its order, no short chip jumps ahead.
    QTest::newRow("order kept") << QList<int>{300, 20, 20} << qsizetype(3) << 300 << qsizetype(0);
}

void TestLayout::chipsThatDoNotFitOverflow()
{
    QFETCH(QList<int>, widths);
    QFETCH(qsizetype, contextStart);
    QFETCH(int, maxWidth);
    QFETCH(qsizetype, shown);
    const Overflow::Row row{24, 8, 14, 1, 30};
    QCOMPARE(Overflow::chipsOnBar(widths, contextStart, row, maxWidth), shown);
}

void TestLayout::overflowFlyoutFillsColumns_data()
{
    // Rows 30 high, 6 apart, between margins of 8: n rows take 16 + 30n + 6(n - 1).
    QTest::addColumn<qsizetype>("count");
    QTest::addColumn<int>("maxHeight");
    QTest::addColumn<int>("rows");
    QTest::newRow("one column when it fits") << qsizetype(5) << 1000 << 5;
    QTest::newRow("exactly 10 rows") << qsizetype(10) << 16 + 300 + 54 << 10;
    QTest::newRow("11 rows split evenly") << qsizetype(11) << 16 + 300 + 54 << 6;
    QTest::newRow("55 rows in 3 columns") << qsizetype(55) << 842 << 19;
    QTest::newRow("no room still shows rows") << qsizetype(4) << 0 << 1;
    QTest::newRow("nothing") << qsizetype(0) << 500 << 1;
}

void TestLayout::overflowFlyoutFillsColumns()
{
    QFETCH(qsizetype, count);
    QFETCH(int, maxHeight);
    QFETCH(int, rows);
    QCOMPARE(Overflow::rowsPerColumn(count, 30, 6, 8, maxHeight), rows);
}

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
    return expected(u"Open in File Manager"_s, u"arrow.up.forward.app"_s, u"open"_s, folder);
}

ButtonSpec emptyRow(const QString& folder)
{
    return expected(u"(empty)"_s, u"tray"_s, u"navigate"_s, folder);
}

ButtonSpec upRow(const QString& name, const QString& parent)
{
    return expected(u"\u2039 "_s + name, u"arrow.up"_s, u"navigate"_s, parent);
}

} // namespace

void TestLayout::foldersComeFirstInNaturalCaseInsensitiveOrder()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    for (const char* name : {"b", "A10", "a2", "file10", "file2", "File1", "10.txt", "9.txt"})
        makeFile(root + QLatin1Char('/') + QString::fromUtf8(name));
    for (const char* name : {"Zeta", "alpha", "dir10", "Dir9"})
        makeFolder(root + QLatin1Char('/') + QString::fromUtf8(name));

    const QList<ButtonSpec> rows = FolderListing::items(root, std::nullopt);
    QCOMPARE(entryTitles(rows),
             (QStringList{u"alpha"_s, u"Dir9"_s, u"dir10"_s, u"Zeta"_s, u"9.txt"_s, u"10.txt"_s, u"a2"_s,
                          u"A10"_s, u"b"_s, u"File1"_s, u"file2"_s, u"file10"_s}));
    QCOMPARE(rows.size(), 13);
    QCOMPARE(rows.at(0), openRow(root));

    const QString alpha = root + u"/alpha"_s;
    QCOMPARE(rows.at(1), expected(u"alpha"_s, u"folder"_s, u"folder"_s, alpha, alpha));
    const QString nine = root + u"/9.txt"_s;
    QCOMPARE(rows.at(5), expected(u"9.txt"_s, u"doc"_s, u"open"_s, nine, nine));
    for (const ButtonSpec& row : rows)
        QVERIFY(!row.color && !row.locked && !row.children);
}

void TestLayout::namesEqualButForCaseKeepOneOrder()
{
    // Filled in opposite orders, so the file system is likely to hand the names over differently.
    QTemporaryDir first;
    QTemporaryDir second;
    const QStringList names{u"readme"_s, u"README"_s, u"ReadMe"_s};
    for (const QString& name : names)
        makeFile(first.filePath(name));
    for (auto it = names.crbegin(); it != names.crend(); ++it)
        makeFile(second.filePath(*it));

    const QStringList once = entryTitles(FolderListing::items(first.path(), std::nullopt));
    QCOMPARE(once.size(), 3);
    QCOMPARE(entryTitles(FolderListing::items(second.path(), std::nullopt)), once);
    QCOMPARE(entryTitles(FolderListing::items(first.path(), std::nullopt)), once);
}

void TestLayout::hiddenEntriesAreLeftOut()
{
    QTemporaryDir dir;
    makeFile(dir.filePath(u".profile"_s));
    makeFolder(dir.filePath(u".git"_s));
    QCOMPARE(FolderListing::items(dir.path(), std::nullopt),
             (QList<ButtonSpec>{openRow(dir.path()), emptyRow(dir.path())}));

    makeFile(dir.filePath(u"visible"_s));
    makeFile(dir.filePath(u"not.hidden."_s));
    QCOMPARE(entryTitles(FolderListing::items(dir.path(), std::nullopt)),
             (QStringList{u"not.hidden."_s, u"visible"_s}));
}

void TestLayout::longFoldersShowTheFirstEntriesAndCountTheRest_data()
{
    // With "rows", the listing is limited to that many rows, the opening and counting ones included.
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("shown");
    QTest::addColumn<QString>("overflow");
    QTest::newRow("2") << 2 << -1 << 2 << QString();
    QTest::newRow("24") << 24 << -1 << 24 << QString();
    QTest::newRow("25") << 25 << -1 << 24 << kEllipsis + u" 1 more"_s;
    QTest::newRow("30") << 30 << -1 << 24 << kEllipsis + u" 6 more"_s;
    QTest::newRow("1000") << 1000 << -1 << 24 << kEllipsis + u" 976 more"_s;
    QTest::newRow("30 in 20 rows") << 30 << 20 << 18 << kEllipsis + u" 12 more"_s;
    QTest::newRow("5 in 6 rows") << 5 << 6 << 5 << QString();
    QTest::newRow("6 in 6 rows") << 6 << 6 << 4 << kEllipsis + u" 2 more"_s;
    QTest::newRow("30 in 2 rows") << 30 << 2 << 0 << kEllipsis + u" 30 more"_s;
}

void TestLayout::longFoldersShowTheFirstEntriesAndCountTheRest()
{
    QFETCH(int, count);
    QFETCH(int, rows);
    QFETCH(int, shown);
    QFETCH(QString, overflow);

    // One folder and count - 1 files, created from the largest name down so that the entries shown are
    // not simply the first ones found. The folder sorts before every file despite its name.
    QTemporaryDir dir;
    makeFolder(dir.filePath(u"z%1"_s.arg(count)));
    for (int i = count - 1; i >= 1; --i)
        makeFile(dir.filePath(u"f%1"_s.arg(i)));

    const QList<ButtonSpec> listing = FolderListing::items(
        dir.path(), std::nullopt, rows < 0 ? std::nullopt : std::optional<qsizetype>(rows));
    QStringList wanted{u"z%1"_s.arg(count)};
    for (int i = 1; i < count; ++i)
        wanted.append(u"f%1"_s.arg(i));
    QCOMPARE(entryTitles(listing), wanted.mid(0, shown));

    if (overflow.isEmpty()) {
        QCOMPARE(listing.size(), 1 + count);
        return;
    }
    QCOMPARE(listing.size(), 1 + shown + 1);
    QCOMPARE(listing.last(), expected(overflow, u"ellipsis"_s, u"open"_s, dir.path()));
}

void TestLayout::longNamesAreShortened()
{
    QTemporaryDir dir;
    const QString exact = QString(36, QLatin1Char('a'));
    const QString longer = u"b123456789012345678901234567890123456789"_s;
    QCOMPARE(longer.size(), 40);
    // U+1F600 takes two UTF-16 units; here they would straddle the cut.
    const QString face = u"c"_s + QString(33, QLatin1Char('x')) + u"\U0001F600tail"_s;
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
    makeFolder(parent + u"/inner"_s);
    const QList<ButtonSpec> inside = FolderListing::items(parent + u"/inner"_s, dir.path());
    QCOMPARE(inside.at(1), upRow(longer.left(35) + kEllipsis, parent));
}

void TestLayout::upRowAppearsOnlyBelowTheRoot()
{
    QTemporaryDir dir;
    const QString root = dir.path();
    const QString documents = root + u"/Documents"_s;
    const QString work = documents + u"/Work"_s;
    makeFolder(work);
    makeFile(work + u"/plan.txt"_s);

    QCOMPARE(titles(FolderListing::items(work, root)),
             (QStringList{u"Open in File Manager"_s, u"\u2039 Documents"_s, u"plan.txt"_s}));
    QCOMPARE(FolderListing::items(work, root).at(1), upRow(u"Documents"_s, documents));
    QCOMPARE(FolderListing::items(documents, root).at(1), upRow(QFileInfo(root).fileName(), root));

    // At the root itself, however it is spelled, there is nowhere to go up to.
    const QList<ButtonSpec> atRoot = FolderListing::items(documents, documents);
    QCOMPARE(titles(atRoot), (QStringList{u"Open in File Manager"_s, u"Work"_s}));
    QCOMPARE(titles(FolderListing::items(documents + u"/"_s, documents)), titles(atRoot));
    QCOMPARE(titles(FolderListing::items(documents, root + u"//./Documents/Work/../"_s)), titles(atRoot));
    QCOMPARE(titles(FolderListing::items(documents, std::nullopt)), titles(atRoot));

    // The folder's own path is given back cleaned, so the rows below it are too.
    const QList<ButtonSpec> messy = FolderListing::items(work + u"/./"_s, root);
    QCOMPARE(messy.at(0), openRow(work));
    QCOMPARE(messy.at(2).argument, work + u"/plan.txt"_s);
}

void TestLayout::topLevelFoldersGoUpToSlash()
{
    const QString missing = u"/vantril-no-such-folder"_s;
    QVERIFY(!QFileInfo::exists(missing));
    QCOMPARE(FolderListing::items(missing, u"/"_s),
             (QList<ButtonSpec>{openRow(missing), upRow(u"/"_s, u"/"_s), emptyRow(missing)}));

    const QList<ButtonSpec> top = FolderListing::items(u"/"_s, std::nullopt);
    QCOMPARE(top.first(), openRow(u"/"_s));
    QVERIFY(top.size() >= 2);
    for (const ButtonSpec& row : top.mid(1)) {
        if (row.symbol != QLatin1String("folder") && row.symbol != QLatin1String("doc"))
            continue;
        QCOMPARE(row.argument, u"/"_s + row.title);
        QCOMPARE(row.iconPath, row.argument);
    }
    QCOMPARE(titles(FolderListing::items(u"/"_s, u"/"_s)), titles(top));
    // Above the root there is no parent to offer.
    QCOMPARE(titles(FolderListing::items(u"/"_s, u"/usr"_s)), titles(top));
}

void TestLayout::missingOrNonFolderPathListsAsEmpty()
{
    QTemporaryDir dir;
    const QString missing = dir.filePath(u"gone"_s);
    QCOMPARE(FolderListing::items(missing, std::nullopt),
             (QList<ButtonSpec>{openRow(missing), emptyRow(missing)}));

    const QString file = dir.filePath(u"notes.txt"_s);
    makeFile(file);
    QCOMPARE(FolderListing::items(file, std::nullopt), (QList<ButtonSpec>{openRow(file), emptyRow(file)}));
    QCOMPARE(FolderListing::items(file, dir.path()),
             (QList<ButtonSpec>{openRow(file), upRow(QFileInfo(dir.path()).fileName(), dir.path()),
                                emptyRow(file)}));
}

void TestLayout::unreadableFolderListsAsEmpty()
{
    QTemporaryDir dir;
    const QString locked = dir.filePath(u"locked"_s);
    makeFolder(locked);
    makeFile(locked + u"/secret"_s);
    QVERIFY(QFile::setPermissions(locked, QFileDevice::Permissions()));
    const QList<ButtonSpec> rows = FolderListing::items(locked, std::nullopt);
    QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    if (::geteuid() == 0)
        QSKIP("Permissions do not stop root from reading a folder");
    QCOMPARE(rows, (QList<ButtonSpec>{openRow(locked), emptyRow(locked)}));
}

void TestLayout::linksCountByWhatTheyPointAt()
{
    QTemporaryDir dir;
    makeFolder(dir.filePath(u"real"_s));
    makeFile(dir.filePath(u"target.txt"_s));
    QVERIFY(QFile::link(dir.filePath(u"real"_s), dir.filePath(u"a-folder-link"_s)));
    QVERIFY(QFile::link(dir.filePath(u"target.txt"_s), dir.filePath(u"b-file-link"_s)));
    QVERIFY(QFile::link(dir.filePath(u"nowhere"_s), dir.filePath(u"c-dangling"_s)));

    const QList<ButtonSpec> rows = FolderListing::items(dir.path(), std::nullopt);
    QCOMPARE(entryTitles(rows), (QStringList{u"a-folder-link"_s, u"real"_s, u"b-file-link"_s, u"c-dangling"_s,
                                             u"target.txt"_s}));
    // The link is browsed under its own name, not its target's.
    const QString link = dir.filePath(u"a-folder-link"_s);
    QCOMPARE(rows.at(1), expected(u"a-folder-link"_s, u"folder"_s, u"folder"_s, link, link));
    QCOMPARE(rows.at(3).action, u"open"_s);
}

void TestLayout::tildeIsExpandedInPathAndRoot()
{
    QTemporaryDir home;
    const QByteArray previous = qgetenv("HOME");
    qputenv("HOME", QFile::encodeName(home.path()));
    const auto restore = qScopeGuard([&] { qputenv("HOME", previous); });

    const QString documents = home.filePath(u"Documents"_s);
    makeFolder(documents + u"/Taxes"_s);

    const QList<ButtonSpec> rows = FolderListing::items(u"~/Documents"_s, u"~"_s);
    const QString taxes = documents + u"/Taxes"_s;
    QCOMPARE(rows,
             (QList<ButtonSpec>{openRow(documents), upRow(QFileInfo(home.path()).fileName(), home.path()),
                                expected(u"Taxes"_s, u"folder"_s, u"folder"_s, taxes, taxes)}));

    QCOMPARE(titles(FolderListing::items(u"~/Documents"_s, documents + u"/"_s)),
             (QStringList{u"Open in File Manager"_s, u"Taxes"_s}));
    QCOMPARE(titles(FolderListing::items(documents, u"~/Documents/"_s)),
             (QStringList{u"Open in File Manager"_s, u"Taxes"_s}));
}

QTEST_APPLESS_MAIN(TestLayout)
#include "tst_layout.moc"
