// The real program against a real X server and window manager (openbox unless VANTRIL_TEST_WM names
// another), driven and watched from the outside as a user and the window manager see it, one seam of
// the desktop each: where the bar sits and stays, what it tells the window manager and what clicks on it
// leave alone, drags of its chips, drops from another program, the front application's set, hand edits
// and the button editor, auto-hide, the hot key, files that are programs, and the command line reaching
// the running bar. Runs inside tests/x11/with-x-session.sh; every test starts its own copy of the
// program with folders of its own.

#include "RunningBar.h"
#include "app/InstancePaths.h"
#include "app/MenuModel.h"
#include "bar/BarView.h"
#include "bar/RunQuestionBox.h"
#include "platform/x11/XcbHandles.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMessageBox>
#include <QRegion>
#include <QScreen>
#include <QTest>
#include <cstdio>
#include <sys/stat.h>
#include <xcb/shape.h>

namespace {

const QString testWindow = QStringLiteral(TESTWINDOW_BINARY);

/// Away from where the bar will be, so that nothing is hovered or rested on by accident.
const QPoint away(screenWidth / 2, 100);

/// How long the pointer may be away before the bar has faded out, and resting on its place before it
/// is back: ten ticks of 150 ms and a 200 ms fade, two ticks and a fade, with room for a busy machine.
constexpr int hideWithinMs = 2000;
constexpr int showWithinMs = 2000;

const QString hotKeyTaken =
    u"Hot key ctrl+alt+b is taken by another program; bind `vantril --toggle` in your "
    "desktop's keyboard settings instead"_s;

bool numLockOn()
{
    return output(u"xset"_s, {u"q"_s}).contains(QRegularExpression(u"Num Lock:\\s+on\\b"_s));
}

/// One of the window's shapes, in window coordinates.
QRegion shapeOf(quintptr window, xcb_shape_kind_t kind)
{
    const auto reply = adoptReply(xcb_shape_get_rectangles_reply(
        connection(), xcb_shape_get_rectangles(connection(), xcb_window_t(window), kind), nullptr));
    QRegion region;
    const xcb_rectangle_t* rectangles = reply ? xcb_shape_get_rectangles_rectangles(reply.get()) : nullptr;
    for (int i = 0; reply && i < xcb_shape_get_rectangles_rectangles_length(reply.get()); ++i)
        region += QRect(rectangles[i].x, rectangles[i].y, rectangles[i].width, rectangles[i].height);
    return region;
}

/// Shown: opaque, drawn and taking clicks over its middle. Hidden, as auto-hide and the hot key hide:
/// faded out, letting every click through, and where no compositor makes the fade visible, cut away.
bool shownAs(quintptr bar, bool shown)
{
    const QList<quint32> opacity = values(bar, "_NET_WM_WINDOW_OPACITY");
    const QRect inside(QPoint(0, 0), frameOf(bar).size());
    const QRegion input = shapeOf(bar, XCB_SHAPE_SK_INPUT), drawn = shapeOf(bar, XCB_SHAPE_SK_BOUNDING);
    if (shown)
        return (opacity.isEmpty() || opacity == QList<quint32>{0xffffffffu}) &&
               input.contains(inside.center()) && drawn.contains(inside.center());
    return opacity == QList<quint32>{0} && !inside.isEmpty() && input.isEmpty() &&
           (isCompositing() || !drawn.intersects(inside));
}

/// Bars on screen, whichever process shows them.
qsizetype barsShown()
{
    const QList<quintptr> windows = topLevelWindows();
    return std::count_if(windows.begin(), windows.end(), [](quintptr window) {
        return windowName(window) == u"Vantril"_s && isViewable(window);
    });
}

/// A command line run to its end: how it ended, what it complained, how long it took.
struct Ran
{
    int status = -1;
    QString err;
    qint64 ms = 0;
};

Ran run(const TestHome& home, const QStringList& arguments)
{
    QProcess process;
    process.setProcessEnvironment(home.environment(withoutFrontApp()));
    QElapsedTimer clock;
    clock.start();
    process.start(QStringLiteral(VANTRIL_BINARY), arguments);
    if (!process.waitForFinished(windowTimeoutMs) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardError()), clock.elapsed()};
}

/// Whether the window holds white at a point of the screen, as the X server has it: the drop marker and
/// a chip's highlight are white, and nothing else on the bar is. Read from the window itself: a rootless
/// XWayland's root window holds none of what is shown.
bool whiteAt(quintptr window, const QPoint& global)
{
    const QPoint local = global - frameOf(window).topLeft();
    const QColor colour = QGuiApplication::primaryScreen()
                              ->grabWindow(window, local.x(), local.y(), 1, 1)
                              .toImage()
                              .pixelColor(0, 0);
    return colour.isValid() && colour.red() >= 235 && colour.green() >= 235 && colour.blue() >= 235;
}

