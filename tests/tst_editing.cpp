// Changing the buttons: by title, by drags and drops, by presets; where a tap leads; the set the front
// window picks.

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
    void findingButtonsByTitle_data();
    void findingButtonsByTitle();

    void barFrameGrowsByEightPixels();
    void whereAPointOnTheBarLeads_data();
    void whereAPointOnTheBarLeads();
    void markerSitsBesideItsNeighbour();
    void draggingFeedbackRespectsLocksAndSets();
    void chipsDroppedAlongTheBarAndIntoStacks_data();
    void chipsDroppedAlongTheBarAndIntoStacks();
    void droppedFilesAndLinksBecomeButtons();
    void buttonCommandsChangeTheDocument_data();
    void buttonCommandsChangeTheDocument();

    void barTapsOpenCloseOrRun();
    void flyoutRowsWalkListingsInPlace();
    void symbolsMapToThemeIcons();
    void savedPositionNeedsBothFractions();

    void everyPresetIsWellFormed();
    void mergeCreatesTheSetAndSkipsWhatIsThere();
    void mergeRenamesTitlesTakenElsewhere();
    void stripRemovesPresetButtonsAndRenamedCopies();
    void frontWindowFindsItsSetByAnyName_data();
    void frontWindowFindsItsSetByAnyName();
};

namespace {

/// "A B* S[s1(red)] | Editor: C": the bar's titles (colours in parentheses, locked ones starred, stacks'
/// members in brackets), then each application's set.
QString layout(const QList<ButtonSpec>& list)
{
    QStringList parts;
    for (const ButtonSpec& spec : list) {
        parts.append(spec.title + (spec.color ? u'(' + *spec.color + u')' : QString()) +
                     (spec.isLocked() ? u"*"_s : QString()) +
                     (spec.children ? u'[' + layout(*spec.children) + u']' : QString()));
    }
    return parts.join(u' ');
}

QString layout(const BarConfig& cfg)
{
    QString out = layout(cfg.buttons);
    for (const AppSet& set : cfg.appSets.value_or(QList<AppSet>()))
        out += u" | "_s + set.app + u": "_s + layout(set.buttons);
    return out;
}

/// An "open" button told apart from others of its title by its symbol.
ButtonSpec symbolled(const QString& title, const QString& symbol)
{
    return ButtonSpec::make(title, symbol, u"open"_s);
}

/// Titles appear in several places on purpose, each copy marked by its symbol.
BarConfig sample()
{
    BarConfig config;
    config.buttons = {
        symbolled(u"A"_s, u"top"_s),
        stackOf(u"S1"_s, {symbolled(u"B"_s, u"s1"_s), stackOf(u"Inner"_s, {button(u"Deep"_s)})}),
        stackOf(u"S2"_s, {symbolled(u"B"_s, u"s2"_s), symbolled(u"C"_s, u"s2"_s)}),
        button(u"Notes"_s),
        button(u"Notes 2"_s),
        button(u"Notes 3"_s),
    };
    config.appSets = QList<AppSet>{
        {u"x"_s,
         u"X"_s,
         {symbolled(u"C"_s, u"set"_s), symbolled(u"A"_s, u"set"_s),
          stackOf(u"SetStack"_s, {button(u"Hidden"_s)})}},
        {u"y"_s, u"Y"_s, {symbolled(u"D"_s, u"set2"_s)}},
    };
    return config;
}

} // namespace

