// Changing the buttons: finding and replacing them by title, drags along the bar and into stacks, drops of
// files and links, and where a tap on a chip or a flyout row leads.
// Presets merged into and stripped from an application's set, and the set the front window picks.

#include "TestSupport.h"
#include "actions/KeyCombo.h"
#include "actions/Paths.h"
#include "app/ButtonCommands.h"
#include "app/ContextTracker.h"
#include "app/Preferences.h"
#include "bar/SymbolNames.h"
#include "bar/TapRouting.h"
#include "config/AppContext.h"
#include "config/ConfigReader.h"
#include "config/Editing.h"
#include "config/Presets.h"
#include "dragdrop/DragEditing.h"
#include "dragdrop/DragState.h"
#include "dragdrop/DropTarget.h"
#include "platform/fake/FakePlatform.h"

#include <QDir>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

class TestEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lookupFollowsSearchOrder();
    void detachTakesOnlyTheFirstMatch();
    void replaceOverwritesInPlace();
    void uniqueTitleLooksEverywhereItShould();
    void isContextLooksOnlyInApplicationSets();

private Q_SLOTS:
    void barFrameGrowsByEightPixels();
    void stackMiddlesAndApplicationMiddles();
    void insertionIgnoresTheDraggedChip();
    void markerSitsBesideItsNeighbour();
    void draggingFeedbackRespectsLocksAndSets();
    void reorderingAlongTheBar_data();
    void reorderingAlongTheBar();
    void movingIntoAndOutOfStacks();
    void droppedFilesAndLinksBecomeButtons();
    void buttonCommandsChangeTheDocument_data();
    void buttonCommandsChangeTheDocument();

private Q_SLOTS:
    void barTapsOpenCloseOrRun();
    void flyoutRowsWalkListingsInPlace();
    void symbolsMapToThemeIconsOrText();
    void savedPositionNeedsBothFractions();

private Q_SLOTS:
    void everyPresetIsWellFormed();
    void mergeCreatesTheSetAndSkipsWhatIsThere();
    void mergeRenamesTitlesTakenElsewhere();
    void mergeUsesTheFirstSetOfAnApplication();
    void stripRemovesPresetButtonsAndRenamedCopies();
    void appliedNamesFollowTheSets();
    void frontWindowFindsItsSetByAnyName_data();
    void frontWindowFindsItsSetByAnyName();
};

namespace {

/// An "open" button told apart from others of its title by its symbol.
ButtonSpec symbolled(const QString& title, const QString& symbol)
{
    return ButtonSpec::make(title, symbol, QStringLiteral("open"));
}

ButtonSpec stack(const QString& title, QList<ButtonSpec> members)
{
    ButtonSpec spec = button(title);
    spec.action = QStringLiteral("group");
    spec.children = std::move(members);
    return spec;
}

/// Titles appear in several places on purpose, each copy marked by its symbol.
BarConfig sample()
{
    BarConfig config;
    config.buttons = {
        symbolled(QStringLiteral("A"), QStringLiteral("top")),
        stack(QStringLiteral("S1"), {symbolled(QStringLiteral("B"), QStringLiteral("s1")),
                                     stack(QStringLiteral("Inner"), {button(QStringLiteral("Deep"))})}),
        stack(QStringLiteral("S2"), {symbolled(QStringLiteral("B"), QStringLiteral("s2")),
                                     symbolled(QStringLiteral("C"), QStringLiteral("s2"))}),
        button(QStringLiteral("Notes")),
    };
    config.appSets = QList<AppSet>{
        {QStringLiteral("x"),
         QStringLiteral("X"),
         {symbolled(QStringLiteral("C"), QStringLiteral("set")),
          symbolled(QStringLiteral("A"), QStringLiteral("set")),
          stack(QStringLiteral("SetStack"), {button(QStringLiteral("Hidden"))})}},
        {QStringLiteral("y"), QStringLiteral("Y"), {symbolled(QStringLiteral("D"), QStringLiteral("set2"))}},
    };
    return config;
}

QString symbolOf(const std::optional<ButtonSpec>& spec)
{
    return spec ? spec->symbol : QStringLiteral("<none>");
}

} // namespace

void TestEditing::lookupFollowsSearchOrder()
{
    const BarConfig config = sample();
    QCOMPARE(symbolOf(Editing::button(config, QStringLiteral("A"))), QStringLiteral("top"));
    QCOMPARE(symbolOf(Editing::button(config, QStringLiteral("B"))), QStringLiteral("s1"));
    QCOMPARE(symbolOf(Editing::button(config, QStringLiteral("C"))), QStringLiteral("s2"));
    QCOMPARE(symbolOf(Editing::button(config, QStringLiteral("D"))), QStringLiteral("set2"));
    // Two levels down, and inside stacks of application sets, nothing is searched.
    QVERIFY(!Editing::button(config, QStringLiteral("Deep")));
    QVERIFY(!Editing::button(config, QStringLiteral("Hidden")));
    QVERIFY(!Editing::button(config, QStringLiteral("a")));
    QVERIFY(Editing::button(config, QStringLiteral("Inner")));
}