/// Drags `files` from another program's window over XDND to `target` on the bar, and drops them there
/// once the bar shows that it takes the drag by turning `feedback` white.
bool dropFiles(const RunningBar& vantril, const QStringList& files, const QPoint& target,
               const QPoint& feedback)
{
    if (whiteAt(vantril.bar(), feedback)) {
        qWarning("white at %d,%d before any drag", feedback.x(), feedback.y());
        return false;
    }
    TestProcess source(testWindow, QStringList{u"drag"_s} + files);
    const auto window = source.waitForWindow(u"dragsource"_s);
    // A tiling manager gives it the whole screen, under the bar: the drag only has to start off the bar.
    if (!window || vantril.frame().contains(frameOf(*window).center()))
        return false;
    QString said;
    const auto saidCount = [&](const char* word) {
        said += QString::fromUtf8(source.process().readAllStandardOutput());
        return said.count(QLatin1String(word));
    };
    const QPoint start = frameOf(*window).center();
    if (!xdotool(moveArguments(start) + QStringList{u"mousedown"_s, u"1"_s}) ||
        !waitFor([&] { return saidCount("started") > 0; }))
        return false;
    QStringList steps;
    for (const QPoint& point : pathBetween(start, target, 12))
        steps += moveArguments(point);
    xdotool(steps);
    // The source sends a new position only after the target has answered the last one; a pointer that
    // keeps still might leave the final position unsent. A one-pixel wiggle that ends on the target
    // brings it along.
    const bool shown = waitFor(
        [&] {
            const bool white = whiteAt(vantril.bar(), feedback);
            if (!white)
                xdotool(moveArguments(target + QPoint(1, 0)) + moveArguments(target));
            return white;
        },
        windowTimeoutMs, 100);
    if (!shown)
        qWarning("the program showed no drop feedback at %d,%d", target.x(), target.y());
    return xdotool({u"mouseup"_s, u"1"_s}) && waitFor([&] { return saidCount("finished") > 0; }) && shown;
}

/// Files a user may meet in a download folder that run if anything starts them, each leaving
/// markerOf(path) behind when it does: a shell script with an execute bit, an ELF at --x--x--x, a
/// desktop entry at 0644 whose Exec makes the marker, and a FIFO named like a desktop entry, which
/// nothing can start and which hangs whoever reads it.
const QStringList strays = {u"invoice.pdf.sh"_s, u"tool"_s, u"invoice.desktop"_s, u"x.desktop"_s};

QString markerOf(const QString& path)
{
    return path + u".ran"_s;
}

/// Makes stray `name` in `folder`; its path, or nothing when it could not be made.
QString makeStray(const QString& name, const QString& folder)
{
    const QString path = QDir(folder).filePath(name);
    if (name == u"x.desktop"_s)
        return ::mkfifo(QFile::encodeName(path).constData(), 0644) == 0 ? path : QString();
    // The script's marker holds what it found in QT_QPA_PLATFORM: the bar's own choice must not reach it.
    const bool made =
        name == u"tool"_s ? QFile::copy(testWindow, path)
        : name.endsWith(u".sh"_s)
            ? writeAll(path, "#!/bin/sh\nprintf '%s' \"${QT_QPA_PLATFORM-unset}\" > \"$0.ran\"\n")
            : writeAll(path, u"[Desktop Entry]\nType=Application\nName=Invoice\nExec=touch %1\n"_s
                                 .arg(markerOf(path))
                                 .toUtf8());
    const mode_t mode = name == u"tool"_s ? 0111 : name.endsWith(u".sh"_s) ? 0755 : 0644;
    return made && ::chmod(QFile::encodeName(path).constData(), mode) == 0 ? path : QString();
}

/// Writes a desktop entry into the session's applications folder; its path.
QString installApplication(const QString& id, const QString& name, const QString& exec)
{
    const QDir applications(qEnvironmentVariable("XDG_DATA_HOME") + u"/applications"_s);
    const QString entry = applications.filePath(id + u".desktop"_s);
    const bool made =
        applications.mkpath(u"."_s) &&
        writeAll(entry, u"[Desktop Entry]\nType=Application\nName=%1\nExec=%2\n"_s.arg(name, exec).toUtf8());
    return made ? entry : QString();
}

/// Where the Run button sits in the question the program asks about `name`, and how large the question
/// is: the same question asked in this process, with the program's style and fonts, then put away again
/// so that it covers nothing.
std::pair<QSize, QPoint> runButtonIn(const QString& name)
{
    std::pair<QSize, QPoint> found;
    quintptr window = 0;
    {
        RunQuestionBox question;
        question.ask(name, [](RunQuestion::Answer) {});
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(widget);
            for (QAbstractButton* button : box ? box->buttons() : QList<QAbstractButton*>()) {
                if (button->text() == u"Run"_s) {
                    found = {box->size(), button->mapTo(box, button->rect().center())};
                    window = box->winId();
                }
            }
        }
    }
    waitFor([&] { return frameOf(window).isEmpty(); });
    return found;
}

} // namespace

class TestBarEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_home = std::make_unique<TestHome>(); }
    void cleanup();

    void placeIsKeptAcrossRestarts();
    void barIsADockThatNeverTakesFocus();
    void startUpAndProbeTellHowFarFacilitiesReach();
    void chipsMoveByDragging();
    void dropsFromAnotherProgram();
    void frontApplicationChoosesTheSet();
    void handEditsReachTheBar();
    void editorTakesFocusAndSaves();
    void autoHideLetsClicksThroughAndRestBringsItBack();
    void hotKeyTogglesAlsoWithNumLock();
    void programsAskBeforeTheyRun_data();
    void programsAskBeforeTheyRun();
    void oneBarPerFolderTakesCommands();

private:
    std::unique_ptr<TestHome> m_home;
};

void TestBarEndToEnd::initTestCase()
{
    QVERIFY(onSessionScreen());
    QVERIFY2(!numLockOn(), "Num Lock is on before any test turned it on");
}

