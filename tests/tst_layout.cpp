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
    void placeIsNearTheEdgeAndInsideTheAvailableArea();
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

    void folderListings_data();
    void folderListings();
    void longFoldersShowTheFirstEntriesAndCountTheRest_data();
    void longFoldersShowTheFirstEntriesAndCountTheRest();
    void rootFolderListsItsEntries();
};

namespace {

const QRect screen(0, 0, 1440, 900);
const QRect panelAtBottom(0, 0, 1440, 875);       // a 25-pixel panel along the bottom
const QRect panelsTopAndBottom(0, 25, 1440, 850); // 25 pixels at each end

} // namespace

void TestLayout::placeIsNearTheEdgeAndInsideTheAvailableArea()
{
    // Centred by default.
    QCOMPARE(Geometry::defaultOrigin(QSize(300, 50), panelAtBottom, false),
             QPoint(570, 819)); // 31 above the bottom of the screen
    QCOMPARE(Geometry::defaultOrigin(QSize(300, 50), panelAtBottom, true), QPoint(570, 6));
    QCOMPARE(Geometry::defaultOrigin(QSize(301, 40), QRect(1440, 0, 1920, 1080), false),
             QPoint(1440 + 810, 1034));
    // Wider than the area: pinned to its left edge; taller: pinned to its bottom. Places off the area on
    // every side are in hostileNumbersKeepTheBarOnScreen.
    QCOMPARE(Geometry::clampToAvailable(QPoint(500, 100), QSize(2000, 40), panelsTopAndBottom).x(), 0);
    QCOMPARE(Geometry::clampToAvailable(QPoint(0, 0), QSize(100, 1000), panelsTopAndBottom).y(), 875 - 1000);
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
    QTest::addColumn<qsizetype>("measured"); // chips whose width was asked for
    const QList<int> three = {100, 100, 100};
    QTest::newRow("all fit") << three << qsizetype(3) << 1000 << qsizetype(3) << qsizetype(3);
    QTest::newRow("all fit exactly") << three << qsizetype(3) << 362 << qsizetype(3) << qsizetype(3);
    // One pixel short: the last chip goes, and the overflow chip (38 with its gap) takes its place.
    QTest::newRow("one pixel short") << three << qsizetype(3) << 361 << qsizetype(2) << qsizetype(3);
    // 24 + 14 + 108 + 38 = 184: one chip and the overflow chip.
    QTest::newRow("overflow chip needs room too")
        << three << qsizetype(3) << 253 << qsizetype(1) << qsizetype(2);
    QTest::newRow("only the overflow chip") << three << qsizetype(3) << 183 << qsizetype(0) << qsizetype(2);
    QTest::newRow("no room at all") << three << qsizetype(3) << 0 << qsizetype(0) << qsizetype(0);
    QTest::newRow("empty bar") << QList<int>() << qsizetype(0) << 0 << qsizetype(0) << qsizetype(0);
    // With the front application's chips from index 2, the separator (9 with its gap) counts once one
    // of them is on the bar: 362 + 9 fits all; 370 leaves the last out, and with it the separator.
    QTest::newRow("separator counted") << three << qsizetype(2) << 371 << qsizetype(3) << qsizetype(3);
    QTest::newRow("separator leaves with the chips")
        << three << qsizetype(2) << 370 << qsizetype(2) << qsizetype(3);
    // Long chips early and short ones late: the row keeps its order, no short chip jumps ahead.
    QTest::newRow("order kept") << QList<int>{300, 20, 20} << qsizetype(3) << 300 << qsizetype(0)
                                << qsizetype(1);
    // A bar of a thousand: only the chips up to the first that cannot fit are measured.
    QTest::newRow("a thousand") << QList<int>(1000, 100) << qsizetype(1000) << 362 << qsizetype(2)
                                << qsizetype(4);
}