void TestEditing::detachTakesOnlyTheFirstMatch()
{
    BarConfig config = sample();
    QCOMPARE(symbolOf(Editing::detach(config, QStringLiteral("C"))), QStringLiteral("s2"));
    QCOMPARE(symbolOf(Editing::detach(config, QStringLiteral("C"))), QStringLiteral("set"));
    QVERIFY(!Editing::detach(config, QStringLiteral("C")));
    QCOMPARE(config.buttons.at(2).children->size(), 1);
    QCOMPARE(config.appSets->first().buttons.first().title, QStringLiteral("A"));

    QCOMPARE(symbolOf(Editing::detach(config, QStringLiteral("A"))), QStringLiteral("top"));
    QCOMPARE(config.buttons.first().title, QStringLiteral("S1"));
    QVERIFY(!Editing::detach(config, QStringLiteral("Deep")));

    // A stack leaves with its members.
    const auto s1 = Editing::detach(config, QStringLiteral("S1"));
    QCOMPARE(s1->children->size(), 2);
    QVERIFY(!Editing::button(config, QStringLiteral("Inner")));
}

void TestEditing::replaceOverwritesInPlace()
{
    BarConfig config = sample();
    ButtonSpec changed = symbolled(QStringLiteral("B renamed"), QStringLiteral("new"));
    QVERIFY(Editing::replace(config, QStringLiteral("B"), changed));
    QCOMPARE(config.buttons.at(1).children->at(0), changed);
    QCOMPARE(config.buttons.at(2).children->at(0).title, QStringLiteral("B")); // the second copy is untouched
    QVERIFY(!Editing::replace(config, QStringLiteral("Nobody"), changed));
    QVERIFY(!Editing::replace(config, QStringLiteral("Hidden"), changed));
    const BarConfig before = config;
    QVERIFY(!Editing::replace(config, QStringLiteral("Deep"), changed));
    QCOMPARE(config, before);
}

void TestEditing::uniqueTitleLooksEverywhereItShould()
{
    const BarConfig config = sample();
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Fresh")), QStringLiteral("Fresh"));
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("A")), QStringLiteral("A 2"));
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("D")),
             QStringLiteral("D 2")); // application sets count
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Inner")), QStringLiteral("Inner 2"));
    // Titles deeper than a stack's members are not collected.
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Deep")), QStringLiteral("Deep"));
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Hidden")), QStringLiteral("Hidden"));
    // Matching is exact.
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("notes")), QStringLiteral("notes"));

    BarConfig numbered = config;
    numbered.buttons.append(button(QStringLiteral("Notes 2")));
    numbered.buttons.append(button(QStringLiteral("Notes 3")));
    QCOMPARE(Editing::uniqueTitle(numbered, QStringLiteral("Notes")), QStringLiteral("Notes 4"));
    QCOMPARE(Editing::uniqueTitle(numbered, QStringLiteral("Notes 2")), QStringLiteral("Notes 2 2"));

    // Excluding a button's own old title lets it keep that title, but not take another's.
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Notes"), QStringLiteral("Notes")),
             QStringLiteral("Notes"));
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("A"), QStringLiteral("Notes")),
             QStringLiteral("A 2"));
    // A title used twice stays taken after excluding it once? No: the exclusion removes the title itself.
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("B"), QStringLiteral("B")), QStringLiteral("B"));
}

void TestEditing::isContextLooksOnlyInApplicationSets()
{
    const BarConfig config = sample();
    QVERIFY(Editing::isContext(config, QStringLiteral("C")));
    QVERIFY(Editing::isContext(config, QStringLiteral("A")));
    QVERIFY(Editing::isContext(config, QStringLiteral("SetStack")));
    QVERIFY(!Editing::isContext(config, QStringLiteral("Hidden")));
    QVERIFY(!Editing::isContext(config, QStringLiteral("Notes")));
    QVERIFY(!Editing::isContext(BarConfig(), QStringLiteral("A")));
}

namespace {

/// Five chips, each 80 wide with 8 between them, after the 34 pixels of margin and grip.
BarConfig five()
{
    BarConfig cfg;
    for (const char* title : {"1", "2", "3", "4", "5"})
        cfg.buttons.append(button(QString::fromUtf8(title)));
    return cfg;
}

QHash<QString, QRectF> framesOf(const BarConfig& cfg, const QList<ButtonSpec>& extra = {})
{
    QHash<QString, QRectF> frames;
    double x = 34;
    for (const QList<ButtonSpec>* list : {&cfg.buttons, &extra}) {
        for (const ButtonSpec& spec : *list) {
            frames.insert(spec.title, QRectF(x, 6, 80, 28));
            x += 88;
        }
    }
    return frames;
}

const QRectF bar(500, 800, 500, 40);

} // namespace

void TestEditing::barFrameGrowsByEightPixels()
{
    const BarConfig cfg = five();
    const auto frames = framesOf(cfg);
    const ButtonSpec dragged = cfg.buttons.at(2);
    QCOMPARE(DropTargets::at(QPointF(600, 800 - 7), bar, dragged, cfg, frames).kind,
             DropTarget::Kind::InsertAt);
    QCOMPARE(DropTargets::at(QPointF(600, 800 - 9), bar, dragged, cfg, frames), DropTarget::outside());
    QCOMPARE(DropTargets::at(QPointF(500 - 8, 820), bar, dragged, cfg, frames).kind,
             DropTarget::Kind::InsertAt);
    QCOMPARE(DropTargets::at(QPointF(1000 + 8, 820), bar, dragged, cfg, frames), DropTarget::outside());
    // Converted to bar coordinates: x 534 is the left edge of the first chip.
    QCOMPARE(DropTargets::at(QPointF(500 + 34 + 41, 820), bar, dragged, cfg, frames),
             DropTarget::insertAt(1));
}