void TestBarEndToEnd::cleanup()
{
    // The lock state belongs to the server, which the next test shares.
    if (numLockOn()) {
        keys({u"Num_Lock"_s});
        waitFor([] { return !numLockOn(); }, 5000);
    }
    m_home.reset();
}

void TestBarEndToEnd::placeIsKeptAcrossRestarts()
{
    const auto near = [](const QPoint& a, const QPoint& b) {
        return qAbs(a.x() - b.x()) <= 1 && qAbs(a.y() - b.y()) <= 1;
    };
    QRect moved;
    {
        RunningBar first(*m_home);
        QVERIFY2(first.waitForBar(), "no bar window appeared");
        const quintptr bar = first.bar();
        // Centred, 6 pixels above the bottom of what panels leave free.
        const QRect area = workArea();
        const QPoint start(qRound(area.x() + area.width() / 2.0 - first.frame().width() / 2.0),
                           area.bottom() + 1 - 6 - BarView::barHeight);
        QVERIFY2(waitFor([&] {
                     return near(frameOf(bar).topLeft(), start) &&
                            frameOf(bar).height() == BarView::barHeight;
                 }),
                 qPrintable(describe(frameOf(bar))));

        // Up into the top half of the screen by the grip: the window follows the pointer, and a stack
        // opens below it now.
        const QPoint offset(-100, -600);
        QVERIFY(dragAlong(pathBetween(first.grip(), first.grip() + offset, 20)));
        QVERIFY2(
            waitFor([&] { return (moved = frameOf(bar)).topLeft() == first.frame().topLeft() + offset; }),
            qPrintable(describe(moved)));
        QVERIFY(first.waitForWidth(moved.width()));
        const auto flyout = first.openFlyout(u"Files"_s);
        QVERIFY2(
            flyout && waitFor([&] { return frameOf(*flyout).y() == moved.bottom() + 1 + 4; }),
            qPrintable(u"flyout %1, bar %2"_s.arg(describe(frameOf(flyout.value_or(0))), describe(moved))));
        // The place is saved a moment after the move; stopping earlier would lose it.
        QVERIFY2(waitFor([&] { return readAll(m_home->preferencesFile()).contains("[barPosition]"); }),
                 "the new place was never saved");
        first.stop(true);
    }

    RunningBar second(*m_home);
    QVERIFY2(second.waitForBar(), "no bar window appeared after the restart");
    QVERIFY2(waitFor([&] { return near(frameOf(second.bar()).topLeft(), moved.topLeft()); }),
             qPrintable(describe(frameOf(second.bar())) + u", left at "_s + describe(moved)));
}

void TestBarEndToEnd::barIsADockThatNeverTakesFocus()
{
    const QString text = m_home->path(u"text.txt"_s);
    TestProcess probe(testWindow, {u"keys"_s, m_home->path(u"presses.txt"_s), text});
    const auto client = probe.waitForWindow(u"keyprobe"_s, true);
    QVERIFY2(client, "keyprobe did not become the active window");
    BarConfig config = Config::defaults();
    config.buttons +=
        {button(u"Shout"_s, u"keys"_s, u"shift+h"_s), button(u"Greet"_s, u"paste"_s, u"hello"_s)};
    RunningBar vantril(*m_home, config);
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    const quintptr bar = vantril.bar();
    QCOMPARE(activeWindow(), *client); // showing the bar takes nothing

    // A dock on every workspace, above other windows and off the taskbar and pager, as far as the window
    // manager supports that (managers rewrite the state themselves and leave out what they do not). A
    // manager without stacking layers tiles and focuses what it manages: there nobody manages the bar.
    QVERIFY(values(bar, "_NET_WM_WINDOW_TYPE").contains(atom("_NET_WM_WINDOW_TYPE_DOCK")));
    QCOMPARE(isOverrideRedirect(bar), !supportsHint("_NET_WM_STATE_ABOVE"));
    for (const char* wanted : {"_NET_WM_STATE_ABOVE", "_NET_WM_STATE_STICKY", "_NET_WM_STATE_SKIP_TASKBAR",
                               "_NET_WM_STATE_SKIP_PAGER"})
        QVERIFY2(!supportsHint(wanted) || values(bar, "_NET_WM_STATE").contains(atom(wanted)), wanted);
    QVERIFY(refusesFocus(bar));

    // A tap opens the stack above its chip; the flyout's margin does nothing; the chip again closes it.
    const QRect frame = vantril.frame();
    const auto flyout = vantril.openFlyout(u"Files"_s);
    QVERIFY2(flyout, "the click opened no flyout");
    const auto hangsFromFiles = [&] {
        const QRect hung = frameOf(*flyout);
        return qAbs(hung.x() + hung.width() / 2.0 - vantril.chip(u"Files"_s).x()) <= 2 &&
               hung.bottom() + 1 == frame.y() - 4;
    };
    QVERIFY2(waitFor(hangsFromFiles), qPrintable(describe(frameOf(*flyout)) + u", bar "_s + describe(frame)));
    QVERIFY(waitUntilDrawn(frameOf(*flyout)));
    QVERIFY(clickAt(frameOf(*flyout).topLeft() + QPoint(frameOf(*flyout).width() / 2, 3)));
    QVERIFY(clickAt(vantril.chip(u"Files"_s)));
    QVERIFY2(waitFor([&] { return !vantril.shownFlyout(); }), "the second tap on Files left the flyout open");
    // Key and paste chips type into the window in front, which keeps the keyboard throughout.
    QVERIFY(clickAt(vantril.chip(u"Shout"_s)));
    QVERIFY2(waitFor([&] { return readAll(text) == "H"; }), readAll(text).constData());
    QVERIFY(clickAt(vantril.chip(u"Greet"_s)));
    QVERIFY2(waitFor([&] { return readAll(text) == "Hhello"; }), readAll(text).constData());
    QCOMPARE(activeWindow(), *client);
    // A click into another application closes the stack too: into its middle, which a tiling manager's
    // full-screen tile has under the bar and the flyout too.
    QVERIFY(vantril.openFlyout(u"Files"_s));
    const QPoint elsewhere = frameOf(*client).center();
    QVERIFY(!frameOf(*vantril.shownFlyout()).contains(elsewhere) && !frame.contains(elsewhere));
    QVERIFY(clickAt(elsewhere));
    QVERIFY2(waitFor([&] { return !vantril.shownFlyout(); }), "a click elsewhere left the flyout open");

    // Above an application window that covers its place and is active.
    const QString id = QString::number(*client);
    xdotool({u"windowmove"_s, id, QString::number(frame.x() - 20), QString::number(frame.y() - 60)});
    xdotool({u"windowsize"_s, id, QString::number(frame.width() + 40), u"200"_s});
    QVERIFY2(waitFor([&] { return frameOf(*client).intersects(frame); }),
             qPrintable(describe(frameOf(*client))));
    QVERIFY(xdotool({u"windowactivate"_s, u"--sync"_s, id}));
    QVERIFY2(waitFor([&] { return isStackedAbove(bar, *client); }), "the bar is below the active window");
    // Nobody else stacks a bar that nobody manages: it climbs back over a window raised above it.
    if (isOverrideRedirect(bar)) {
        raiseFrameToTop(*client);
        QVERIFY2(waitFor([&] { return isStackedAbove(bar, *client); }),
                 "the bar stayed below a raised window");
    }
    // On every workspace, at the same place.
    QVERIFY(switchWorkspace(1));
    QVERIFY2(waitFor([&] { return isViewable(bar) && frameOf(bar) == frame; }),
             qPrintable(describe(frameOf(bar))));
    QVERIFY(switchWorkspace(0));
}

