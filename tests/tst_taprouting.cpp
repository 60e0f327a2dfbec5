#include "TestSupport.h"
#include "app/Preferences.h"
#include "bar/SymbolNames.h"
#include "bar/TapRouting.h"

#include <QTest>

class TestTapRouting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void barTapsOpenCloseOrRun();
    void flyoutRowsWalkListingsInPlace();
    void symbolsMapToThemeIconsOrText();
    void savedPositionNeedsBothFractions();
};

namespace {

ButtonSpec button(const QString& title, const QString& action, std::optional<QString> argument = {})
{
    ButtonSpec spec;
    spec.title = title;
    spec.action = action;
    spec.argument = std::move(argument);
    return spec;
}

using Kind = TapRouting::Route::Kind;

} // namespace

void TestTapRouting::barTapsOpenCloseOrRun()
{
    ButtonSpec stack = button(QStringLiteral("Files"), QStringLiteral("group"));
    QCOMPARE(TapRouting::onBar(stack, std::nullopt).kind, Kind::OpenStack);
    QVERIFY(TapRouting::onBar(stack, std::nullopt).items.isEmpty()); // no members: an empty flyout
    stack.children = QList<ButtonSpec>{button(QStringLiteral("a"), QStringLiteral("open"))};
    QCOMPARE(TapRouting::onBar(stack, QStringLiteral("Apps")).items.size(), 1);
    QCOMPARE(TapRouting::onBar(stack, QStringLiteral("Files")).kind, Kind::CloseFlyout);

    const ButtonSpec folder =
        button(QStringLiteral("Docs"), QStringLiteral("folder"), QStringLiteral("~/Documents"));
    const auto route = TapRouting::onBar(folder, QStringLiteral("Files"));
    QCOMPARE(route.kind, Kind::OpenFolder);
    QCOMPARE(route.path, QStringLiteral("~/Documents"));
    QCOMPARE(route.root, std::optional<QString>(QStringLiteral("~/Documents")));
    QCOMPARE(route.id, QStringLiteral("Docs"));
    QCOMPARE(TapRouting::onBar(folder, QStringLiteral("Docs")).kind, Kind::CloseFlyout);
    const auto home =
        TapRouting::onBar(button(QStringLiteral("Home"), QStringLiteral("folder")), std::nullopt);
    QCOMPARE(home.path, QStringLiteral("~"));
    QVERIFY(!home.root);

    // Everything else runs, even with its own title's flyout open.
    QCOMPARE(
        TapRouting::onBar(button(QStringLiteral("Help"), QStringLiteral("url")), QStringLiteral("Help")).kind,
        Kind::Run);
    QCOMPARE(TapRouting::onBar(button(QStringLiteral("x"), QStringLiteral("Group")), std::nullopt).kind,
             Kind::Run);

    // A tap asked for by a command hangs from the chip, the chip of its stack, or the first place.
    BarConfig config;
    config.buttons = {button(QStringLiteral("Help"), QStringLiteral("url")), stack};
    const QHash<QString, QRectF> frames{{QStringLiteral("Help"), QRectF(12, 0, 60, 40)},
                                        {QStringLiteral("Files"), QRectF(80, 0, 70, 40)}};
    QCOMPARE(TapRouting::anchorFor(config, frames, QStringLiteral("Files")), QRectF(80, 0, 70, 40));
    QCOMPARE(TapRouting::anchorFor(config, frames, QStringLiteral("a")), QRectF(80, 0, 70, 40));
    QCOMPARE(TapRouting::anchorFor(config, frames, QStringLiteral("in a set")), QRectF(12, 0, 100, 40));

    // The overflow chip opens its flyout, a second tap closes it; a stack of that name does not count.
    const QList<ButtonSpec> overflowed = {stack, folder};
    const auto overflow = TapRouting::onOverflow(overflowed, QStringLiteral("Files"));
    QCOMPARE(overflow.kind, Kind::OpenStack);
    QCOMPARE(overflow.items.size(), 2);
    QCOMPARE(TapRouting::onOverflow(overflowed, TapRouting::overflowId()).kind, Kind::CloseFlyout);
    QCOMPARE(TapRouting::onOverflow(overflowed, overflow.id).kind, Kind::CloseFlyout);
}