void TestEditing::findingButtonsByTitle_data()
{
    // The call made with each title in turn on one copy of the sample, what it answers each time (a
    // button by its symbol, or by its layout when it has none; "-" for none) and the buttons afterwards.
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("titles"); // separated by "|", as the answers are
    QTest::addColumn<QString>("answers");
    QTest::addColumn<QString>("after");
    const QString untouched =
        u"A S1[B Inner[Deep]] S2[B C] Notes Notes 2 Notes 3 | x: C A SetStack[Hidden] | y: D"_s;
    // The bar first, then its stacks' members, then the sets; never deeper, nor inside a set's stacks.
    QTest::newRow("lookup") << u"button"_s << u"A|B|C|D|Deep|Hidden|a|Inner"_s
                            << u"top|s1|s2|set2|-|-|-|Inner[Deep]"_s << untouched;
    // A stack leaves with its members.
    QTest::newRow("detach takes the first match only")
        << u"detach"_s << u"C|C|C|A|Deep|S1"_s << u"s2|set|-|top|-|S1[B Inner[Deep]]"_s
        << u"S2[B] Notes Notes 2 Notes 3 | x: A SetStack[Hidden] | y: D"_s;
    QTest::newRow("replace overwrites the first match in place")
        << u"replace"_s << u"B|Nobody|Hidden|Deep"_s << u"yes|no|no|no"_s
        << u"A S1[B renamed Inner[Deep]] S2[B C] Notes Notes 2 Notes 3 | x: C A SetStack[Hidden] | y: D"_s;
    QTest::newRow("isContext looks only in the sets")
        << u"isContext"_s << u"C|A|SetStack|Hidden|Notes"_s << u"yes|yes|yes|no|no"_s << untouched;
    // Sets and stacks' members count, deeper titles do not; matching is exact.
    QTest::newRow("unique title") << u"uniqueTitle"_s << u"Fresh|A|D|Inner|Deep|Hidden|notes|Notes|Notes 2"_s
                                  << u"Fresh|A 2|D 2|Inner 2|Deep|Hidden|notes|Notes 4|Notes 2 2"_s
                                  << untouched;
    // A button being renamed may keep its own old title, but not take another's.
    QTest::newRow("unique title but its own")
        << u"uniqueTitle Notes"_s << u"Notes|A"_s << u"Notes|A 2"_s << untouched;
    // The exclusion frees the title itself, however many use it.
    QTest::newRow("unique title but a shared one") << u"uniqueTitle B"_s << u"B"_s << u"B"_s << untouched;
}

