#include "TestSupport.h"
#include "app/BarPlacement.h"
#include "app/ConfigSession.h"
#include "app/ContextTracker.h"
#include "bar/BarPanel.h"
#include "bar/BarView.h"
#include "bar/ChipLabel.h"
#include "bar/FlyoutController.h"
#include "bar/FlyoutView.h"
#include "bar/FolderListing.h"
#include "bar/SymbolNames.h"
#include "bar/SymbolView.h"
#include "config/Config.h"
#include "config/Presets.h"
#include "dragdrop/DragEditing.h"
#include "dragdrop/DragState.h"
#include "platform/fake/FakePlatform.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

/// The bar's content drawn off screen: what is on it, where, and what a press on a chip does.
class TestBarView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everySymbolOfTheProgramIsDrawn_data();
    void everySymbolOfTheProgramIsDrawn();
    void rowHoldsGripChipsAndContextAfterSeparator();
    void stacksAndFoldersShowTheirDirection();
    void shortPressTapsLongPressDrags();
    void emptyStackSaysSo();
    void barComesBackOnTheScreenItWasLeftOn_data();
    void barComesBackOnTheScreenItWasLeftOn();
};

namespace {

QList<ChipLabel*> chipsOf(QWidget& view)
{
    return view.findChildren<ChipLabel*>(Qt::FindDirectChildrenOnly);
}

ButtonSpec button(const QString& title, const QString& action)
{
    ButtonSpec spec;
    spec.title = title;
    spec.action = action;
    spec.symbol = QStringLiteral("folder");
    return spec;
}

void addSymbolRows(const QString& source, const QList<ButtonSpec>& buttons)
{
    for (const ButtonSpec& spec : buttons) {
        QTest::addRow("%s / %s: %s", qPrintable(source), qPrintable(spec.title), qPrintable(spec.symbol))
            << spec.symbol << true;
        addSymbolRows(source, spec.children.value_or(QList<ButtonSpec>()));
    }
}

/// The rows of folder listings, made to show every kind of row: entries, the way up, "more", "empty".
QList<ButtonSpec> listingRows()
{
    QTemporaryDir dir;
    QDir(dir.path()).mkpath(QStringLiteral("top/inner/empty"));
    for (int i = 0; i < 30; ++i)
        QFile(dir.filePath(QStringLiteral("top/inner/file%1.txt").arg(i))).open(QIODevice::WriteOnly);
    const QString top = dir.filePath(QStringLiteral("top"));
    return FolderListing::items(top + QStringLiteral("/inner"), top) +
           FolderListing::items(top + QStringLiteral("/inner/empty"), std::nullopt);
}

/// What dropping a file, a folder, an application and a link onto the bar makes.
QList<ButtonSpec> droppedButtons()
{
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("app.desktop")));
    file.open(QIODevice::WriteOnly);
    file.write("[Desktop Entry]\nType=Application\nName=App\nExec=true\n");
    file.close();
    const BarConfig none;
    return {DragEditing::specForFile(dir.filePath(QStringLiteral("app.desktop")), none),
            DragEditing::specForFile(dir.path(), none),
            DragEditing::specForFile(dir.filePath(QStringLiteral("missing.txt")), none),
            DragEditing::specForLink(QUrl(QStringLiteral("https://example.org")), none)};
}

} // namespace

void TestBarView::initTestCase()
{
    SymbolView::useIconThemes();
}

void TestBarView::everySymbolOfTheProgramIsDrawn_data()
{
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<bool>("drawn");
    addSymbolRows(QStringLiteral("default bar"), Config::defaults().buttons);
    for (const AppPreset& preset : Presets::all())
        addSymbolRows(QStringLiteral("preset ") + preset.name, preset.buttons);
    for (const QString& name : SymbolNames::names())
        QTest::addRow("palette: %s", qPrintable(name)) << name << true;
    for (const QString& name : SymbolNames::chrome())
        QTest::addRow("chip: %s", qPrintable(name)) << name << true;
    addSymbolRows(QStringLiteral("folder listing"), listingRows());
    addSymbolRows(QStringLiteral("drop"), droppedButtons());
    // What a user types and no theme knows stays text: emoji, words.
    QTest::newRow("typed emoji") << QStringLiteral("👋") << false;
    QTest::newRow("typed word") << QStringLiteral("Hello") << false;
    QTest::newRow("typed unknown name") << QStringLiteral("no.such.symbol") << false;
}