void TestEditing::stackMiddlesAndApplicationMiddles()
{
    BarConfig cfg = five();
    cfg.buttons[1].action = QStringLiteral("group");
    cfg.buttons[3].action = QStringLiteral("app");
    const auto frames = framesOf(cfg); // "2" spans 122..202, "4" spans 298..378
    const auto hit = [&](double x, double y, bool groups, bool apps) {
        return DropTargets::local(QPointF(x, y), std::nullopt, groups, apps, cfg, {}, frames);
    };
    QCOMPARE(hit(162, 6 - 15, true, false),
             DropTarget::intoGroup(QStringLiteral("2")));                // 15 above its middle
    QCOMPARE(hit(122 + 15.9, 20, true, false), DropTarget::insertAt(1)); // its outer fifth
    QCOMPARE(hit(122 + 16, 20, true, false), DropTarget::intoGroup(QStringLiteral("2")));
    QCOMPARE(hit(202 - 16, 20, true, false),
             DropTarget::insertAt(2)); // the far edge of the middle belongs outside
    QCOMPARE(hit(162, 20, false, false), DropTarget::insertAt(1)); // a stack dragged onto a stack
    QCOMPARE(hit(338, 20, true, true), DropTarget::openWith(QStringLiteral("4")));
    QCOMPARE(hit(298 + 11, 20, true, true), DropTarget::insertAt(3)); // outside the middle 70 %
    QCOMPARE(hit(338, 20, true, false), DropTarget::insertAt(3));     // its own midpoint is not "before"

    // The front application's chips can be opened with, but are never insertion points.
    const ButtonSpec editor = button(QStringLiteral("Editor"), QStringLiteral("app"));
    const auto withSet = framesOf(cfg, {editor}); // "Editor" spans 474..554
    QCOMPARE(DropTargets::local(QPointF(514, 20), std::nullopt, true, true, cfg, {editor}, withSet),
             DropTarget::openWith(QStringLiteral("Editor")));
    QCOMPARE(DropTargets::local(QPointF(514, 20), std::nullopt, true, false, cfg, {editor}, withSet),
             DropTarget::insertAt(5));
}

void TestEditing::insertionIgnoresTheDraggedChip()
{
    const BarConfig cfg = five();
    auto frames = framesOf(cfg);
    // Slightly within its own slot: the index it already has once taken out.
    QCOMPARE(DropTargets::local(QPointF(220, 20), QStringLiteral("3"), true, false, cfg, {}, frames),
             DropTarget::insertAt(2));
    QCOMPARE(DropTargets::local(QPointF(0, 20), QStringLiteral("3"), true, false, cfg, {}, frames),
             DropTarget::insertAt(0));
    // A chip without a frame is never counted.
    frames.remove(QStringLiteral("1"));
    QCOMPARE(DropTargets::local(QPointF(1000, 20), std::nullopt, true, false, cfg, {}, frames),
             DropTarget::insertAt(4));
    QCOMPARE(DropTargets::local(QPointF(10, 20), std::nullopt, true, false, BarConfig(), {}, {}),
             DropTarget::insertAt(0));
}

void TestEditing::markerSitsBesideItsNeighbour()
{
    const BarConfig cfg = five();
    const auto frames = framesOf(cfg);
    using std::nullopt;
    QCOMPARE(
        DropTargets::feedback(DropTarget::insertAt(0), QStringLiteral("1"), nullopt, cfg, frames).markerX,
        std::optional<double>(122 - 4)); // the new first chip is "2"
    QCOMPARE(DropTargets::feedback(DropTarget::insertAt(2), nullopt, nullopt, cfg, frames).markerX,
             std::optional<double>(202 + 4));
    QCOMPARE(DropTargets::feedback(DropTarget::insertAt(0), nullopt, nullopt, BarConfig(), {}).markerX,
             std::optional<double>(8));
    QCOMPARE(DropTargets::feedback(DropTarget::insertAt(1), nullopt, nullopt, cfg, {}).markerX,
             std::optional<double>(4));
    QCOMPARE(DropTargets::feedback(DropTarget::intoGroup(QStringLiteral("S")), nullopt, QStringLiteral("S"),
                                   cfg, frames),
             DropFeedback());
    QCOMPARE(DropTargets::feedback(DropTarget::intoGroup(QStringLiteral("S")), nullopt, QStringLiteral("T"),
                                   cfg, frames),
             (DropFeedback{nullopt, QStringLiteral("S")}));
    QCOMPARE(DropTargets::feedback(DropTarget::openWith(QStringLiteral("A")), nullopt, nullopt, cfg, frames),
             (DropFeedback{nullopt, QStringLiteral("A")}));
    QCOMPARE(DropTargets::feedback(DropTarget::outside(), nullopt, nullopt, cfg, frames), DropFeedback());
}