void TestEditing::findingButtonsByTitle()
{
    QFETCH(QString, call);
    QFETCH(QString, titles);
    QFETCH(QString, answers);
    QFETCH(QString, after);
    BarConfig config = sample();
    const auto shown = [](const std::optional<ButtonSpec>& spec) {
        return !spec ? u"-"_s : spec->symbol.isEmpty() ? layout(QList{*spec}) : spec->symbol;
    };
    const auto yes = [](bool answer) { return answer ? u"yes"_s : u"no"_s; };
    QStringList got;
    for (const QString& title : titles.split(u'|')) {
        if (call == u"button")
            got << shown(Editing::button(config, title));
        else if (call == u"detach")
            got << shown(Editing::detach(config, title));
        else if (call == u"replace")
            got << yes(Editing::replace(config, title, symbolled(u"B renamed"_s, u"new"_s)));
        else if (call == u"isContext") // and never in a document without sets
            got << yes(Editing::isContext(config, title) && !Editing::isContext(BarConfig(), title));
        else
            got << Editing::uniqueTitle(
                config, title, call.contains(u' ') ? std::optional(call.section(u' ', 1)) : std::nullopt);
    }
    QCOMPARE(got.join(u'|'), answers);
    QCOMPARE(layout(config), after);
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

void TestEditing::whereAPointOnTheBarLeads_data()
{
    // Chips "1" to "5" span 34..114, 122..202, 210..290, 298..378, 386..466; "2" is a stack, "4" an
    // application, and the front application's "Editor" follows at 474..554.
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<QString>("dragged");  // a chip of the bar, left out of the insertion points
    QTest::addColumn<bool>("groups");      // stacks may take it
    QTest::addColumn<bool>("apps");        // applications may open it
    QTest::addColumn<QString>("unframed"); // a chip without a frame, as in the overflow
    QTest::addColumn<QString>("target");
    const auto row = [](const char* name, QPointF point, bool groups, bool apps, const char* target,
                        const char* dragged = "", const char* unframed = "") {
        QTest::newRow(name) << point << QString::fromUtf8(dragged) << groups << apps
                            << QString::fromUtf8(unframed) << QString::fromUtf8(target);
    };
    row("15 above a stack's middle", {162, 6 - 15}, true, false, "into 2");
    row("a stack's outer fifth", {122 + 15.9, 20}, true, false, "insert 1");
    row("a stack's middle begins", {122 + 16, 20}, true, false, "into 2");
    row("the far edge of the middle belongs outside", {202 - 16, 20}, true, false, "insert 2");
    row("a stack dragged onto a stack", {162, 20}, false, false, "insert 1");
    row("an application's middle", {338, 20}, true, true, "open 4");
    row("outside an application's middle 70 %", {298 + 11, 20}, true, true, "insert 3");
    row("an application's own midpoint is not before it", {338, 20}, true, false, "insert 3");
    // The front application's chips can be opened with, but are never insertion points.
    row("the front application's chip", {514, 20}, true, true, "open Editor");
    row("past the front application's chip", {514, 20}, true, false, "insert 5");
    // Slightly within its own slot: the index it already has once taken out.
    row("a dragged chip over its own slot", {220, 20}, true, false, "insert 2", "3");
    row("a dragged chip at the start", {0, 20}, true, false, "insert 0", "3");
    row("a chip without a frame never counts", {1000, 20}, true, false, "insert 4", "", "1");
}

void TestEditing::whereAPointOnTheBarLeads()
{
    QFETCH(QPointF, point);
    QFETCH(QString, dragged);
    QFETCH(bool, groups);
    QFETCH(bool, apps);
    QFETCH(QString, unframed);
    QFETCH(QString, target);
    BarConfig cfg = five();
    cfg.buttons[1].action = u"group"_s;
    cfg.buttons[3].action = u"app"_s;
    const ButtonSpec editor = button(u"Editor"_s, u"app"_s);
    auto frames = framesOf(cfg, {editor});
    frames.remove(unframed);
    const DropTarget hit =
        DropTargets::local(point, dragged.isEmpty() ? std::nullopt : std::optional(dragged), groups, apps,
                           cfg, {editor}, frames);
    using Kind = DropTarget::Kind;
    QCOMPARE(hit.kind == Kind::IntoGroup  ? u"into "_s + hit.title
             : hit.kind == Kind::OpenWith ? u"open "_s + hit.title
             : hit.kind == Kind::InsertAt ? u"insert %1"_s.arg(hit.index)
                                          : u"outside"_s,
             target);
    // An empty bar has only its start.
    QCOMPARE(DropTargets::local(point, std::nullopt, groups, apps, BarConfig(), {}, {}),
             DropTarget::insertAt(0));
}

void TestEditing::markerSitsBesideItsNeighbour()
{
    const BarConfig cfg = five();
    const auto frames = framesOf(cfg);
    using std::nullopt;
    QCOMPARE(DropTargets::feedback(DropTarget::insertAt(0), u"1"_s, nullopt, cfg, frames).markerX,
             std::optional<double>(122 - 4)); // the new first chip is "2"
    QCOMPARE(DropTargets::feedback(DropTarget::insertAt(2), nullopt, nullopt, cfg, frames).markerX,
             std::optional<double>(202 + 4));
    QCOMPARE(DropTargets::feedback(DropTarget::insertAt(0), nullopt, nullopt, BarConfig(), {}).markerX,
             std::optional<double>(8));
    QCOMPARE(DropTargets::feedback(DropTarget::insertAt(1), nullopt, nullopt, cfg, {}).markerX,
             std::optional<double>(4));
    QCOMPARE(DropTargets::feedback(DropTarget::intoGroup(u"S"_s), nullopt, u"S"_s, cfg, frames),
             DropFeedback());
    QCOMPARE(DropTargets::feedback(DropTarget::intoGroup(u"S"_s), nullopt, u"T"_s, cfg, frames),
             (DropFeedback{nullopt, u"S"_s}));
    QCOMPARE(DropTargets::feedback(DropTarget::openWith(u"A"_s), nullopt, nullopt, cfg, frames),
             (DropFeedback{nullopt, u"A"_s}));
    QCOMPARE(DropTargets::feedback(DropTarget::outside(), nullopt, nullopt, cfg, frames), DropFeedback());
}

void TestEditing::draggingFeedbackRespectsLocksAndSets()
{
    BarConfig cfg = five();
    cfg.buttons[0] = stackOf(u"1"_s, {button(u"member"_s)});
    cfg.appSets = QList<AppSet>{{u"x"_s, u"X"_s, {button(u"own"_s)}}};
    const auto frames = framesOf(cfg);
    const QPointF overStack(500 + 74, 820);
    const QPointF betweenChips(500 + 210, 820);

    ButtonSpec locked = cfg.buttons[3];
    locked.locked = true;
    QVERIFY(!DragEditing::dragFeedback(locked, betweenChips, bar, cfg, frames));
    QCOMPARE(DragEditing::dragFeedback(button(u"own"_s), betweenChips, bar, cfg, frames), DropFeedback());
    QCOMPARE(DragEditing::dragFeedback(button(u"own"_s), overStack, bar, cfg, frames)->highlightGroup,
             std::optional<QString>(u"1"_s));
    // A member over its own stack shows nothing; over the bar it shows where it would land.
    QCOMPARE(DragEditing::dragFeedback(button(u"member"_s), overStack, bar, cfg, frames), DropFeedback());
    QVERIFY(DragEditing::dragFeedback(button(u"member"_s), betweenChips, bar, cfg, frames)->markerX);
}

void TestEditing::chipsDroppedAlongTheBarAndIntoStacks_data()
{
    // On the bar "1[m1(red) m2 5] 2[] 3(purple) 4 5 | x: own": a stack whose first member is red, an empty
    // uncoloured one, and the front application's set.
    QTest::addColumn<QString>("dragged");
    QTest::addColumn<QString>("target"); // "at N", "into T" or "outside"
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QString>("after");
    const int changed = int(DragEditing::Outcome::Changed);
    const int unchanged = int(DragEditing::Outcome::Unchanged);
    const QString before = u"1[m1(red) m2 5] 2[] 3(purple) 4 5 | x: own"_s;
    const auto row = [](const char* name, const char* dragged, const char* target, int outcome,
                        const QString& after) {
        QTest::newRow(name) << QString::fromUtf8(dragged) << QString::fromUtf8(target) << outcome << after;
    };
    row("to the front", "3", "at 0", changed, u"3(purple) 1[m1(red) m2 5] 2[] 4 5 | x: own"_s);
    row("to the end", "3", "at 4", changed, u"1[m1(red) m2 5] 2[] 4 5 3(purple) | x: own"_s);
    // Back where it was is still a change to commit.
    row("to its own place", "3", "at 2", changed, before);
    row("outside", "3", "outside", unchanged, before);
    row("a chip that is not there", "ghost", "at 0", unchanged, before);
    // Into a stack the chip goes last, in the colour of the first member; an uncoloured one keeps its own.
    row("into a stack", "4", "into 1", changed, u"1[m1(red) m2 5 4(red)] 2[] 3(purple) 5 | x: own"_s);
    row("into an empty stack", "3", "into 2", changed, u"1[m1(red) m2 5] 2[3(purple)] 4 5 | x: own"_s);
    row("a member onto its own stack", "m2", "into 1", unchanged, before);
    row("a stack into a stack", "2", "into 1", unchanged, before);
    row("a member out onto the bar", "m2", "at 1", changed, u"1[m1(red) 5] m2 2[] 3(purple) 4 5 | x: own"_s);
    // ... unless a top-level button has its title.
    row("a member whose title is on the bar", "5", "at 0", int(DragEditing::Outcome::Refused), before);
    // The front application's buttons only go into stacks.
    row("a set's button onto the bar", "own", "at 0", unchanged, before);
    row("a set's button into a stack", "own", "into 1", changed,
        u"1[m1(red) m2 5 own(red)] 2[] 3(purple) 4 5 | x: "_s);
}

void TestEditing::chipsDroppedAlongTheBarAndIntoStacks()
{
    QFETCH(QString, dragged);
    QFETCH(QString, target);
    QFETCH(int, outcome);
    QFETCH(QString, after);
    ButtonSpec red = button(u"m1"_s);
    red.color = u"red"_s;
    BarConfig cfg = five();
    cfg.buttons[0] = stackOf(u"1"_s, {red, button(u"m2"_s), button(u"5"_s)});
    cfg.buttons[1] = stackOf(u"2"_s);
    cfg.buttons[2].color = u"purple"_s;
    cfg.appSets = QList<AppSet>{{u"x"_s, u"X"_s, {button(u"own"_s)}}};
    const ButtonSpec chip = Editing::button(cfg, dragged).value_or(button(dragged));
    const QString where = target.section(u' ', 1);
    const DropTarget drop = target == u"outside"       ? DropTarget::outside()
                            : target.startsWith(u"at") ? DropTarget::insertAt(where.toInt())
                                                       : DropTarget::intoGroup(where);
    QCOMPARE(int(DragEditing::dropChip(cfg, chip, drop)), outcome);
    QCOMPARE(layout(cfg), after);
}

void TestEditing::droppedFilesAndLinksBecomeButtons()
{
    QTemporaryDir dir;
    const QString folder = dir.filePath(u"Projects"_s);
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(QDir().mkpath(dir.filePath(u"Sketchpad.app"_s)));
    // Installed where the menus look; the same file anywhere else is a stray document.
    qputenv("XDG_DATA_HOME", QFile::encodeName(dir.path()));
    QVERIFY(QDir().mkpath(dir.filePath(u"applications"_s)));
    const QString entry = dir.filePath(u"applications/org.example.Editor.desktop"_s);
    QVERIFY(writeAll(entry, "[Desktop Entry]\nName[de]=Bearbeiter\nName = Fancy Editor\nExec=editor\n"
                            "[Desktop Action new]\nName=New\n"));

    BarConfig cfg = five();
    const ButtonSpec projects = DragEditing::specForFile(folder, cfg);
    QCOMPARE(projects.action, u"folder"_s);
    QCOMPARE(projects.symbol, u"folder"_s);
    QVERIFY(!projects.iconPath);
    const ButtonSpec sketchpad = DragEditing::specForFile(dir.filePath(u"Sketchpad.app"_s), cfg);
    QCOMPARE(sketchpad.title, u"Sketchpad"_s);
    QCOMPARE(sketchpad.action, u"app"_s);
    QCOMPARE(sketchpad.symbol, u"app"_s);
    const ButtonSpec editor = DragEditing::specForFile(entry, cfg);
    QCOMPARE(editor.title, u"Fancy Editor"_s);
    QCOMPARE(editor.argument, std::optional<QString>(entry));
    QCOMPARE(editor.iconPath, std::optional<QString>(entry));
    const QString stray = dir.filePath(u"Editor.desktop"_s);
    QVERIFY(QFile::copy(entry, stray));
    QCOMPARE(DragEditing::specForFile(stray, cfg).action, u"open"_s);
    const ButtonSpec document = DragEditing::specForFile(dir.filePath(u"3"_s), cfg);
    QCOMPARE(document.title, u"3 2"_s); // titles stay unique
    QCOMPARE(document.action, u"open"_s);
    QCOMPARE(Paths::abbreviateHome(QDir::homePath() + u"/Downloads"_s), u"~/Downloads"_s);
    QCOMPARE(Paths::abbreviateHome(QDir::homePath() + u"x/y"_s), QDir::homePath() + u"x/y"_s);

    const QUrl link(u"https://www.example.org/page?q=1"_s);
    QCOMPARE(DragEditing::specForLink(link, cfg).title, u"example.org"_s);
    QCOMPARE(DragEditing::specForLink(link, cfg).argument, std::optional<QString>(link.toString()));
    QCOMPARE(DragEditing::specForLink(QUrl(u"mailto:me@example.org"_s), cfg).title,
             u"mailto:me@example.org"_s);

    // Several items at one insertion point: reverse order. Into a stack: in order, in its colour.
    const QList<QUrl> three = {QUrl::fromLocalFile(dir.filePath(u"A"_s)),
                               QUrl::fromLocalFile(dir.filePath(u"B"_s)), link};
    DragEditing::dropItems(cfg, three, DropTarget::insertAt(1));
    QCOMPARE(titles(cfg.buttons).mid(0, 5), (QStringList{u"1"_s, u"example.org"_s, u"B"_s, u"A"_s, u"2"_s}));
    cfg.buttons[0].action = u"group"_s;
    cfg.buttons[0].color = u"yellow"_s;
    DragEditing::dropItems(cfg, three, DropTarget::intoGroup(u"1"_s));
    QCOMPARE(titles(*cfg.buttons[0].children), (QStringList{u"A 2"_s, u"B 2"_s, u"example.org 2"_s}));
    QCOMPARE(cfg.buttons[0].children->first().color, std::optional<QString>(u"yellow"_s));
    // An uncoloured stack passes on its first member's colour, or its kind's; an empty one none.
    QCOMPARE(DragEditing::stackColour(button(u"s"_s, u"group"_s)), std::nullopt);
    QCOMPARE(DragEditing::stackColour(stackOf(u"s"_s, {button(u"u"_s, u"url"_s)})),
             std::optional<QString>(u"green"_s));
}

namespace {

using Kind = TapRouting::Route::Kind;

} // namespace

void TestEditing::barTapsOpenCloseOrRun()
{
    ButtonSpec stack = button(u"Files"_s, u"group"_s);
    QCOMPARE(TapRouting::onBar(stack, std::nullopt).kind, Kind::OpenStack);
    QVERIFY(TapRouting::onBar(stack, std::nullopt).items.isEmpty()); // no members: an empty flyout
    stack.children = QList<ButtonSpec>{button(u"a"_s, u"open"_s)};
    QCOMPARE(TapRouting::onBar(stack, u"Apps"_s).items.size(), 1);
    QCOMPARE(TapRouting::onBar(stack, u"Files"_s).kind, Kind::CloseFlyout);

    const ButtonSpec folder = button(u"Docs"_s, u"folder"_s, u"~/Documents"_s);
    const auto route = TapRouting::onBar(folder, u"Files"_s);
    QCOMPARE(route.kind, Kind::OpenFolder);
    QCOMPARE(route.path, u"~/Documents"_s);
    QCOMPARE(route.root, std::optional<QString>(u"~/Documents"_s));
    QCOMPARE(route.id, u"Docs"_s);
    QCOMPARE(TapRouting::onBar(folder, u"Docs"_s).kind, Kind::CloseFlyout);
    const auto home = TapRouting::onBar(button(u"Home"_s, u"folder"_s), std::nullopt);
    QCOMPARE(home.path, u"~"_s);
    QVERIFY(!home.root);

    // Everything else runs, even with its own title's flyout open.
    QCOMPARE(TapRouting::onBar(button(u"Help"_s, u"url"_s), u"Help"_s).kind, Kind::Run);
    QCOMPARE(TapRouting::onBar(button(u"x"_s, u"Group"_s), std::nullopt).kind, Kind::Run);

    // A tap asked for by a command hangs from the chip, the chip of its stack, or the first place.
    const BarConfig config = barOf({button(u"Help"_s, u"url"_s), stack});
    const QHash<QString, QRectF> frames{{u"Help"_s, QRectF(12, 0, 60, 40)},
                                        {u"Files"_s, QRectF(80, 0, 70, 40)}};
    QCOMPARE(TapRouting::anchorFor(config, frames, u"Files"_s), QRectF(80, 0, 70, 40));
    QCOMPARE(TapRouting::anchorFor(config, frames, u"a"_s), QRectF(80, 0, 70, 40));
    QCOMPARE(TapRouting::anchorFor(config, frames, u"in a set"_s), QRectF(12, 0, 100, 40));

    // The overflow chip opens its flyout, a second tap closes it; a stack of that name does not count.
    const QList<ButtonSpec> overflowed = {stack, folder};
    const auto overflow = TapRouting::onOverflow(overflowed, u"Files"_s);
    QCOMPARE(overflow.kind, Kind::OpenStack);
    QCOMPARE(overflow.items.size(), 2);
    QCOMPARE(TapRouting::onOverflow(overflowed, TapRouting::overflowId()).kind, Kind::CloseFlyout);
    QCOMPARE(TapRouting::onOverflow(overflowed, overflow.id).kind, Kind::CloseFlyout);
}

void TestEditing::flyoutRowsWalkListingsInPlace()
{
    const ButtonSpec sub = button(u"sub"_s, u"folder"_s, u"/data/sub"_s);
    auto route = TapRouting::inFlyout(sub, u"Docs"_s, u"/data"_s);
    QCOMPARE(route.kind, Kind::OpenFolder);
    QCOMPARE(route.path, u"/data/sub"_s);
    QCOMPARE(route.root, std::optional<QString>(u"/data"_s)); // the walk keeps its root
    QCOMPARE(route.id, u"Docs"_s);

    const ButtonSpec up = button(u"‹ data"_s, u"navigate"_s, u"/data"_s);
    QCOMPARE(TapRouting::inFlyout(up, u"Docs"_s, u"/data"_s).path, u"/data"_s);

    // A folder member of a stack starts a listing rooted at itself.
    route = TapRouting::inFlyout(sub, u"Files"_s, std::nullopt);
    QCOMPARE(route.root, std::optional<QString>(u"/data/sub"_s));
    route = TapRouting::inFlyout(button(u"Home"_s, u"folder"_s), std::nullopt, std::nullopt);
    QCOMPARE(route.path, u"~"_s);
    QCOMPARE(route.id, u"Home"_s);

    QCOMPARE(TapRouting::inFlyout(button(u"a.txt"_s, u"open"_s, u"/a.txt"_s), u"Docs"_s, u"/data"_s).kind,
             Kind::Run);

    // In the overflow's flyout a stack opens its own flyout and a folder its listing, as on the bar.
    const QString overflow = TapRouting::overflowId();
    ButtonSpec stack = button(u"Files"_s, u"group"_s);
    stack.children = QList<ButtonSpec>{button(u"a"_s, u"open"_s)};
    route = TapRouting::inFlyout(stack, overflow, std::nullopt);
    QCOMPARE(route.kind, Kind::OpenStack);
    QCOMPARE(route.id, u"Files"_s);
    route = TapRouting::inFlyout(sub, overflow, std::nullopt);
    QCOMPARE(route.kind, Kind::OpenFolder);
    QCOMPARE(route.id, u"sub"_s);
    QCOMPARE(route.root, std::optional<QString>(u"/data/sub"_s));
}

void TestEditing::symbolsMapToThemeIcons()
{
    // Symbolic icons first; a theme's own name is tried too, for users who know their icon theme. What
    // stays text is tst_views'.
    QCOMPARE(SymbolNames::iconNames(u"folder"_s).first(), u"folder-symbolic"_s);
    QVERIFY(SymbolNames::iconNames(u"firefox"_s).contains(u"firefox"_s));
}

void TestEditing::savedPositionNeedsBothFractions()
{
    QTemporaryDir xdg;
    qputenv("XDG_CONFIG_HOME", xdg.path().toLocal8Bit());
    const QString ini = xdg.filePath(u"vantril/vantril.ini"_s);
    QVERIFY(QDir().mkpath(xdg.filePath(u"vantril"_s)));
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

const AppPreset& mail()
{
    return *Presets::named(u"Mail"_s);
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
            ButtonSpec plain =
                ButtonSpec::make(button.title, button.symbol, u"keys"_s, button.argument.value_or(QString()));
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
    QCOMPARE(set.app, u"com.apple.mail"_s);
    QCOMPARE(set.name, u"Mail"_s);
    QCOMPARE(set.buttons, mail().buttons);
    QCOMPARE(Presets::merge(config, mail()), 0);

    // Matching is by what the button does, not by its title.
    BarConfig custom;
    custom.appSets =
        QList<AppSet>{{u"com.apple.mail"_s, u"My Mail"_s, {button(u"Answer"_s, u"keys"_s, u"cmd+r"_s)}}};
    QCOMPARE(Presets::merge(custom, mail()), 7);
    QCOMPARE(custom.appSets->first().name, u"My Mail"_s);
    QCOMPARE(custom.appSets->first().buttons.first().title, u"Answer"_s);
    QVERIFY(!titles(custom.appSets->first().buttons).contains(u"Reply"_s));

    // Into the first set of the application when it has several.
    BarConfig several;
    several.appSets = QList<AppSet>{{u"other"_s, u"O"_s, {}},
                                    {u"com.apple.mail"_s, u"First"_s, {}},
                                    {u"com.apple.mail"_s, u"Second"_s, {}}};
    Presets::merge(several, mail());
    QCOMPARE(several.appSets->size(), 3);
    QCOMPARE(several.appSets->at(1).buttons.size(), 8);
    QVERIFY(several.appSets->at(2).buttons.isEmpty());

    // Named as applied in the presets' own order, whatever the order of the sets; names are exact.
    BarConfig applied;
    QVERIFY(Presets::appliedNames(applied).isEmpty());
    Presets::merge(applied, *Presets::named(u"Music"_s));
    Presets::merge(applied, mail());
    QCOMPARE(Presets::appliedNames(applied), (QStringList{u"Mail"_s, u"Music"_s}));
    QVERIFY(!Presets::named(u"mail"_s));
}

void TestEditing::mergeRenamesTitlesTakenElsewhere()
{
    BarConfig config =
        barOf({button(u"Reply"_s, u"keys"_s, u"ctrl+r"_s), button(u"Flag"_s, u"keys"_s, u"ctrl+f"_s)});
    Presets::merge(config, mail());
    const QStringList setTitles = titles(config.appSets->first().buttons);
    QVERIFY(setTitles.contains(u"Reply 2"_s));
    QVERIFY(setTitles.contains(u"Flag 2"_s));
    QVERIFY(setTitles.contains(u"Reply All"_s));

    // Two presets with shared titles ("New Chat" does not clash, "Search Chats" neither, "Details" is new).
    BarConfig both;
    Presets::merge(both, *Presets::named(u"Safari"_s));
    Presets::merge(both, *Presets::named(u"Terminal"_s));
    const QStringList terminal = titles(both.appSets->at(1).buttons);
    QVERIFY(terminal.contains(u"Shell Tab"_s));
    QCOMPARE(Editing::uniqueTitle(both, u"New Tab"_s), u"New Tab 2"_s);
}

void TestEditing::stripRemovesPresetButtonsAndRenamedCopies()
{
    BarConfig config = barOf({button(u"Reply"_s, u"keys"_s, u"ctrl+r"_s)});
    Presets::merge(config, mail()); // "Reply" becomes "Reply 2"
    QList<ButtonSpec>& set = config.appSets->first().buttons;
    set.append(button(u"Reply -3"_s, u"keys"_s, u"cmd+r"_s));   // a numbered copy too
    set.append(button(u"Reply x"_s, u"keys"_s, u"cmd+r"_s));    // not a numbered copy
    set.append(button(u"Reply 2 2"_s, u"keys"_s, u"cmd+r"_s));  // two numbers: not a copy
    set.append(button(u"Junk"_s, u"keys"_s, u"shift+cmd+k"_s)); // does something else
    set.append(button(u"Mine"_s, u"keys"_s, u"cmd+n"_s));       // another title
    set.append(button(u"Archive"_s, u"keys"_s));
    set[5].locked = true; // "Archive" from the preset

    QCOMPARE(Presets::strip(config, mail()), 7 + 1);
    QCOMPARE(titles(config.appSets->first().buttons),
             (QStringList{u"Archive"_s, u"Reply x"_s, u"Reply 2 2"_s, u"Junk"_s, u"Mine"_s, u"Archive"_s}));
    QCOMPARE(Presets::strip(config, mail()), 0);
    // The top-level button of the same title was never part of the set.
    QCOMPARE(config.buttons.size(), 1);

    BarConfig none;
    QCOMPARE(Presets::strip(none, mail()), 0);
    QVERIFY(!none.appSets);
}

void TestEditing::frontWindowFindsItsSetByAnyName_data()
{
    QTest::addColumn<QStringList>("sets");
    // own id, class, instance, desktop entry, id
    QTest::addColumn<QStringList>("window");
    QTest::addColumn<int>("shown");

    const QStringList myTool = {QString(), u"MyTool"_s, u"xterm"_s, u"debian-xterm"_s, u"debian-xterm"_s};
    QTest::newRow("entry of the program") << QStringList{u"debian-xterm"_s} << myTool << 0;
    QTest::newRow("class, in any case") << QStringList{u"other"_s, u"mytool"_s} << myTool << 1;
    QTest::newRow("instance") << QStringList{u"XTERM"_s} << myTool << 0;
    QTest::newRow("class before the program's entry")
        << QStringList{u"debian-xterm"_s, u"MyTool"_s} << myTool << 1;
    QTest::newRow("instance before the program's entry")
        << QStringList{u"debian-xterm"_s, u"xterm"_s} << myTool << 1;
    QTest::newRow("first of two sets for one name") << QStringList{u"MyTool"_s, u"mytool"_s} << myTool << 0;
    QTest::newRow("no set names it") << QStringList{u"uxterm"_s} << myTool << -1;
    QTest::newRow("own id before its class")
        << QStringList{u"Gnome-terminal"_s, u"org.gnome.Terminal"_s}
        << QStringList{u"org.gnome.Terminal"_s, u"Gnome-terminal"_s, u"gnome-terminal-server"_s,
                       u"org.gnome.Terminal"_s, u"org.gnome.Terminal"_s}
        << 1;
    // VANTRIL_CONTEXT_APP gives an id and nothing else.
    QTest::newRow("fixed id alone") << QStringList{u"x"_s, u"com.apple.Safari"_s}
                                    << QStringList{QString(), QString(), QString(), QString(),
                                                   u"com.apple.safari"_s}
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
        cfg.appSets->append(AppSet{sets.at(i), sets.at(i), {button(QString::number(i), u"keys"_s, u"a"_s)}});
    const ContextApp app{window[4], u"Shown"_s, false, window[0], window[1], window[2], window[3]};

    QCOMPARE(titles(AppContext::contextButtons(cfg, app)),
             shown < 0 ? QStringList() : QStringList{QString::number(shown)});
    // A button moved into the context goes to the set on show, or to a new one for the application id.
    const qsizetype count = cfg.appSets->size();
    QCOMPARE(AppContext::contextSetIndex(cfg, app, true), shown < 0 ? count : qsizetype(shown));
    if (shown < 0)
        QCOMPARE(cfg.appSets->last().app, app.id);
}

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
    ButtonSpec locked = button(u"B"_s);
    locked.locked = true;
    cfg.buttons = {button(u"A"_s), locked, stackOf(u"S"_s, {button(u"s1"_s)})};
    cfg.appSets = QList<AppSet>{{u"Editor"_s, u"Editor"_s, {button(u"C"_s)}}};
    ConfigDocument document(cfg);
    FakePlatform platform;
    DragState drag;
    drag.setBarFrames(framesOf(cfg, cfg.appSets->first().buttons));
    ContextTracker context(platform.frontApplication());
    context.fix(AppContext::fromEnvironment(u"Editor|Editor"_s));
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