void TestLayout::chipsThatDoNotFitOverflow()
{
    QFETCH(QList<int>, widths);
    QFETCH(qsizetype, contextStart);
    QFETCH(int, maxWidth);
    QFETCH(qsizetype, shown);
    QFETCH(qsizetype, measured);
    const Overflow::Row row{24, 8, 14, 1, 30};
    QList<qsizetype> asked;
    const auto widthOf = [&](qsizetype i) {
        asked.append(i);
        return widths.at(i);
    };
    QCOMPARE(Overflow::chipsOnBar(widths.size(), widthOf, contextStart, row, maxWidth), shown);
    QCOMPARE(asked.size(), measured);
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

/// A listing as one line, "@" standing for `base`: "[open @/top] [‹ top @] alpha/ notes.txt [… 6 more]".
/// Folders end in "/"; an entry whose path is not its folder's path and its title shows the path after
/// it. Every other field of every row is checked here.
QString listed(const QList<ButtonSpec>& rows, const QString& base)
{
    const auto at = [&](const std::optional<QString>& path) {
        return path.value_or(u"-"_s).replace(base, u"@"_s);
    };
    QStringList out;
    QString folder;
    for (const ButtonSpec& row : rows) {
        QString text;
        const bool pathRow = !row.iconPath && row.action != u"folder";
        if (pathRow && row.title == u"Open in File Manager" && row.symbol == u"arrow.up.forward.app" &&
            row.action == u"open") {
            folder = row.argument.value_or(QString());
            text = u"[open "_s + at(row.argument) + u']';
        } else if (pathRow && row.symbol == u"arrow.up" && row.action == u"navigate") {
            text = u'[' + row.title + u' ' + at(row.argument) + u']';
        } else if (pathRow && row.title == u"(empty)" && row.symbol == u"tray" && row.action == u"navigate" &&
                   row.argument == folder) {
            text = u"[empty]"_s;
        } else if (pathRow && row.symbol == u"ellipsis" && row.action == u"open" && row.argument == folder) {
            text = u'[' + row.title + u']';
        } else if ((row.symbol == u"folder" && row.action == u"folder") ||
                   (row.symbol == u"doc" && row.action == u"open")) {
            text = row.title + (row.symbol == u"folder" ? u"/"_s : QString());
            if (row.argument != QDir(folder).filePath(row.title))
                text += u' ' + at(row.argument);
            if (row.iconPath != row.argument)
                text += u" icon "_s + at(row.iconPath);
        } else {
            text = u"{%1 %2 %3 %4 %5}"_s.arg(row.title, row.symbol, row.action, at(row.argument),
                                             at(row.iconPath));
        }
        if (row.color || row.locked || row.children)
            text += u"{more fields}"_s;
        out.append(text);
    }
    return out.join(u' ');
}

} // namespace