void TestBarEndToEnd::startUpAndProbeTellHowFarFacilitiesReach()
{
    // tests/wayland/with-wayland-session.sh runs XWayland under a compositor: mutter as GNOME's session
    // has it, or weston, which names no desktop. Every other session is an X11 one. tst_shell holds the
    // wording; here the program finds out by itself where it runs and what the display offers.
    const QString compositor = qEnvironmentVariable("VANTRIL_TEST_COMPOSITOR");
    const bool wayland = !compositor.isEmpty();
    RunningBar vantril(*m_home);
    const auto said = [&] { return vantril.log().count(u"In this Wayland session "_s); };
    // Said while starting, before the bar is mapped. (Weston lists no client windows to find it by.)
    if (wayland)
        QVERIFY2(waitFor([&] { return said() >= 4; }), qPrintable(vantril.log()));
    else
        QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    QCOMPARE(said(), wayland ? 4 : 0);

    QProcess probe;
    QProcessEnvironment variables = m_home->environment();
    variables.insert(u"TMPDIR"_s, m_home->path(QString()));
    probe.setProcessEnvironment(variables);
    probe.start(QStringLiteral(VANTRIL_BINARY), {u"--probe"_s});
    QVERIFY(probe.waitForFinished(60000));
    const QString report = QString::fromUtf8(probe.readAllStandardOutput());
    const QString reach = wayland ? u"X11 windows only"_s : u"all windows"_s;
    QStringList expected = {wayland ? u"session: Wayland%1, through XWayland\n"_s.arg(
                                          compositor == u"mutter"_s ? u" (GNOME)"_s : QString())
                                    : u"session: X11\n"_s,
                            u"hot key grab: yes"_s + (wayland ? u" (X11 windows only)\n"_s : u"\n"_s)};
    for (const char* facility :
         {"hot key", "key and paste chips", "click elsewhere and auto-hide", "application sets"})
        expected.append(u"\n%1: %2"_s.arg(QLatin1String(facility), reach));
    for (const QString& line : expected)
        QVERIFY2(report.contains(line), qPrintable(line + u" is not in:\n"_s + report));
}

void TestBarEndToEnd::chipsMoveByDragging()
{
    const ButtonSpec m1 = button(u"m1"_s), m2 = button(u"m2"_s);
    RunningBar vantril(
        *m_home, barOf({button(u"1"_s), button(u"2"_s), stackOf(u"Stack"_s, {m1, m2}), button(u"3"_s)}));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");

    // Along the bar to its left end: moved, not copied or changed.
    QByteArray before = m_home->buttons();
    QVERIFY(dragAlong(
        pathBetween(vantril.chip(u"3"_s), vantril.frame().topLeft() + QPoint(4, BarView::barHeight / 2))));
    QVERIFY2(vantril.waitForSave(before), "the drag to the left end changed nothing");
    QCOMPARE(vantril.saved().buttons.value(0), button(u"3"_s));
    QCOMPARE(titles(vantril.saved().buttons), (QStringList{u"3"_s, u"1"_s, u"2"_s, u"Stack"_s}));

    // Out of the open stack, its second row, onto the bar. While a flyout is open the program learns of
    // presses anywhere on the desktop, and takes the pointer's place when it reads one for where the press
    // was; synthetic input may by then be far along its path. A path that never leaves the flyout and the
    // bar (a jump across the gap between them, then along the bar) cannot be taken for a press elsewhere,
    // which would close the flyout mid-drag.
    const auto flyout = vantril.openFlyout(u"Stack"_s);
    QVERIFY2(flyout, "the stack did not open");
    const QPoint member = secondRowOf(frameOf(*flyout));
    const QPoint onBar(member.x(), vantril.frame().center().y());
    QVERIFY(vantril.frame().contains(onBar));
    before = m_home->buttons();
    QVERIFY(dragAlong(QList<QPoint>{member, member + QPoint(0, 3)} +
                      pathBetween(onBar, vantril.gapAfter(u"1"_s), 8)));
    QVERIFY2(vantril.waitForSave(before), isViewable(*flyout)
                                              ? "the drag out of the flyout changed nothing"
                                              : "the flyout closed during the drag out of it");
    const BarConfig after = vantril.saved();
    QCOMPARE(titles(after.buttons), (QStringList{u"3"_s, u"1"_s, u"m2"_s, u"2"_s, u"Stack"_s}));
    QCOMPARE(after.buttons.value(2), m2);
    QCOMPARE(after.buttons.value(4).children, std::optional(QList<ButtonSpec>{m1}));
}