void TestEditing::draggingFeedbackRespectsLocksAndSets()
{
    BarConfig cfg = five();
    cfg.buttons[0].action = QStringLiteral("group");
    cfg.buttons[0].children = QList<ButtonSpec>{button(QStringLiteral("member"))};
    cfg.appSets = QList<AppSet>{{QStringLiteral("x"), QStringLiteral("X"), {button(QStringLiteral("own"))}}};
    const auto frames = framesOf(cfg);
    const QPointF overStack(500 + 74, 820);
    const QPointF betweenChips(500 + 210, 820);

    ButtonSpec locked = cfg.buttons[3];
    locked.locked = true;
    QVERIFY(!DragEditing::dragFeedback(locked, betweenChips, bar, cfg, frames));
    QCOMPARE(DragEditing::dragFeedback(button(QStringLiteral("own")), betweenChips, bar, cfg, frames),
             DropFeedback());
    QCOMPARE(
        DragEditing::dragFeedback(button(QStringLiteral("own")), overStack, bar, cfg, frames)->highlightGroup,
        std::optional<QString>(QStringLiteral("1")));
    // A member over its own stack shows nothing; over the bar it shows where it would land.
    QCOMPARE(DragEditing::dragFeedback(button(QStringLiteral("member")), overStack, bar, cfg, frames),
             DropFeedback());
    QVERIFY(
        DragEditing::dragFeedback(button(QStringLiteral("member")), betweenChips, bar, cfg, frames)->markerX);
}

void TestEditing::reorderingAlongTheBar_data()
{
    QTest::addColumn<QString>("moved");
    QTest::addColumn<int>("at"); // the marker's place, -1: outside the bar
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("outcome");
    const int changed = int(DragEditing::Outcome::Changed);
    const int unchanged = int(DragEditing::Outcome::Unchanged);
    QTest::newRow("to the front") << QStringLiteral("3") << 0 << QStringLiteral("31245") << changed;
    QTest::newRow("to the end") << QStringLiteral("3") << 4 << QStringLiteral("12453") << changed;
    // Back where it was is still a change to commit.
    QTest::newRow("to its own place") << QStringLiteral("3") << 2 << QStringLiteral("12345") << changed;
    QTest::newRow("outside") << QStringLiteral("3") << -1 << QStringLiteral("12345") << unchanged;
    QTest::newRow("a chip that is not there")
        << QStringLiteral("ghost") << 0 << QStringLiteral("12345") << unchanged;
}

void TestEditing::reorderingAlongTheBar()
{
    QFETCH(QString, moved);
    QFETCH(int, at);
    QFETCH(QString, after);
    QFETCH(int, outcome);
    BarConfig cfg = five();
    const ButtonSpec chip = moved == QLatin1String("ghost") ? button(moved) : cfg.buttons[moved.toInt() - 1];
    QCOMPARE(int(DragEditing::dropChip(cfg, chip, at < 0 ? DropTarget::outside() : DropTarget::insertAt(at))),
             outcome);
    QCOMPARE(titles(cfg.buttons).join(QString()), after);
    if (after == QLatin1String("12345"))
        QCOMPARE(cfg, five());
}

void TestEditing::movingIntoAndOutOfStacks()
{
    BarConfig cfg = five();
    cfg.buttons[0].action = QStringLiteral("group");
    ButtonSpec red = button(QStringLiteral("m1"));
    red.color = QStringLiteral("red");
    cfg.buttons[0].children = QList<ButtonSpec>{red, button(QStringLiteral("m2"))};
    cfg.buttons[1].action = QStringLiteral("group"); // empty, uncoloured
    ButtonSpec purple = cfg.buttons[2];
    purple.color = QStringLiteral("purple");
    cfg.buttons[2] = purple;
    cfg.appSets = QList<AppSet>{{QStringLiteral("x"), QStringLiteral("X"), {button(QStringLiteral("own"))}}};

    // Into a stack whose first member is red: the chip turns red and goes to the end.
    QCOMPARE(DragEditing::dropChip(cfg, cfg.buttons[3], DropTarget::intoGroup(QStringLiteral("1"))),
             DragEditing::Outcome::Changed);
    QCOMPARE(titles(*cfg.buttons[0].children),
             (QStringList{QStringLiteral("m1"), QStringLiteral("m2"), QStringLiteral("4")}));
    QCOMPARE(cfg.buttons[0].children->last().color, std::optional<QString>(QStringLiteral("red")));
    // Into an empty uncoloured stack: it keeps its own colour.
    QCOMPARE(DragEditing::dropChip(cfg, purple, DropTarget::intoGroup(QStringLiteral("2"))),
             DragEditing::Outcome::Changed);
    QCOMPARE(cfg.buttons[1].children->first().color, std::optional<QString>(QStringLiteral("purple")));
    // A member back onto its own stack, and a stack into a stack: nothing.
    QCOMPARE(
        DragEditing::dropChip(cfg, button(QStringLiteral("m2")), DropTarget::intoGroup(QStringLiteral("1"))),
        DragEditing::Outcome::Unchanged);
    QCOMPARE(DragEditing::dropChip(cfg, cfg.buttons[1], DropTarget::intoGroup(QStringLiteral("1"))),
             DragEditing::Outcome::Unchanged);
    // A member out onto the bar lands at the marker.
    QCOMPARE(DragEditing::dropChip(cfg, button(QStringLiteral("m2")), DropTarget::insertAt(1)),
             DragEditing::Outcome::Changed);
    QCOMPARE(cfg.buttons[1].title, QStringLiteral("m2"));
    QCOMPARE(cfg.buttons[0].children->size(), 2);
    // ... unless a top-level button has its title.
    cfg.buttons[0].children->append(button(QStringLiteral("5")));
    const BarConfig before = cfg;
    QCOMPARE(DragEditing::dropChip(cfg, button(QStringLiteral("5")), DropTarget::insertAt(0)),
             DragEditing::Outcome::Refused);
    QCOMPARE(cfg, before);
    // Application-set buttons only go into stacks.
    QCOMPARE(DragEditing::dropChip(cfg, button(QStringLiteral("own")), DropTarget::insertAt(0)),
             DragEditing::Outcome::Unchanged);
    QCOMPARE(
        DragEditing::dropChip(cfg, button(QStringLiteral("own")), DropTarget::intoGroup(QStringLiteral("1"))),
        DragEditing::Outcome::Changed);
    QVERIFY(cfg.appSets->first().buttons.isEmpty());

    QCOMPARE(DragEditing::stackColour(button(QStringLiteral("s"), QStringLiteral("group"))), std::nullopt);
    ButtonSpec urls = button(QStringLiteral("s"), QStringLiteral("group"));
    urls.children = QList<ButtonSpec>{button(QStringLiteral("u"), QStringLiteral("url"))};
    QCOMPARE(DragEditing::stackColour(urls), std::optional<QString>(QStringLiteral("green")));
}