void TestLayout::folderListings_data()
{
    // What is made under "@" before listing it: "name" a file, "name/" a folder, "link->target" a link to
    // "@/target", "!name" a folder made unreadable. HOME is "@" too.
    QTest::addColumn<QString>("made");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QVariant>("root"); // invalid: none
    QTest::addColumn<QString>("listing");
    const QVariant none;
    const auto row = [](const char* name, const char* made, const QString& path, const QVariant& root,
                        const QString& listing) {
        QTest::newRow(name) << QString::fromUtf8(made) << path << root << listing;
    };
    row("folders first, in natural order, case aside",
        "b A10 a2 file10 file2 File1 10.txt 9.txt Zeta/ alpha/ dir10/ Dir9/", u"@"_s, none,
        u"[open @] alpha/ Dir9/ dir10/ Zeta/ 9.txt 10.txt a2 A10 b File1 file2 file10"_s);
    // Made in opposite orders, so the file system is likely to hand the names over differently.
    row("names equal but for case, one order", "readme README ReadMe", u"@"_s, none,
        u"[open @] README ReadMe readme"_s);
    row("names equal but for case, the other order", "ReadMe README readme", u"@"_s, none,
        u"[open @] README ReadMe readme"_s);
    row("hidden entries left out", ".profile .git/ visible not.hidden.", u"@"_s, none,
        u"[open @] not.hidden. visible"_s);
    row("only hidden entries", ".profile .git/", u"@"_s, none, u"[open @] [empty]"_s);
    row("links count by what they point at",
        "real/ target.txt a-folder-link->real b-file-link->target.txt c-dangling->nowhere", u"@"_s, none,
        u"[open @] a-folder-link/ real/ b-file-link c-dangling target.txt"_s);

    const QString exact(36, u'a');
    const QString longer = u"b123456789012345678901234567890123456789"_s;
    // U+1F600 takes two UTF-16 units; here they would straddle the cut.
    const QString face = u'c' + QString(33, u'x') + u"\U0001F600tail"_s;
    const QString cutLonger = longer.left(35) + kEllipsis;
    QTest::newRow("long names shortened, not their paths")
        << exact + u' ' + longer + u' ' + face << u"@"_s << none
        << u"[open @] %1 %2 @/%3 %4 @/%5"_s.arg(exact, cutLonger, longer, face.left(34) + kEllipsis, face);
    QTest::newRow("way up to a long name")
        << longer + u"/inner/"_s << u"@/"_s + longer + u"/inner"_s << QVariant(u"@"_s)
        << u"[open @/%1/inner] [‹ %2 @/%1] [empty]"_s.arg(longer, cutLonger);

    const QString work = u"[open @/Documents/Work] [‹ Documents @/Documents] plan.txt"_s;
    const QString documents = u"[open @/Documents] Work/"_s;
    row("way up below the root", "Documents/Work/plan.txt", u"@/Documents/Work"_s, u"@"_s, work);
    row("way up to the root", "Documents/Work/plan.txt", u"@/Documents"_s, u"@"_s,
        u"[open @/Documents] [‹ top @] Work/"_s);
    row("at the root", "Documents/Work/plan.txt", u"@/Documents"_s, u"@/Documents"_s, documents);
    row("at the root, spelled with a slash", "Documents/Work/", u"@/Documents/"_s, u"@/Documents"_s,
        documents);
    row("at the root, spelled the long way", "Documents/Work/", u"@/Documents"_s,
        u"@//./Documents/Work/../"_s, documents);
    row("at the root, none given", "Documents/Work/", u"@/Documents"_s, none, documents);
    row("path given back cleaned", "Documents/Work/plan.txt", u"@/Documents/Work/./"_s, u"@"_s, work);
    row("tilde in path and root", "Documents/Taxes/", u"~/Documents"_s, u"~"_s,
        u"[open @/Documents] [‹ top @] Taxes/"_s);
    row("tilde in the root", "Documents/Taxes/", u"@/Documents"_s, u"~/Documents/"_s,
        u"[open @/Documents] Taxes/"_s);
    row("tilde in the path", "Documents/Taxes/", u"~/Documents"_s, u"@/Documents/"_s,
        u"[open @/Documents] Taxes/"_s);

    row("missing folder", "", u"@/gone"_s, none, u"[open @/gone] [empty]"_s);
    row("a file, not a folder", "notes.txt", u"@/notes.txt"_s, none, u"[open @/notes.txt] [empty]"_s);
    row("a file, below a root", "notes.txt", u"@/notes.txt"_s, u"@"_s,
        u"[open @/notes.txt] [‹ top @] [empty]"_s);
    row("missing top-level folder goes up to /", "", u"/vantril-no-such-folder"_s, u"/"_s,
        u"[open /vantril-no-such-folder] [‹ / /] [empty]"_s);
    row("unreadable folder", "locked/secret !locked", u"@/locked"_s, none, u"[open @/locked] [empty]"_s);
}