void TestBarView::everySymbolOfTheProgramIsDrawn()
{
    QFETCH(QString, symbol);
    QFETCH(bool, drawn);
    QCOMPARE(!SymbolView::icon(symbol, Qt::white, 16, 1).isNull(), drawn);
}

void TestBarView::rowHoldsGripChipsAndContextAfterSeparator()
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(Config::defaults(), {}, true);
    QCOMPARE(view.height(), BarView::barHeight);
    const QHash<QString, QRectF> frames = drag.barFrames();
    QCOMPARE(frames.size(), 3);
    QVERIFY(frames.value(QStringLiteral("Files")).left() >= 12 + 14 + 8); // after the margin and the grip
    QVERIFY(frames.value(QStringLiteral("Files")).right() < frames.value(QStringLiteral("Apps")).left());
    QVERIFY(frames.value(QStringLiteral("Help")).right() <= view.width() - 12);
    const int plain = view.width();

    view.rebuild(Config::defaults(), {button(QStringLiteral("Clear"), QStringLiteral("keys"))}, true);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(chipsOf(view).size(), 4);
    QVERIFY(view.width() > plain);
    // The separator sits between the last shared chip and the first of the application's.
    const QRectF help = drag.barFrames().value(QStringLiteral("Help"));
    const QRectF clear = drag.barFrames().value(QStringLiteral("Clear"));
    QCOMPARE(clear.left() - help.right(), 8.0 + 1 + 8);

    // Two chips of one title publish one frame: the later one.
    BarConfig twins;
    twins.buttons = {button(QStringLiteral("Twin"), QStringLiteral("open")),
                     button(QStringLiteral("Twin"), QStringLiteral("url"))};
    view.rebuild(twins, {}, true);
    QCOMPARE(drag.barFrames().size(), 1);
    QVERIFY(drag.barFrames().value(QStringLiteral("Twin")).left() > 40);

    // Held to less than its width, the bar keeps what fits and ends in the overflow chip with the rest,
    // the front application's chips last.
    const QList<ButtonSpec> context = {button(QStringLiteral("Clear"), QStringLiteral("keys"))};
    view.rebuild(Config::defaults(), context, true, plain);
    QVERIFY(view.width() <= plain);
    QVERIFY(!view.overflowed().isEmpty());
    QCOMPARE(view.overflowed().last().title, QStringLiteral("Clear"));
    QCOMPARE(drag.barFrames().size() + view.overflowed().size(), 4);
    QVERIFY(view.overflowFrame().right() <= view.width() - 12);
    QVERIFY(view.overflowFrame().left() > drag.barFrames().value(QStringLiteral("Files")).right());
    view.rebuild(Config::defaults(), context, true, 0);
    QCOMPARE(view.overflowed().size(), 4);
    QVERIFY(drag.barFrames().isEmpty());
    view.grab().save(QStringLiteral("/tmp/barview.png"));
}

void TestBarView::stacksAndFoldersShowTheirDirection()
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    BarConfig config;
    config.buttons = {button(QStringLiteral("Stack"), QStringLiteral("group")),
                      button(QStringLiteral("Folder"), QStringLiteral("folder")),
                      button(QStringLiteral("Link"), QStringLiteral("url"))};
    view.rebuild(config, {}, true);
    const int up = drag.barFrames().value(QStringLiteral("Stack")).width();
    const int link = drag.barFrames().value(QStringLiteral("Link")).width();
    view.rebuild(config, {}, false);
    QCOMPARE(int(drag.barFrames().value(QStringLiteral("Stack")).width()), up);
    // Only stacks and folders carry a chevron, so a link is narrower than a stack of the same title length.
    ButtonSpec same = button(QStringLiteral("Stack"), QStringLiteral("url"));
    config.buttons = {same};
    view.rebuild(config, {}, true);
    QVERIFY(drag.barFrames().value(QStringLiteral("Stack")).width() < up);
    Q_UNUSED(link);
}