void TestEditing::droppedFilesAndLinksBecomeButtons()
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(QStringLiteral("Projects"));
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("Sketchpad.app"))));
    // Installed where the menus look; the same file anywhere else is a stray document.
    qputenv("XDG_DATA_HOME", QFile::encodeName(dir.path()));
    QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("applications"))));
    const QString entry = dir.filePath(QStringLiteral("applications/org.example.Editor.desktop"));
    QFile file(entry);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Desktop Entry]\nName[de]=Bearbeiter\nName = Fancy Editor\nExec=editor\n[Desktop Action "
               "new]\nName=New\n");
    file.close();

    BarConfig cfg = five();
    const ButtonSpec projects = DragEditing::specForFile(folder, cfg);
    QCOMPARE(projects.action, QStringLiteral("folder"));
    QCOMPARE(projects.symbol, QStringLiteral("folder"));
    QVERIFY(!projects.iconPath);
    const ButtonSpec sketchpad = DragEditing::specForFile(dir.filePath(QStringLiteral("Sketchpad.app")), cfg);
    QCOMPARE(sketchpad.title, QStringLiteral("Sketchpad"));
    QCOMPARE(sketchpad.action, QStringLiteral("app"));
    QCOMPARE(sketchpad.symbol, QStringLiteral("app"));
    const ButtonSpec editor = DragEditing::specForFile(entry, cfg);
    QCOMPARE(editor.title, QStringLiteral("Fancy Editor"));
    QCOMPARE(editor.argument, std::optional<QString>(entry));
    QCOMPARE(editor.iconPath, std::optional<QString>(entry));
    const QString stray = dir.filePath(QStringLiteral("Editor.desktop"));
    QVERIFY(QFile::copy(entry, stray));
    QCOMPARE(DragEditing::specForFile(stray, cfg).action, QStringLiteral("open"));
    const ButtonSpec document = DragEditing::specForFile(dir.filePath(QStringLiteral("3")), cfg);
    QCOMPARE(document.title, QStringLiteral("3 2")); // titles stay unique
    QCOMPARE(document.action, QStringLiteral("open"));
    QCOMPARE(Paths::abbreviateHome(QDir::homePath() + QStringLiteral("/Downloads")),
             QStringLiteral("~/Downloads"));
    QCOMPARE(Paths::abbreviateHome(QDir::homePath() + QStringLiteral("x/y")),
             QDir::homePath() + QStringLiteral("x/y"));

    const QUrl link(QStringLiteral("https://www.example.org/page?q=1"));
    QCOMPARE(DragEditing::specForLink(link, cfg).title, QStringLiteral("example.org"));
    QCOMPARE(DragEditing::specForLink(link, cfg).argument, std::optional<QString>(link.toString()));
    QCOMPARE(DragEditing::specForLink(QUrl(QStringLiteral("mailto:me@example.org")), cfg).title,
             QStringLiteral("mailto:me@example.org"));

    // Several items at one insertion point: reverse order. Into a stack: in order, in its colour.
    const QList<QUrl> three = {QUrl::fromLocalFile(dir.filePath(QStringLiteral("A"))),
                               QUrl::fromLocalFile(dir.filePath(QStringLiteral("B"))), link};
    DragEditing::dropItems(cfg, three, DropTarget::insertAt(1));
    QCOMPARE(titles(cfg.buttons).mid(0, 5),
             (QStringList{QStringLiteral("1"), QStringLiteral("example.org"), QStringLiteral("B"),
                          QStringLiteral("A"), QStringLiteral("2")}));
    cfg.buttons[0].action = QStringLiteral("group");
    cfg.buttons[0].color = QStringLiteral("yellow");
    DragEditing::dropItems(cfg, three, DropTarget::intoGroup(QStringLiteral("1")));
    QCOMPARE(titles(*cfg.buttons[0].children),
             (QStringList{QStringLiteral("A 2"), QStringLiteral("B 2"), QStringLiteral("example.org 2")}));
    QCOMPARE(cfg.buttons[0].children->first().color, std::optional<QString>(QStringLiteral("yellow")));
}

namespace {

using Kind = TapRouting::Route::Kind;

} // namespace

void TestEditing::barTapsOpenCloseOrRun()
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

void TestEditing::flyoutRowsWalkListingsInPlace()
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

void TestEditing::symbolsMapToThemeIconsOrText()
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

void TestEditing::savedPositionNeedsBothFractions()
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