void TestLayout::folderListings()
{
    QFETCH(QString, made);
    QFETCH(QString, path);
    QFETCH(QVariant, root);
    QFETCH(QString, listing);
    QTemporaryDir dir;
    const QString base = dir.filePath(u"top"_s);
    QVERIFY(QDir().mkpath(base));
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", QFile::encodeName(base));
    const auto restore = qScopeGuard([&] {
        qputenv("HOME", home);
        openUp(base);
    });
    for (const QString& entry : made.split(u' ', Qt::SkipEmptyParts)) {
        const QString target = base + u'/' + entry.section(u"->"_s, 0, 0);
        if (entry.contains(u"->"_s))
            QVERIFY(QFile::link(base + u'/' + entry.section(u"->"_s, 1), target));
        else if (entry.startsWith(u'!'))
            QVERIFY(QFile::setPermissions(base + u'/' + entry.mid(1), QFileDevice::Permissions()));
        else if (!QDir().mkpath(entry.endsWith(u'/') ? target : QFileInfo(target).path()))
            QFAIL(qPrintable(target));
        else if (!entry.endsWith(u'/'))
            QVERIFY(writeAll(target, QByteArray()));
    }
    if (made.contains(u'!') && ::geteuid() == 0)
        QSKIP("Permissions do not stop root from reading a folder");
    const auto spelled = [&](const QString& text) { return QString(text).replace(u'@', base); };
    const auto rows = FolderListing::items(
        spelled(path), root.isValid() ? std::optional(spelled(root.toString())) : std::nullopt);
    QCOMPARE(listed(rows, base), listing);
}

void TestLayout::longFoldersShowTheFirstEntriesAndCountTheRest_data()
{
    // With "rows", the listing is limited to that many rows, the opening and counting ones included.
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("shown");
    QTest::newRow("2") << 2 << -1 << 2;
    QTest::newRow("24") << 24 << -1 << 24;
    QTest::newRow("25") << 25 << -1 << 24;
    QTest::newRow("1000") << 1000 << -1 << 24;
    QTest::newRow("30 in 20 rows") << 30 << 20 << 18;
    QTest::newRow("5 in 6 rows") << 5 << 6 << 5;
    QTest::newRow("6 in 6 rows") << 6 << 6 << 4;
    QTest::newRow("30 in 2 rows") << 30 << 2 << 0;
}

void TestLayout::longFoldersShowTheFirstEntriesAndCountTheRest()
{
    QFETCH(int, count);
    QFETCH(int, rows);
    QFETCH(int, shown);
    // One folder and count - 1 files, made from the largest name down so that the entries shown are not
    // simply the first ones found. The folder sorts before every file despite its name.
    QTemporaryDir dir;
    QVERIFY(QDir().mkpath(dir.filePath(u"z%1"_s.arg(count))));
    QStringList wanted{u"[open @]"_s, u"z%1/"_s.arg(count)};
    for (int i = count - 1; i >= 1; --i)
        QVERIFY(writeAll(dir.filePath(u"f%1"_s.arg(i)), QByteArray()));
    for (int i = 1; i < count; ++i)
        wanted.append(u"f%1"_s.arg(i));
    wanted = wanted.mid(0, 1 + shown);
    if (shown < count)
        wanted.append(u"[%1 %2 more]"_s.arg(kEllipsis).arg(count - shown));
    const auto listing = FolderListing::items(dir.path(), std::nullopt,
                                              rows < 0 ? std::nullopt : std::optional<qsizetype>(rows));
    QCOMPARE(listed(listing, dir.path()), wanted.join(u' '));
}

void TestLayout::rootFolderListsItsEntries()
{
    // Above the root there is no parent to offer, and every entry's path is "/" and its name.
    const QString top = listed(FolderListing::items(u"/"_s, std::nullopt), u"@"_s);
    QVERIFY2(top.startsWith(u"[open /] "_s) && !top.mid(9).contains(u" /"_s) && !top.contains(u'{'),
             qPrintable(top));
    QCOMPARE(listed(FolderListing::items(u"/"_s, u"/"_s), u"@"_s), top);
    QCOMPARE(listed(FolderListing::items(u"/"_s, u"/usr"_s), u"@"_s), top);
}

QTEST_APPLESS_MAIN(TestLayout)
#include "tst_layout.moc"
