#include "bar/Geometry.h"
#include "bar/Overflow.h"
#include "platform/DisplayNumber.h"

#include <QTest>
#include <limits>

/// Placement arithmetic. The cases come from a screen 1440 × 900 whose bottom 25 pixels are taken by a
/// panel; positions are Qt's (y down), and fractions are measured from the bottom-left corner.
class TestGeometry : public QObject
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
};

namespace {

const QRect screen(0, 0, 1440, 900);
const QRect panelAtBottom(0, 0, 1440, 875);       // a 25-pixel panel along the bottom
const QRect panelsTopAndBottom(0, 25, 1440, 850); // 25 pixels at each end

} // namespace

void TestGeometry::defaultPlaceIsCentredNearTheEdge()
{
    QCOMPARE(Geometry::defaultOrigin(QSize(300, 50), panelAtBottom, false),
             QPoint(570, 819)); // 31 above the bottom of the screen
    QCOMPARE(Geometry::defaultOrigin(QSize(300, 50), panelAtBottom, true), QPoint(570, 6));
    QCOMPARE(Geometry::defaultOrigin(QSize(301, 40), QRect(1440, 0, 1920, 1080), false),
             QPoint(1440 + 810, 1034));
}

void TestGeometry::savedPlaceIsClampedIntoTheAvailableArea()
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

void TestGeometry::hostileNumbersKeepTheBarOnScreen_data()
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

void TestGeometry::hostileNumbersKeepTheBarOnScreen()
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

void TestGeometry::fractionsRoundTrip()
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

void TestGeometry::directionFollowsTheHalfOfTheScreen()
{
    QVERIFY(Geometry::expandsUp(QRect(0, 855, 300, 40), screen));
    QVERIFY(!Geometry::expandsUp(QRect(0, 6, 300, 40), screen));
    QVERIFY(!Geometry::expandsUp(QRect(0, 430, 300, 40), screen)); // centre exactly in the middle
    QVERIFY(Geometry::expandsUp(QRect(0, 431, 300, 40), screen));
}

void TestGeometry::refitKeepsLeftAndBottomEdges()
{
    QCOMPARE(Geometry::refit(QRect(100, 800, 300, 40), QSize(400, 40), screen), QRect(100, 800, 400, 40));
    QCOMPARE(Geometry::refit(QRect(100, 800, 300, 50), QSize(300, 40), screen), QRect(100, 810, 300, 40));
    // Grown past the right edge: pushed left just enough.
    QCOMPARE(Geometry::refit(QRect(1200, 800, 200, 40), QSize(300, 40), screen), QRect(1140, 800, 300, 40));
    // Wider than the screen: never past its left edge.
    QCOMPARE(Geometry::refit(QRect(1200, 800, 200, 40), QSize(2000, 40), screen).x(), 0);
}

void TestGeometry::flyoutsHangFromTheirChip()
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

void TestGeometry::tallFlyoutsGetTheRoomThereIs_data()
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

void TestGeometry::tallFlyoutsGetTheRoomThereIs()
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

void TestGeometry::displayNumbersAreStableHashes()
{
    const quint32 byName = displayNumber(QString(), QString(), QString(), QStringLiteral("screen"));
    QCOMPARE(byName, displayNumber(QStringLiteral("ACME"), QStringLiteral("X1"), QString(),
                                   QStringLiteral("screen")));
    QCOMPARE(byName, 0x8f43c982u); // FNV-1a of "name|screen"
    const quint32 byEdid = displayNumber(QStringLiteral("DEL"), QStringLiteral("U2720Q"),
                                         QStringLiteral("ABC123"), QStringLiteral("DP-1"));
    QCOMPARE(byEdid, displayNumber(QStringLiteral("DEL"), QStringLiteral("U2720Q"), QStringLiteral("ABC123"),
                                   QStringLiteral("HDMI-2")));
    QVERIFY(byEdid != displayNumber(QStringLiteral("DEL"), QStringLiteral("U2720Q"), QStringLiteral("ABC124"),
                                    QStringLiteral("DP-1")));
}

void TestGeometry::chipsThatDoNotFitOverflow_data()
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

void TestGeometry::chipsThatDoNotFitOverflow()
{
    QFETCH(QList<int>, widths);
    QFETCH(qsizetype, contextStart);
    QFETCH(int, maxWidth);
    QFETCH(qsizetype, shown);
    const Overflow::Row row{24, 8, 14, 1, 30};
    QCOMPARE(Overflow::chipsOnBar(widths, contextStart, row, maxWidth), shown);
}

void TestGeometry::overflowFlyoutFillsColumns_data()
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

void TestGeometry::overflowFlyoutFillsColumns()
{
    QFETCH(qsizetype, count);
    QFETCH(int, maxHeight);
    QFETCH(int, rows);
    QCOMPARE(Overflow::rowsPerColumn(count, 30, 6, 8, maxHeight), rows);
}

QTEST_APPLESS_MAIN(TestGeometry)
#include "tst_geometry.moc"