namespace {

ButtonSpec keys(const QString& title, const QString& combo)
{
    ButtonSpec spec;
    spec.title = title;
    spec.symbol = QStringLiteral("s");
    spec.action = QStringLiteral("keys");
    spec.argument = combo;
    return spec;
}

const AppPreset& mail()
{
    return *Presets::named(QStringLiteral("Mail"));
}

/// The other platform's presets come first; the ones after them are for Linux applications.
constexpr qsizetype seedPresets = 10;

} // namespace

void TestEditing::everyPresetIsWellFormed()
{
    QSet<QString> names;
    QSet<QString> applications;
    QSet<QString> titles;
    const QList<AppPreset>& presets = Presets::all();
    QVERIFY(presets.size() > seedPresets);
    for (qsizetype i = 0; i < presets.size(); ++i) {
        const AppPreset& preset = presets[i];
        // Two presets of one application would fill one set, and the menus could not tell them apart.
        QVERIFY2(!names.contains(preset.name) && !applications.contains(preset.bundleID),
                 qPrintable(preset.name));
        // Desktop-entry ids are compared without their ".desktop".
        QVERIFY2(!preset.bundleID.endsWith(QLatin1String(".desktop")), qPrintable(preset.bundleID));
        QVERIFY2(!preset.buttons.isEmpty(), qPrintable(preset.name));
        names.insert(preset.name);
        applications.insert(preset.bundleID);
        for (const ButtonSpec& button : preset.buttons) {
            const QByteArray where = (preset.name + QLatin1String(" / ") + button.title).toUtf8();
            // Matching preset buttons against a document relies on them having nothing beyond action and
            // argument.
            ButtonSpec plain = ButtonSpec::make(button.title, button.symbol, QStringLiteral("keys"),
                                                button.argument.value_or(QString()));
            QVERIFY2(button == plain && !button.title.isEmpty() && !button.symbol.isEmpty() &&
                         button.title.trimmed() == button.title,
                     where.constData());
            QVERIFY2(!titles.contains(button.title), where.constData());
            titles.insert(button.title);
            // Linux applications bind Control; the other platform's Command would press Super, which the
            // desktop itself takes.
            const auto combo = KeyCombo::parse(button.argument.value_or(QString()));
            QVERIFY2(combo && (i < seedPresets || !(combo->flags & KeyCombo::SuperFlag)), where.constData());
        }
    }
}

void TestEditing::mergeCreatesTheSetAndSkipsWhatIsThere()
{
    BarConfig config;
    QCOMPARE(Presets::merge(config, mail()), 8);
    QCOMPARE(config.appSets->size(), 1);
    const AppSet& set = config.appSets->first();
    QCOMPARE(set.app, QStringLiteral("com.apple.mail"));
    QCOMPARE(set.name, QStringLiteral("Mail"));
    QCOMPARE(set.buttons, mail().buttons);
    QCOMPARE(Presets::merge(config, mail()), 0);

    // Matching is by what the button does, not by its title.
    BarConfig custom;
    custom.appSets = QList<AppSet>{{QStringLiteral("com.apple.mail"),
                                    QStringLiteral("My Mail"),
                                    {keys(QStringLiteral("Answer"), QStringLiteral("cmd+r"))}}};
    QCOMPARE(Presets::merge(custom, mail()), 7);
    QCOMPARE(custom.appSets->first().name, QStringLiteral("My Mail"));
    QCOMPARE(custom.appSets->first().buttons.first().title, QStringLiteral("Answer"));
    QVERIFY(!titles(custom.appSets->first().buttons).contains(QStringLiteral("Reply")));
}

void TestEditing::mergeRenamesTitlesTakenElsewhere()
{
    BarConfig config;
    config.buttons = {keys(QStringLiteral("Reply"), QStringLiteral("ctrl+r")),
                      keys(QStringLiteral("Flag"), QStringLiteral("ctrl+f"))};
    Presets::merge(config, mail());
    const QStringList setTitles = titles(config.appSets->first().buttons);
    QVERIFY(setTitles.contains(QStringLiteral("Reply 2")));
    QVERIFY(setTitles.contains(QStringLiteral("Flag 2")));
    QVERIFY(setTitles.contains(QStringLiteral("Reply All")));

    // Two presets with shared titles ("New Chat" does not clash, "Search Chats" neither, "Details" is new).
    BarConfig both;
    Presets::merge(both, *Presets::named(QStringLiteral("Safari")));
    Presets::merge(both, *Presets::named(QStringLiteral("Terminal")));
    const QStringList terminal = titles(both.appSets->at(1).buttons);
    QVERIFY(terminal.contains(QStringLiteral("Shell Tab")));
    QCOMPARE(Editing::uniqueTitle(both, QStringLiteral("New Tab")), QStringLiteral("New Tab 2"));
}

void TestEditing::mergeUsesTheFirstSetOfAnApplication()
{
    BarConfig config;
    config.appSets = QList<AppSet>{{QStringLiteral("other"), QStringLiteral("O"), {}},
                                   {QStringLiteral("com.apple.mail"), QStringLiteral("First"), {}},
                                   {QStringLiteral("com.apple.mail"), QStringLiteral("Second"), {}}};
    Presets::merge(config, mail());
    QCOMPARE(config.appSets->size(), 3);
    QCOMPARE(config.appSets->at(1).buttons.size(), 8);
    QVERIFY(config.appSets->at(2).buttons.isEmpty());
}