void TestBarView::shortPressTapsLongPressDrags()
{
    DragState drag;
    BarHandlers handlers;
    QStringList calls;
    handlers.tap = [&](const ButtonSpec& spec, const QRectF& frame) {
        calls << QStringLiteral("tap %1 %2").arg(spec.title).arg(frame.left());
    };
    handlers.dragMove = [&](const ButtonSpec& spec, const QPointF&) {
        calls << QStringLiteral("move ") + spec.title;
    };
    handlers.dragEnd = [&](const ButtonSpec& spec, const QPointF&) {
        calls << QStringLiteral("end ") + spec.title;
    };
    BarView view(drag, handlers);
    view.rebuild(Config::defaults(), {}, true);
    view.show();
    ChipLabel* files = chipsOf(view).first();

    QTest::mousePress(files, Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseMove(files, QPoint(15, 10)); // 5 pixels: still a tap
    QTest::mouseRelease(files, Qt::LeftButton, {}, QPoint(15, 10));
    QCOMPARE(calls,
             QStringList{
                 QStringLiteral("tap Files %1").arg(drag.barFrames().value(QStringLiteral("Files")).left())});

    calls.clear();
    QTest::mousePress(files, Qt::LeftButton, {}, QPoint(10, 10));
    QTest::mouseMove(files, QPoint(16, 10));
    QTest::mouseMove(files, QPoint(30, 12));
    QTest::mouseRelease(files, Qt::LeftButton, {}, QPoint(30, 12));
    QCOMPARE(calls, (QStringList{QStringLiteral("move Files"), QStringLiteral("move Files"),
                                 QStringLiteral("end Files")}));
}

void TestBarView::emptyStackSaysSo()
{
    BarHandlers handlers;
    FlyoutView empty({}, handlers);
    const QList<QLabel*> labels = empty.findChildren<QLabel*>();
    QCOMPARE(labels.size(), 1);
    QCOMPARE(labels.first()->text(), QStringLiteral("Empty — drag buttons onto this stack"));

    FlyoutView full(Config::defaults().buttons.first().children.value(), handlers);
    full.adjustSize();
    const QList<ChipLabel*> rows = chipsOf(full);
    QCOMPARE(rows.size(), 4);
    for (const ChipLabel* row : rows)
        QCOMPARE(row->width(), rows.first()->width()); // every row as wide as the widest
    full.grab().save(QStringLiteral("/tmp/flyoutview.png"));
}

void TestBarView::barComesBackOnTheScreenItWasLeftOn_data()
{
    QTest::addColumn<int>("saved");
    QTest::addColumn<quint32>("expected");
    QTest::newRow("first start: the first screen") << -1 << 1u;
    QTest::newRow("left on the second screen") << 2 << 2u;
    QTest::newRow("left on the first screen") << 1 << 1u;
    QTest::newRow("left on a screen that is gone: the first") << 7 << 1u;
}

void TestBarView::barComesBackOnTheScreenItWasLeftOn()
{
    QFETCH(int, saved);
    QFETCH(quint32, expected);
    TempConfigDir dir;
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, dir.path());
    Preferences preferences;
    if (saved >= 0)
        preferences.setBarPosition({quint32(saved), 0.25, 0.1});
    FakePlatform platform;
    platform.screenList = {{1, QRect(0, 0, 1440, 900), QRect(0, 0, 1440, 875)},
                           {2, QRect(1440, 0, 1920, 1080), QRect(1440, 0, 1920, 1080)}};
    ConfigSession session;
    session.load();
    ContextTracker context(platform.frontApplication());
    DragState drag;
    BarHandlers handlers;
    FlyoutController flyouts(platform, handlers, drag);
    BarPlacement placement(platform, preferences, session, context, drag, handlers, flyouts);
    placement.create(false);

    const QRect frame = placement.panel()->frameGeometry();
    const auto screen = platform.screens().screenOf(frame);
    QVERIFY(screen);
    QCOMPARE(screen->number, expected);
    QVERIFY2(screen->available.contains(frame), "the whole bar is on its screen");
    // Moved a little, it is saved on that screen, at the fractions that bring it back there.
    placement.moveBy(QPointF(30, 20));
    placement.savePosition();
    QCOMPARE(preferences.barPosition().value_or(Preferences::BarPosition{}).display, expected);
    QCOMPARE(placement.savedOrigin(placement.panel()->size()),
             std::optional<QPoint>(placement.panel()->pos()));
}

QTEST_MAIN(TestBarView)
#include "tst_barview.moc"