void TestTapRouting::flyoutRowsWalkListingsInPlace()
{
    const ButtonSpec sub =
        button(QStringLiteral("sub"), QStringLiteral("folder"), QStringLiteral("/data/sub"));
    auto route = TapRouting::inFlyout(sub, QStringLiteral("Docs"), QStringLiteral("/data"));
    QCOMPARE(route.kind, Kind::OpenFolder);
    QCOMPARE(route.path, QStringLiteral("/data/sub"));
    QCOMPARE(route.root, std::optional<QString>(QStringLiteral("/data"))); // the walk keeps its root
    QCOMPARE(route.id, QStringLiteral("Docs"));

    const ButtonSpec up =
        button(QStringLiteral("‹ data"), QStringLiteral("navigate"), QStringLiteral("/data"));
    QCOMPARE(TapRouting::inFlyout(up, QStringLiteral("Docs"), QStringLiteral("/data")).path,
             QStringLiteral("/data"));

    // A folder member of a stack starts a listing rooted at itself.
    route = TapRouting::inFlyout(sub, QStringLiteral("Files"), std::nullopt);
    QCOMPARE(route.root, std::optional<QString>(QStringLiteral("/data/sub")));
    route = TapRouting::inFlyout(button(QStringLiteral("Home"), QStringLiteral("folder")), std::nullopt,
                                 std::nullopt);
    QCOMPARE(route.path, QStringLiteral("~"));
    QCOMPARE(route.id, QStringLiteral("Home"));

    QCOMPARE(TapRouting::inFlyout(
                 button(QStringLiteral("a.txt"), QStringLiteral("open"), QStringLiteral("/a.txt")),
                 QStringLiteral("Docs"), QStringLiteral("/data"))
                 .kind,
             Kind::Run);

    // In the overflow's flyout a stack opens its own flyout and a folder its listing, as on the bar.
    const QString overflow = TapRouting::overflowId();
    ButtonSpec stack = button(QStringLiteral("Files"), QStringLiteral("group"));
    stack.children = QList<ButtonSpec>{button(QStringLiteral("a"), QStringLiteral("open"))};
    route = TapRouting::inFlyout(stack, overflow, std::nullopt);
    QCOMPARE(route.kind, Kind::OpenStack);
    QCOMPARE(route.id, QStringLiteral("Files"));
    route = TapRouting::inFlyout(sub, overflow, std::nullopt);
    QCOMPARE(route.kind, Kind::OpenFolder);
    QCOMPARE(route.id, QStringLiteral("sub"));
    QCOMPARE(route.root, std::optional<QString>(QStringLiteral("/data/sub")));
}

void TestTapRouting::symbolsMapToThemeIconsOrText()
{
    QCOMPARE(SymbolNames::iconNames(QStringLiteral("folder")).first(), QStringLiteral("folder-symbolic"));
    QCOMPARE(SymbolNames::iconNames(QStringLiteral("chevron.up")).first(), QStringLiteral("go-up-symbolic"));
    // A theme's own name is tried too, for users who know their icon theme.
    QVERIFY(SymbolNames::iconNames(QStringLiteral("firefox")).contains(QStringLiteral("firefox")));
    // Emoji, words with capitals and the empty symbol are text (or nothing).
    QVERIFY(SymbolNames::iconNames(QStringLiteral("📁")).isEmpty());
    QVERIFY(SymbolNames::iconNames(QStringLiteral("Hello")).isEmpty());
    QVERIFY(SymbolNames::iconNames(QString()).isEmpty());
}

void TestTapRouting::savedPositionNeedsBothFractions()
{
    QTemporaryDir xdg;
    qputenv("XDG_CONFIG_HOME", xdg.path().toLocal8Bit());
    const QString ini = xdg.filePath(QStringLiteral("vantril/vantril.ini"));
    QVERIFY(QDir().mkpath(xdg.filePath(QStringLiteral("vantril"))));
    {
        QVERIFY(!Preferences().barPosition());
        QVERIFY(writeAll(ini, "[barPosition]\nox=0.25\n"));
        QVERIFY(!Preferences().barPosition());
        QVERIFY(writeAll(ini, "[barPosition]\nox=0.25\noy=left\ndisplay=7\n"));
        QVERIFY(!Preferences().barPosition());
        QVERIFY(writeAll(ini, "[barPosition]\nox=0.25\noy=0.5\ndisplay=screen\n"));
        const auto odd = Preferences().barPosition();
        QVERIFY(odd);
        QCOMPARE(odd->display, 0u); // a display that is not a number reads as 0
        // Numbers, but no place: left to the default position. Huge ones are clamped when placing.
        for (const char* text : {"ox=nan\noy=0.5", "ox=0.5\noy=inf", "ox=-inf\noy=-inf"}) {
            QVERIFY(writeAll(ini, QByteArray("[barPosition]\n") + text + "\n"));
            QVERIFY2(!Preferences().barPosition(), text);
        }
        QVERIFY(writeAll(ini, "[barPosition]\nox=1e300\noy=-1e300\n"));
        QVERIFY(Preferences().barPosition());
    }
    Preferences().setBarPosition({4000000000u, 0.1, 0.9});
    const auto saved = Preferences().barPosition();
    QVERIFY(saved);
    QCOMPARE(saved->display, 4000000000u);
    QCOMPARE(saved->ox, 0.1);
    QCOMPARE(saved->oy, 0.9);
    QVERIFY(Preferences().showStatusItem()); // absent reads as on
    QVERIFY(!Preferences().autoHide());
}

QTEST_APPLESS_MAIN(TestTapRouting)
#include "tst_taprouting.moc"