void TestEditing::stripRemovesPresetButtonsAndRenamedCopies()
{
    BarConfig config;
    config.buttons = {keys(QStringLiteral("Reply"), QStringLiteral("ctrl+r"))};
    Presets::merge(config, mail()); // "Reply" becomes "Reply 2"
    QList<ButtonSpec>& set = config.appSets->first().buttons;
    set.append(keys(QStringLiteral("Reply -3"), QStringLiteral("cmd+r")));   // a numbered copy too
    set.append(keys(QStringLiteral("Reply x"), QStringLiteral("cmd+r")));    // not a numbered copy
    set.append(keys(QStringLiteral("Reply 2 2"), QStringLiteral("cmd+r")));  // two numbers: not a copy
    set.append(keys(QStringLiteral("Junk"), QStringLiteral("shift+cmd+k"))); // does something else
    set.append(keys(QStringLiteral("Mine"), QStringLiteral("cmd+n")));       // another title
    ButtonSpec noArgument = keys(QStringLiteral("Archive"), QString());
    noArgument.argument.reset();
    set.append(noArgument);
    set[5].locked = true; // "Archive" from the preset

    QCOMPARE(Presets::strip(config, mail()), 7 + 1);
    QCOMPARE(titles(config.appSets->first().buttons),
             (QStringList{QStringLiteral("Archive"), QStringLiteral("Reply x"), QStringLiteral("Reply 2 2"),
                          QStringLiteral("Junk"), QStringLiteral("Mine"), QStringLiteral("Archive")}));
    QCOMPARE(Presets::strip(config, mail()), 0);
    // The top-level button of the same title was never part of the set.
    QCOMPARE(config.buttons.size(), 1);

    BarConfig none;
    QCOMPARE(Presets::strip(none, mail()), 0);
    QVERIFY(!none.appSets);
}

void TestEditing::appliedNamesFollowTheSets()
{
    BarConfig config;
    QVERIFY(Presets::appliedNames(config).isEmpty());
    Presets::merge(config, *Presets::named(QStringLiteral("Music")));
    Presets::merge(config, mail());
    // In the presets' own order, whatever the order of the sets.
    QCOMPARE(Presets::appliedNames(config), (QStringList{QStringLiteral("Mail"), QStringLiteral("Music")}));
    QVERIFY(!Presets::named(QStringLiteral("mail")));
}

void TestEditing::frontWindowFindsItsSetByAnyName_data()
{
    QTest::addColumn<QStringList>("sets");
    // own id, class, instance, desktop entry, id
    QTest::addColumn<QStringList>("window");
    QTest::addColumn<int>("shown");

    const QStringList myTool = {QString(), QStringLiteral("MyTool"), QStringLiteral("xterm"),
                                QStringLiteral("debian-xterm"), QStringLiteral("debian-xterm")};
    QTest::newRow("entry of the program") << QStringList{QStringLiteral("debian-xterm")} << myTool << 0;
    QTest::newRow("class, in any case")
        << QStringList{QStringLiteral("other"), QStringLiteral("mytool")} << myTool << 1;
    QTest::newRow("instance") << QStringList{QStringLiteral("XTERM")} << myTool << 0;
    QTest::newRow("class before the program's entry")
        << QStringList{QStringLiteral("debian-xterm"), QStringLiteral("MyTool")} << myTool << 1;
    QTest::newRow("instance before the program's entry")
        << QStringList{QStringLiteral("debian-xterm"), QStringLiteral("xterm")} << myTool << 1;
    QTest::newRow("first of two sets for one name")
        << QStringList{QStringLiteral("MyTool"), QStringLiteral("mytool")} << myTool << 0;
    QTest::newRow("no set names it") << QStringList{QStringLiteral("uxterm")} << myTool << -1;
    QTest::newRow("own id before its class")
        << QStringList{QStringLiteral("Gnome-terminal"), QStringLiteral("org.gnome.Terminal")}
        << QStringList{QStringLiteral("org.gnome.Terminal"), QStringLiteral("Gnome-terminal"),
                       QStringLiteral("gnome-terminal-server"), QStringLiteral("org.gnome.Terminal"),
                       QStringLiteral("org.gnome.Terminal")}
        << 1;
    // VANTRIL_CONTEXT_APP gives an id and nothing else.
    QTest::newRow("fixed id alone") << QStringList{QStringLiteral("x"), QStringLiteral("com.apple.Safari")}
                                    << QStringList{QString(), QString(), QString(), QString(),
                                                   QStringLiteral("com.apple.safari")}
                                    << 1;
}

void TestEditing::frontWindowFindsItsSetByAnyName()
{
    QFETCH(QStringList, sets);
    QFETCH(QStringList, window);
    QFETCH(int, shown);
    BarConfig cfg;
    cfg.appSets.emplace();
    for (qsizetype i = 0; i < sets.size(); ++i)
        cfg.appSets->append(AppSet{sets.at(i), sets.at(i), {keys(QString::number(i), QStringLiteral("a"))}});
    ContextApp app;
    app.ownId = window.at(0);
    app.windowClass = window.at(1);
    app.instance = window.at(2);
    app.desktopEntry = window.at(3);
    app.id = window.at(4);
    app.name = QStringLiteral("Shown");

    QCOMPARE(titles(AppContext::contextButtons(cfg, app)),
             shown < 0 ? QStringList() : QStringList{QString::number(shown)});
    // A button moved into the context goes to the set on show, or to a new one for the application id.
    const qsizetype count = cfg.appSets->size();
    QCOMPARE(AppContext::contextSetIndex(cfg, app, true), shown < 0 ? count : qsizetype(shown));
    if (shown < 0)
        QCOMPARE(cfg.appSets->last().app, app.id);
}

