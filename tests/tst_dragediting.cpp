#include "TestSupport.h"
#include "actions/Paths.h"
#include "app/ButtonCommands.h"
#include "app/ContextTracker.h"
#include "config/ConfigReader.h"
#include "config/Editing.h"
#include "dragdrop/DragEditing.h"
#include "dragdrop/DragState.h"
#include "dragdrop/DropTarget.h"
#include "platform/fake/FakePlatform.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

class TestDragEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void barFrameGrowsByEightPixels();
    void stackMiddlesAndApplicationMiddles();
    void insertionIgnoresTheDraggedChip();
    void markerSitsBesideItsNeighbour();
    void draggingFeedbackRespectsLocksAndSets();
    void reorderingAlongTheBar();
    void movingIntoAndOutOfStacks();
    void droppedFilesAndLinksBecomeButtons();
    void buttonCommandsChangeTheDocument_data();
    void buttonCommandsChangeTheDocument();
};

namespace {

ButtonSpec button(const QString& title, const QString& action = QStringLiteral("open"))
{
    ButtonSpec spec;
    spec.title = title;
    spec.action = action;
    return spec;
}

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

QStringList titles(const QList<ButtonSpec>& list)
{
    QStringList out;
    for (const ButtonSpec& spec : list)
        out.append(spec.title);
    return out;
}

const QRectF bar(500, 800, 500, 40);

} // namespace

void TestDragEditing::barFrameGrowsByEightPixels()
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

void TestDragEditing::stackMiddlesAndApplicationMiddles()
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

void TestDragEditing::insertionIgnoresTheDraggedChip()
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

void TestDragEditing::markerSitsBesideItsNeighbour()
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

void TestDragEditing::draggingFeedbackRespectsLocksAndSets()
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

void TestDragEditing::reorderingAlongTheBar()
{
    BarConfig cfg = five();
    const ButtonSpec third = cfg.buttons[2];
    QCOMPARE(DragEditing::dropChip(cfg, third, DropTarget::insertAt(0)), DragEditing::Outcome::Changed);
    QCOMPARE(titles(cfg.buttons), (QStringList{QStringLiteral("3"), QStringLiteral("1"), QStringLiteral("2"),
                                               QStringLiteral("4"), QStringLiteral("5")}));
    cfg = five();
    QCOMPARE(DragEditing::dropChip(cfg, third, DropTarget::insertAt(4)), DragEditing::Outcome::Changed);
    QCOMPARE(titles(cfg.buttons), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("4"),
                                               QStringLiteral("5"), QStringLiteral("3")}));
    cfg = five();
    QCOMPARE(DragEditing::dropChip(cfg, third, DropTarget::insertAt(2)), DragEditing::Outcome::Changed);
    QCOMPARE(cfg, five()); // back where it was, still a change to commit
    QCOMPARE(DragEditing::dropChip(cfg, third, DropTarget::outside()), DragEditing::Outcome::Unchanged);
    QCOMPARE(DragEditing::dropChip(cfg, button(QStringLiteral("ghost")), DropTarget::insertAt(0)),
             DragEditing::Outcome::Unchanged);
}

void TestDragEditing::movingIntoAndOutOfStacks()
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

void TestDragEditing::droppedFilesAndLinksBecomeButtons()
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

QTEST_APPLESS_MAIN(TestDragEditing)
#include "tst_dragediting.moc"

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

void TestDragEditing::buttonCommandsChangeTheDocument_data()
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

void TestDragEditing::buttonCommandsChangeTheDocument()
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