void TestBarEndToEnd::dropsFromAnotherProgram()
{
    // An application that only notes the files it was started with.
    const QString record = m_home->path(u"opened.txt"_s);
    const QString script = m_home->path(u"record.sh"_s);
    QVERIFY(writeAll(
        script,
        u"#!/bin/sh\nfor f in \"$@\"; do printf '%s\\n' \"$f\" >> '%1'; done\n"_s.arg(record).toUtf8()));
    QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const QString entry = installApplication(u"vantril-test-recorder"_s, u"Recorder"_s, script + u" %F"_s);
    QVERIFY(!entry.isEmpty());
    RunningBar vantril(*m_home,
                       barOf({button(u"A"_s), button(u"Recorder"_s, u"app"_s, entry), button(u"B"_s)}));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");

    // Files, and programs met in a download folder, dropped between two chips: each becomes a chip that
    // opens it, in reverse order, and none was started. Reading the FIFO would have held the program up.
    QStringList files = {m_home->path(u"one.txt"_s), m_home->path(u"two.txt"_s)};
    for (const QString& file : files)
        QVERIFY(writeAll(file, "x"));
    for (const QString& name : strays)
        files.append(makeStray(name, m_home->path(QString())));
    QVERIFY(!files.contains(QString()));
    QByteArray before = m_home->buttons();
    const QPoint gap = vantril.gapAfter(u"A"_s);
    QVERIFY(dropFiles(vantril, files, gap, QPoint(gap.x(), vantril.frame().y() + 10)));
    QVERIFY2(vantril.waitForSave(before), "the drop changed nothing");
    QStringList expected = {u"A"_s};
    const QList<ButtonSpec> made = vantril.saved().buttons;
    for (const QString& file : files) {
        expected.insert(1, QFileInfo(file).fileName());
        const auto chip =
            std::find_if(made.begin(), made.end(), [&](const ButtonSpec& b) { return b.argument == file; });
        QVERIFY2(chip != made.end() && chip->action == u"open"_s && chip->title == expected[1],
                 qPrintable(file));
        QVERIFY2(!QFile::exists(markerOf(file)), qPrintable(file));
    }
    QCOMPARE(titles(vantril.saved().buttons), expected << u"Recorder"_s << u"B"_s);

    // A file dropped on an application's chip opens with it (the chip's highlight: a white ring just
    // inside its edge), and no chip is added.
    const QString letter = m_home->path(u"letter.txt"_s);
    QVERIFY(writeAll(letter, "x"));
    before = m_home->buttons();
    const QRectF chip = vantril.chipRect(u"Recorder"_s);
    const QPoint ring(qRound(chip.left()) + 1, qRound(chip.center().y()));
    QVERIFY(dropFiles(vantril, {letter}, chip.center().toPoint(), ring));
    QVERIFY2(waitFor([&] { return readAll(record) == (letter + u'\n').toUtf8(); }),
             readAll(record).constData());
    QCOMPARE(m_home->buttons(), before);
}

void TestBarEndToEnd::frontApplicationChoosesTheSet()
{
    // The program behind every window below is an installed application, as xterm would be for a window
    // of "xterm -class MyTool": its desktop entry is found from the window's executable.
    QVERIFY(!installApplication(u"vantril-test-windows"_s, u"Windows"_s, testWindow).isEmpty());
    BarConfig config = barOf({button(u"Log"_s, u"applescript"_s, u"beep"_s), button(u"1"_s)});
    config.appSets = QList<AppSet>{{u"VantrilAlpha"_s, u"Alpha"_s, {button(u"a1"_s)}},
                                   {u"VantrilBeta"_s, u"Beta"_s, {button(u"b1"_s), button(u"b2"_s)}}};
    const int alphaWidth = layoutOf(config, config.appSets->at(0).buttons).width;
    const int betaWidth = layoutOf(config, config.appSets->at(1).buttons).width;
    RunningBar vantril(*m_home, config, {});
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    QVERIFY(vantril.frame().width() < alphaWidth && alphaWidth < betaWidth);
    const QByteArray before = m_home->buttons();

    TestProcess alphaApp(testWindow, {u"app"_s, u"VantrilAlpha"_s});
    const auto alpha = alphaApp.waitForWindow(u"VantrilAlpha"_s);
    TestProcess betaApp(testWindow, {u"app"_s, u"VantrilBeta"_s});
    const auto beta = betaApp.waitForWindow(u"VantrilBeta"_s);
    QVERIFY2(alpha && beta, "the applications' windows did not appear");
    for (const auto& [window, width] :
         QList<std::pair<quintptr, int>>{{*alpha, alphaWidth}, {*beta, betaWidth}}) {
        QVERIFY(xdotool({u"windowactivate"_s, u"--sync"_s, QString::number(window)}));
        QVERIFY2(vantril.waitForWidth(width), qPrintable(windowName(window)));
    }
    // A tap on the bar takes nothing from the application in front, so its set stays. The chip only
    // complains, which tells when the tap was handled.
    QVERIFY(clickAt(vantril.chip(u"Log"_s)));
    QVERIFY2(waitFor([&] { return vantril.log().contains(u"AppleScript is not available"_s); }),
             qPrintable(vantril.log()));
    QCOMPARE(activeWindow(), *beta);
    QCOMPARE(frameOf(vantril.bar()).width(), betaWidth);

    // Still following: back to the first one.
    QVERIFY(xdotool({u"windowactivate"_s, u"--sync"_s, QString::number(*alpha)}));
    QVERIFY(vantril.waitForWidth(alphaWidth));
    // Showing a set is no edit.
    QCOMPARE(m_home->buttons(), before);
}