namespace {

/// "A B* S[s1] | Editor: C": the bar's titles (locked ones starred, stacks' members in brackets), then
/// each application's set.
QString layout(const QList<ButtonSpec>& list)
{
    QStringList parts;
    for (const ButtonSpec& spec : list) {
        parts.append(spec.title + (spec.isLocked() ? QStringLiteral("*") : QString()) +
                     (spec.children ? u'[' + layout(*spec.children) + u']' : QString()));
    }
    return parts.join(u' ');
}

QString layout(const BarConfig& cfg)
{
    QString out = layout(cfg.buttons);
    for (const AppSet& set : cfg.appSets.value_or(QList<AppSet>()))
        out += QStringLiteral(" | ") + set.app + QStringLiteral(": ") + layout(set.buttons);
    return out;
}

} // namespace

void TestEditing::buttonCommandsChangeTheDocument_data()
{
    for (const char* column : {"command", "title", "argument", "after", "calls"})
        QTest::addColumn<QString>(column);
    const auto row = [](const char* name, const char* command, const char* title, const char* argument,
                        const char* after, const char* calls = "") {
        QTest::newRow(name) << QString::fromUtf8(command) << QString::fromUtf8(title)
                            << QString::fromUtf8(argument) << QString::fromUtf8(after)
                            << QString::fromUtf8(calls);
    };
    const char* unchanged = "A B* S[s1] | Editor: C";
    row("remove", "remove", "A", "", "B* S[s1] | Editor: C");
    row("a locked button stays, with a beep", "remove", "B", "", unchanged, "beep");
    row("remove from a stack", "remove", "s1", "", "A B* S[] | Editor: C");
    row("lock", "lock", "A", "", "A* B* S[s1] | Editor: C");
    row("unlock", "lock", "B", "", "A B S[s1] | Editor: C");
    row("to the shared bar; the empty set goes", "global", "C", "", "A B* S[s1] C");
    row("into the front application's set", "context", "s1", "", "A B* S[] | Editor: C s1");
    row("edited in place, title kept unique", "edit", "A", "B", "B 2 B* S[s1] | Editor: C");
    row("edited button gone meanwhile", "edit", "Z", "Q", unchanged);
    row("new into a stack", "new", "S", "N", "A B* S[s1 N] | Editor: C");
    row("new into the front application's set", "new", "@context", "N", "A B* S[s1] | Editor: C N");
    row("new for a stack that is gone: onto the bar", "new", "Gone", "A", "A B* S[s1] A 2 | Editor: C");
    row("a locked chip is not dragged", "drag", "B", "", unchanged);
    row("a shared chip dragged past the last one stays shared", "drag", "A", "", "B* S[s1] A | Editor: C");
}

void TestEditing::buttonCommandsChangeTheDocument()
{
    QFETCH(QString, command);
    QFETCH(QString, title);
    QFETCH(QString, argument);
    QFETCH(QString, after);
    QFETCH(QString, calls);
    TempConfigDir dir;
    BarConfig cfg;
    ButtonSpec locked = button(QStringLiteral("B"));
    locked.locked = true;
    ButtonSpec stack = button(QStringLiteral("S"), QStringLiteral("group"));
    stack.children = QList<ButtonSpec>{button(QStringLiteral("s1"))};
    cfg.buttons = {button(QStringLiteral("A")), locked, stack};
    cfg.appSets =
        QList<AppSet>{{QStringLiteral("Editor"), QStringLiteral("Editor"), {button(QStringLiteral("C"))}}};
    ConfigDocument document(cfg);
    FakePlatform platform;
    DragState drag;
    drag.setBarFrames(framesOf(cfg, cfg.appSets->first().buttons));
    ContextTracker context(platform.frontApplication());
    context.fix(ContextApp{QStringLiteral("Editor"), QStringLiteral("Editor")});
    ButtonCommands commands(document, platform, drag, context);

    const ButtonSpec spec = Editing::button(cfg, title).value_or(button(title));
    if (command == u"remove")
        commands.remove(spec);
    else if (command == u"lock")
        commands.toggleLock(spec);
    else if (command == u"global")
        commands.moveToGlobal(spec);
    else if (command == u"context")
        commands.moveToContext(spec);
    else if (command == u"edit")
        commands.saveEdited(button(argument), title, std::nullopt);
    else if (command == u"new")
        commands.saveEdited(button(argument), std::nullopt, title);
    else if (command == u"drag") // past the last chip, the set's C
        commands.dragEnded(spec, bar.topLeft() + QPointF(34 + 88 * 4 + 40, 20), bar);
    QCOMPARE(layout(document.cfg()), after);
    QCOMPARE(platform.calls.join(u' '), calls);
    // Every change is saved as it is made; a refused one writes nothing.
    QCOMPARE(QFile::exists(dir.buttonsJson()), layout(cfg) != after);
    if (layout(cfg) != after)
        QCOMPARE(layout(*ConfigReader::decode(readAll(dir.buttonsJson()))), after);
}

QTEST_APPLESS_MAIN(TestEditing)
#include "tst_editing.moc"