void TestBarEndToEnd::handEditsReachTheBar()
{
    const auto configWith = [](int count) {
        BarConfig config;
        for (int i = 1; i <= count; ++i)
            config.buttons.append(button(u"B%1"_s.arg(i)));
        return config;
    };
    RunningBar vantril(*m_home, configWith(2));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    // Written in place, then saved the way editors save, a new file renamed over the old one, whose
    // replacement is watched in its turn.
    const QString temporary = m_home->path(u"vantril/.buttons.json.edit"_s);
    for (const auto& [count, renamed] :
         QList<std::pair<int, bool>>{{3, false}, {4, true}, {5, false}, {6, true}}) {
        const QByteArray bytes = Config::encoded(configWith(count));
        QVERIFY(renamed ? writeAll(temporary, bytes) &&
                              std::rename(QFile::encodeName(temporary).constData(),
                                          QFile::encodeName(m_home->buttonsJson()).constData()) == 0
                        : m_home->writeButtons(bytes));
        QVERIFY2(vantril.waitForWidth(layoutOf(configWith(count)).width),
                 renamed ? "renamed over" : "written in place");
    }
}

void TestBarEndToEnd::editorTakesFocusAndSaves()
{
    QVERIFY(moveTo(away));
    RunningBar vantril(*m_home, Config::defaults(), withoutFrontApp({{u"VANTRIL_SHOW_EDITOR"_s, u"Help"_s}}));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    QVERIFY2(vantril.waitForWindow(u"Edit Button"_s, true), "no editor with the keyboard focus");

    // The title field has the focus: its text is replaced and Return saves.
    QByteArray before = m_home->buttons();
    QVERIFY(keys({u"ctrl+a"_s}) && type(u"Support"_s) && keys({u"Return"_s}));
    QVERIFY2(vantril.waitForSave(before), "the editor saved nothing");
    BarConfig renamed = Config::defaults();
    for (ButtonSpec& spec : renamed.buttons)
        spec.title = spec.title == u"Help"_s ? u"Support"_s : spec.title;
    QCOMPARE(vantril.saved(), renamed);
    QVERIFY2(waitFor([&] { return !findWindow(u"Edit Button"_s, vantril.pid()); }), "the editor stayed open");

    // Undone from the bar's menu, opened on the grip, which moved with the new width.
    MenuModel::State state;
    state.canUndo = true;
    const QStringList undo = keysFor(MenuModel::populate(state), u"Undo last change"_s);
    QVERIFY(!undo.isEmpty());
    QVERIFY2(vantril.openMenu(vantril.grip()), "right-clicking the grip opened no menu");
    before = m_home->buttons();
    QVERIFY(keys(undo));
    QVERIFY2(vantril.waitForSave(before), "Undo changed nothing");
    QCOMPARE(m_home->buttons(), Config::encoded(Config::defaults()));
}

void TestBarEndToEnd::autoHideLetsClicksThroughAndRestBringsItBack()
{
    QVERIFY(moveTo(away));
    QVERIFY(QDir().mkpath(QFileInfo(m_home->preferencesFile()).absolutePath()));
    QVERIFY(writeAll(m_home->preferencesFile(), "[General]\nautoHide=true\n"));

    // A window across the bottom of the screen, under where the bar will be, that records the clicks
    // reaching it. Started first, so that the bar is mapped above it.
    const QRect area = workArea();
    const QRect band(area.x(), area.bottom() + 1 - 200, area.width(), 200);
    const QString presses = m_home->path(u"presses.txt"_s);
    TestProcess probe(testWindow, {u"clicks"_s, presses, QString::number(band.x()), QString::number(band.y()),
                                   QString::number(band.width()), QString::number(band.height())});
    const auto probeWindow = probe.waitForWindow(u"clickprobe"_s);
    QVERIFY2(probeWindow && placeWindow(*probeWindow, band), "the click probe is not in place");

    RunningBar vantril(*m_home);
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    const quintptr bar = vantril.bar();
    const QRect frame = vantril.frame();
    QVERIFY2(band.contains(frame), qPrintable(describe(frame)));
    // The pointer on the bar keeps it, or brings it back if it went while the program was starting.
    QVERIFY(moveTo(frame.center()));
    QVERIFY2(waitFor([&] { return shownAs(vantril.bar(), true); }),
             "the bar is not shown with the pointer on it");

    QVERIFY(moveTo(away));
    QElapsedTimer clock;
    clock.start();
    // Read straight from the server and often: how long it takes is what is measured here.
    QVERIFY(waitFor([&] { return values(bar, "_NET_WM_WINDOW_OPACITY") == QList<quint32>{0}; },
                    windowTimeoutMs, 10));
    QVERIFY2(clock.elapsed() <= hideWithinMs,
             qPrintable(u"hidden %1 ms after the pointer left"_s.arg(clock.elapsed())));
    QVERIFY2(waitFor([&] { return shownAs(vantril.bar(), false); }),
             "faded out, but still drawn or taking clicks");

    // A click on a chip's place goes to the window below, where the bar takes nothing.
    const QPoint files = vantril.chip(u"Files"_s);
    QVERIFY(clickAt(files));
    const QByteArray expected = u"1 at %1,%2\n"_s.arg(files.x()).arg(files.y()).toUtf8();
    QVERIFY2(waitFor([&] { return readAll(presses).contains(expected); }), readAll(presses).constData());
    QVERIFY(!vantril.shownFlyout());
    // The click left the pointer on the bar's place, where it now rests.
    clock.restart();
    QVERIFY2(waitFor([&] { return shownAs(vantril.bar(), true); }),
             "resting on the bar's place did not bring it back");
    QVERIFY2(clock.elapsed() <= showWithinMs,
             qPrintable(u"shown %1 ms after the pointer came to rest"_s.arg(clock.elapsed())));
    QCOMPARE(frameOf(bar), frame);
    // And it takes clicks again.
    const QByteArray seen = readAll(presses);
    QVERIFY(clickAt(files));
    QVERIFY2(waitFor([&] { return vantril.shownFlyout().has_value(); }), "a click on Files opened nothing");
    QCOMPARE(readAll(presses), seen);
}

void TestBarEndToEnd::hotKeyTogglesAlsoWithNumLock()
{
    QVERIFY(moveTo(away));
    RunningBar vantril(*m_home);
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    QVERIFY(waitFor([&] { return shownAs(vantril.bar(), true); }));
    // Some window managers bind the combination themselves (icewm opens a browser with it). The line
    // comes before the bar is shown; the pipe may still hold it.
    if (waitFor([&] { return vantril.log().contains(hotKeyTaken); }, 2000))
        QSKIP("the window manager holds Ctrl+Alt+B, and the program says so");

    // Num Lock is a modifier to the server: a grab of Ctrl+Alt+B alone would no longer match.
    for (const bool numLock : {false, true}) {
        if (numLock) {
            QVERIFY(keys({u"Num_Lock"_s}));
            QVERIFY(waitFor(numLockOn, 5000));
        }
        QVERIFY(keys({u"ctrl+alt+b"_s}));
        QVERIFY2(waitFor([&] { return shownAs(vantril.bar(), false); }),
                 numLock ? "not hidden with Num Lock on" : "not hidden");
        QVERIFY(keys({u"ctrl+alt+b"_s}));
        QVERIFY2(waitFor([&] { return shownAs(vantril.bar(), true); }),
                 numLock ? "not shown with Num Lock on" : "not shown");
    }
    QVERIFY(vantril.isRunning());
    QVERIFY2(!vantril.log().contains(hotKeyTaken), qPrintable(vantril.log()));

    // A second copy, with folders of its own, finds the combination taken, and says so once.
    TestHome otherHome;
    RunningBar second(otherHome);
    QVERIFY2(second.waitForBar(), "no second bar appeared");
    QVERIFY2(waitFor([&] { return second.log().contains(hotKeyTaken); }), qPrintable(second.log()));
    QCOMPARE(second.log().count(hotKeyTaken), 1);
}

void TestBarEndToEnd::programsAskBeforeTheyRun_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("script with an execute bit") << strays[0];
    QTest::newRow("ELF at --x--x--x") << strays[1];
    QTest::newRow("desktop entry at 0644") << strays[2];
    QTest::newRow("FIFO named x.desktop") << strays[3];
}

void TestBarEndToEnd::programsAskBeforeTheyRun()
{
    QFETCH(QString, name);
    const QString folder = m_home->path(u"offered"_s);
    QVERIFY(QDir().mkpath(folder));
    const QString file = makeStray(name, folder);
    QVERIFY(!file.isEmpty());
    const bool fifo = name == strays[3];
    // The session's choice of Qt platform, which the bar overrides for itself alone.
    RunningBar vantril(
        *m_home, barOf({button(u"Target"_s, u"open"_s, file), button(u"Listed"_s, u"folder"_s, folder)}),
        withoutFrontApp({{u"QT_QPA_PLATFORM"_s, u"wayland"_s}}));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    // The question has no title of its own: the window manager shows the program's name.
    const QString question = u"vantril"_s;

    // The chip asks, and so does the row of the folder's listing after "Open in File Manager", in a window
    // that takes the keyboard; Escape cancels, and so does Return, Cancel being the default. A FIFO is
    // refused at once, and the bar goes on answering.
    for (const QString& key : {u"Escape"_s, u"Return"_s}) {
        if (key == u"Escape"_s) {
            QVERIFY(clickAt(vantril.chip(u"Target"_s)));
        } else {
            const auto listing = vantril.openFlyout(u"Listed"_s);
            QVERIFY2(listing, "the folder did not open");
            QVERIFY(clickAt(secondRowOf(frameOf(*listing))));
        }
        if (fifo)
            continue;
        QVERIFY2(vantril.waitForWindow(question, true),
                 "nothing asked, or the question did not take the keyboard");
        QVERIFY(keys({key}));
        QVERIFY2(waitFor([&] { return !vantril.shownWindow(question); }),
                 qPrintable(key + u" left the question open"_s));
    }
    QVERIFY2(vantril.openFlyout(u"Listed"_s), "the bar stopped answering");
    QVERIFY2(!QFile::exists(markerOf(file)), "a cancelled question started the program");
    if (fifo)
        return;

    // Run starts it: a desktop entry through GIO, a program directly.
    QVERIFY(clickAt(vantril.chip(u"Target"_s)));
    const auto asked = vantril.waitForWindow(question, true);
    QVERIFY2(asked, "the chip asked nothing the second time");
    const auto [size, run] = runButtonIn(QFileInfo(file).fileName());
    QVERIFY2(waitFor([&] { return frameOf(*asked).size() == size; }),
             qPrintable(u"the question is %1 here"_s.arg(describe(QRect(QPoint(), size)))));
    QVERIFY(clickAt(frameOf(*asked).topLeft() + run));
    QVERIFY2(waitFor([&] { return QFile::exists(markerOf(file)); }), "Run started nothing");
    if (name.endsWith(u".sh"_s))
        QTRY_COMPARE(readAll(markerOf(file)), QByteArray("wayland"));
}

void TestBarEndToEnd::oneBarPerFolderTakesCommands()
{
    QVERIFY(moveTo(away));
    // A bar killed before it could clean up leaves its lock and socket behind; the next one takes over.
    const QString socket = InstancePaths::socketPath(
        m_home->configDir(), qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath());
    const QString lock = InstancePaths::lockFile(m_home->configDir());
    {
        RunningBar crashed(*m_home);
        QVERIFY2(crashed.waitForBar(), "no bar window appeared");
        QVERIFY(waitFor([&] { return QFileInfo::exists(socket); }));
        crashed.stop(); // SIGKILL: nothing is cleaned up
    }
    QVERIFY(QFileInfo::exists(lock) && QFileInfo::exists(socket));
    RunningBar vantril(*m_home);
    QVERIFY2(vantril.waitForBar(), "no bar took over from the crashed one");
    QVERIFY(waitFor([&] { return shownAs(vantril.bar(), true); }));

    // A second start hands its command line over and ends within a second of what any start of the
    // program takes on this machine; the first bar stays the only one.
    const Ran version = run(*m_home, {u"--version"_s});
    const Ran second = run(*m_home, {});
    QCOMPARE(second.status, 0);
    QVERIFY2(second.ms <= version.ms + 1000,
             qPrintable(u"%1 ms, --version %2 ms"_s.arg(second.ms).arg(version.ms)));
    QCOMPARE(barsShown(), 1);
    const QList<std::pair<QString, bool>> steps = {{u"--toggle"_s, false}, {u"--toggle"_s, true},
                                                   {u"--hide"_s, false},   {u"--show"_s, true},
                                                   {u"--hide"_s, false},   {QString(), true}};
    for (const auto& [argument, shown] : steps) {
        const Ran ran = run(*m_home, argument.isEmpty() ? QStringList() : QStringList{argument});
        QCOMPARE(ran.status, 0);
        QCOMPARE(ran.err, QString());
        QVERIFY2(waitFor([&] { return shownAs(vantril.bar(), shown); }), qPrintable(argument));
    }
    QCOMPARE(run(*m_home, {u"--open"_s, u"Files"_s}).status, 0);
    QVERIFY2(waitFor([&] { return vantril.shownFlyout().has_value(); }), "--open Files opened nothing");
    const Ran unknown = run(*m_home, {u"--open"_s, u"nosuchtitle"_s});
    QCOMPARE(unknown.status, 1);
    QCOMPARE(unknown.err, u"vantril: no button is titled \"nosuchtitle\"\n"_s);

    // A "folder" that is a file cannot hold a lock: its bar runs beside the first all the same, says so
    // once, and takes commands.
    TestHome broken;
    QVERIFY(writeAll(broken.configDir(), "not a folder"));
    RunningBar unlocked(broken);
    QVERIFY2(unlocked.waitForBar(), "no bar without a lock");
    const QString line =
        u"vantril: cannot make a lock file in \"%1\" (it cannot be created); running without one\n"_s.arg(
            broken.configDir());
    QVERIFY2(waitFor([&] { return unlocked.log().contains(line); }), qPrintable(unlocked.log()));
    QCOMPARE(run(broken, {}).status, 0);
    QCOMPARE(barsShown(), 2);
    QCOMPARE(run(broken, {u"--quit"_s}).status, 0);
    QVERIFY2(unlocked.process().waitForFinished(windowTimeoutMs), "--quit left the unlocked bar running");
    QCOMPARE(unlocked.log().count(line), 1);

    // The answer to --quit comes once the bar has let its folder go.
    QCOMPARE(run(*m_home, {u"--quit"_s}).status, 0);
    QVERIFY2(vantril.process().waitForFinished(windowTimeoutMs), "--quit left the bar running");
    QCOMPARE(vantril.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(vantril.process().exitCode(), 0);
    QVERIFY(!QFileInfo::exists(lock));
}

QTEST_MAIN(TestBarEndToEnd)
#include "tst_bare2e.moc"
