// The real program against a real X server and window manager (openbox unless VANTRIL_TEST_WM names
// another), driven and watched from the outside, one seam of the desktop in each test. Runs inside
// tests/x11/with-x-session.sh; every test starts its own copy of the program with folders of its own.

#include "XSession.h"
#include "app/InstancePaths.h"
#include "bar/BarView.h"
#include "platform/x11/XcbHandles.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QRegion>
#include <QScreen>
#include <QTest>
#include <sys/stat.h>
#include <xcb/shape.h>

namespace {

const QString testWindow = QStringLiteral(TESTWINDOW_BINARY);
/// Away from where the bar will be, so that nothing is hovered or rested on by accident.
const QPoint away(screenWidth / 2, 100);
const QString hotKeyTaken = u"Hot key ctrl+alt+b is taken by another program; bind `vantril --toggle` in "
                            "your desktop's keyboard settings instead"_s;

bool numLockOn()
{
    return output(u"xset"_s, {u"q"_s}).contains(QRegularExpression(u"Num Lock:\\s+on\\b"_s));
}

QRegion shapeOf(quintptr window, xcb_shape_kind_t kind)
{
    const auto reply = adoptReply(xcb_shape_get_rectangles_reply(
        connection(), xcb_shape_get_rectangles(connection(), xcb_window_t(window), kind), nullptr));
    QRegion region;
    for (int i = 0; reply && i < xcb_shape_get_rectangles_rectangles_length(reply.get()); ++i) {
        const xcb_rectangle_t& r = xcb_shape_get_rectangles_rectangles(reply.get())[i];
        region += QRect(r.x, r.y, r.width, r.height);
    }
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
    return std::count_if(windows.begin(), windows.end(),
                         [](quintptr w) { return windowName(w) == u"Vantril"_s && isViewable(w); });
}

/// A command line run to its end: its exit code (-1 when it did not end by itself), what it complained
/// and how long it took.
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
    if (!process.waitForFinished(windowTimeoutMs) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardError()), clock.elapsed()};
}

/// Whether the window is white at a point of the screen: the drop marker and a chip's highlight are,
/// and nothing else on the bar is. Read from the window itself: a rootless XWayland's root holds nothing.
bool whiteAt(quintptr window, const QPoint& global)
{
    const QPoint at = global - frameOf(window).topLeft();
    const QColor colour =
        QGuiApplication::primaryScreen()->grabWindow(window, at.x(), at.y(), 1, 1).toImage().pixelColor(0, 0);
    return colour.isValid() && qMin(qMin(colour.red(), colour.green()), colour.blue()) >= 235;
}

/// Drags `files` from another program's window over XDND to `target` on the bar, and drops them there
/// once the bar shows that it takes the drag by turning `feedback` white.
bool dropFiles(const RunningBar& vantril, const QStringList& files, const QPoint& target,
               const QPoint& feedback)
{
    TestProcess source(testWindow, QStringList{u"drag"_s} + files);
    const auto window = source.waitForWindow(u"dragsource"_s);
    // A tiling manager gives it the whole screen, under the bar: the drag only has to start off the bar.
    if (!window || vantril.frame().contains(frameOf(*window).center()) || whiteAt(vantril.bar(), feedback))
        return false;
    QString said;
    const auto saidAll = [&](const char* word) {
        said += QString::fromUtf8(source.process().readAllStandardOutput());
        return said.contains(QLatin1String(word));
    };
    const QPoint start = frameOf(*window).center();
    if (!xdotool(moveArguments(start) + QStringList{u"mousedown"_s, u"1"_s}) ||
        !waitFor([&] { return saidAll("started"); }))
        return false;
    QStringList steps;
    for (const QPoint& point : pathBetween(start, target, 12))
        steps += moveArguments(point);
    // The source sends a new position only after the target has answered the last one; a pointer that
    // keeps still might leave the final position unsent. A one-pixel wiggle that ends on the target
    // brings it along.
    const bool shown = xdotool(steps) &&
                       waitFor(
                           [&] {
                               return whiteAt(vantril.bar(), feedback) ||
                                      !xdotool(moveArguments(target + QPoint(1, 0)) + moveArguments(target));
                           },
                           windowTimeoutMs, 100);
    return xdotool({u"mouseup"_s, u"1"_s}) && waitFor([&] { return saidAll("finished"); }) && shown;
}

/// Files a user may meet in a download folder that run if anything starts them, each leaving a marker
/// file when it does: a shell script with an execute bit, an ELF at --x--x--x, a desktop entry at 0644.
const QStringList strays = {u"invoice.pdf.sh"_s, u"tool"_s, u"invoice.desktop"_s};

QString markerOf(const QString& path)
{
    return path + u".ran"_s;
}

QString makeStray(const QString& name, const QString& folder)
{
    const QString path = QDir(folder).filePath(name);
    const bool made = name == strays[1] ? QFile::copy(testWindow, path)
                      : name == strays[0]
                          ? writeAll(path, "#!/bin/sh\ntouch \"$0.ran\"\n")
                          : writeAll(path, "[Desktop Entry]\nType=Application\nName=Invoice\nExec=touch " +
                                               QFile::encodeName(markerOf(path)) + '\n');
    const mode_t mode = name == strays[1] ? 0111 : name == strays[0] ? 0755 : 0644;
    return made && ::chmod(QFile::encodeName(path).constData(), mode) == 0 ? path : QString();
}

/// Writes a desktop entry into the session's applications folder; its path.
QString installApplication(const QString& id, const QString& exec)
{
    const QDir folder(qEnvironmentVariable("XDG_DATA_HOME") + u"/applications"_s);
    const QString entry = folder.filePath(id + u".desktop"_s);
    const QByteArray text =
        "[Desktop Entry]\nType=Application\nName=" + id.toUtf8() + "\nExec=" + exec.toUtf8();
    return folder.mkpath(u"."_s) && writeAll(entry, text + '\n') ? entry : QString();
}

} // namespace

class TestBarEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(onSessionScreen() && !numLockOn()); }
    void init() { m_home = std::make_unique<TestHome>(); }
    void cleanup();

    void placeIsKeptAcrossRestarts();
    void barIsADockThatNeverTakesFocus();
    void startUpAndProbeTellHowFarFacilitiesReach();
    void chipsMoveByDragging();
    void dropsFromAnotherProgram();
    void frontApplicationChoosesTheSet();
    void editsReachTheBarFromTheEditorAndByHand();
    void autoHideLetsClicksThroughAndRestBringsItBack();
    void hotKeyTogglesAlsoWithNumLock();
    void programsAskBeforeTheyRun_data();
    void programsAskBeforeTheyRun();
    void oneBarPerFolderTakesCommands();

private:
    std::unique_ptr<TestHome> m_home;
};

void TestBarEndToEnd::cleanup()
{
    // The lock state belongs to the server, which the next test shares.
    if (numLockOn() && keys({u"Num_Lock"_s}))
        waitFor([] { return !numLockOn(); }, 5000);
    m_home.reset();
}

void TestBarEndToEnd::placeIsKeptAcrossRestarts()
{
    const auto near = [](const QPoint& a, const QPoint& b) { return (a - b).manhattanLength() <= 2; };
    QRect moved;
    {
        RunningBar first(*m_home);
        QVERIFY2(first.waitForBar(), "no bar window appeared");
        // Centred, 6 pixels above the bottom of what panels leave free.
        const QRect area = workArea();
        const QRect start(qRound(area.x() + area.width() / 2.0 - first.frame().width() / 2.0),
                          area.bottom() + 1 - 6 - BarView::barHeight, first.frame().width(),
                          BarView::barHeight);
        QVERIFY2(waitFor([&] { return near(frameOf(first.bar()).topLeft(), start.topLeft()); }),
                 qPrintable(describe(frameOf(first.bar()))));
        QCOMPARE(frameOf(first.bar()).size(), start.size());

        // Up into the top half of the screen by the grip: the window follows the pointer, and a stack
        // opens below it now. The place is saved a moment after the move; stopping earlier would lose it.
        const QPoint offset(-100, -600);
        QVERIFY(dragAlong(pathBetween(first.grip(), first.grip() + offset, 20)));
        QVERIFY2(waitFor([&] {
                     return (moved = frameOf(first.bar())).topLeft() == first.frame().topLeft() + offset;
                 }),
                 qPrintable(describe(moved)));
        QVERIFY(first.waitForWidth(moved.width()));
        const auto flyout = first.openFlyout(u"Files"_s);
        QVERIFY2(flyout && waitFor([&] { return frameOf(*flyout).y() == moved.bottom() + 1 + 4; }),
                 qPrintable(describe(frameOf(flyout.value_or(0)))));
        QVERIFY(waitFor([&] { return readAll(m_home->preferencesFile()).contains("[barPosition]"); }));
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
    const QString platform = m_home->path(u"platform.txt"_s);
    config.buttons += {button(u"Shout"_s, u"keys"_s, u"shift+h"_s),
                       button(u"Env"_s, u"shell"_s, u"printf %s \"$QT_QPA_PLATFORM\" > "_s + platform)};
    // The session's choice of Qt platform, which the bar overrides for itself alone.
    RunningBar vantril(*m_home, config, withoutFrontApp({{u"QT_QPA_PLATFORM"_s, u"wayland"_s}}));
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
    QVERIFY2(waitFor([&] {
                 const QRect hung = frameOf(*flyout);
                 return qAbs(hung.center().x() - vantril.chip(u"Files"_s).x()) <= 2 &&
                        hung.bottom() + 5 == frame.y();
             }),
             qPrintable(describe(frameOf(*flyout)) + u", bar "_s + describe(frame)));
    QVERIFY(waitUntilDrawn(frameOf(*flyout)) &&
            clickAt(frameOf(*flyout).topLeft() + QPoint(frameOf(*flyout).width() / 2, 3)));
    QVERIFY(clickAt(vantril.chip(u"Files"_s)));
    QVERIFY2(waitFor([&] { return !vantril.shownFlyout(); }), "the second tap on Files left the flyout open");
    // A key chip types into the window in front, which keeps the keyboard throughout.
    QVERIFY(clickAt(vantril.chip(u"Shout"_s)));
    QVERIFY2(waitFor([&] { return readAll(text) == "H"; }), readAll(text).constData());
    QCOMPARE(activeWindow(), *client);
    // What the bar starts runs on the session's platform.
    QVERIFY(clickAt(vantril.chip(u"Env"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(readAll(platform), QByteArray("wayland"), windowTimeoutMs);
    // A click into another application closes the stack too: into its middle, which a tiling manager's
    // full-screen tile has under the bar and the flyout too.
    QVERIFY(vantril.openFlyout(u"Files"_s));
    const QPoint elsewhere = frameOf(*client).center();
    QVERIFY(!frameOf(*vantril.shownFlyout()).contains(elsewhere) && !frame.contains(elsewhere));
    QVERIFY(clickAt(elsewhere));
    QVERIFY2(waitFor([&] { return !vantril.shownFlyout(); }), "a click elsewhere left the flyout open");

    // Above an application window that covers its place and is active; nobody else stacks a bar that
    // nobody manages, and it climbs back over a window raised above it.
    const QString id = QString::number(*client);
    xdotool({u"windowmove"_s, id, QString::number(frame.x() - 20), QString::number(frame.y() - 60)});
    xdotool({u"windowsize"_s, id, QString::number(frame.width() + 40), u"200"_s});
    QVERIFY2(waitFor([&] { return frameOf(*client).intersects(frame); }),
             qPrintable(describe(frameOf(*client))));
    QVERIFY(xdotool({u"windowactivate"_s, u"--sync"_s, id}));
    QVERIFY2(waitFor([&] { return isStackedAbove(bar, *client); }), "the bar is below the active window");
    if (isOverrideRedirect(bar))
        raiseFrameToTop(*client);
    QVERIFY2(waitFor([&] { return isStackedAbove(bar, *client); }), "the bar stayed below a raised window");
}

void TestBarEndToEnd::startUpAndProbeTellHowFarFacilitiesReach()
{
    // tests/wayland/with-wayland-session.sh runs XWayland under a compositor: mutter as GNOME's session
    // has it, or weston, which names no desktop. tst_shell holds the wording; here the program finds out
    // by itself where it runs and what the display offers.
    const QString compositor = qEnvironmentVariable("VANTRIL_TEST_COMPOSITOR");
    const bool wayland = !compositor.isEmpty();
    RunningBar vantril(*m_home);
    const auto said = [&] { return vantril.log().count(u"In this Wayland session "_s); };
    // Said as the bar comes up. (Weston lists no client windows to find it by.)
    QVERIFY2(wayland ? waitFor([&] { return said() >= 4; }) : vantril.waitForBar(),
             qPrintable(vantril.log()));
    QCOMPARE(said(), wayland ? 4 : 0);
    // Debian's weston dies as soon as an X11 client takes the clipboard, which the probe does to see
    // that it works; the whole session goes with it.
    if (compositor == u"weston"_s)
        QSKIP("weston's X11 window manager crashes when a client takes the clipboard");

    QProcess probe;
    probe.setProcessEnvironment(m_home->environment({{u"TMPDIR"_s, m_home->path(QString())}}));
    probe.start(QStringLiteral(VANTRIL_BINARY), {u"--probe"_s});
    QVERIFY(probe.waitForFinished(60000));
    const QString report = QString::fromUtf8(probe.readAllStandardOutput());
    const QString reach = wayland ? u"X11 windows only"_s : u"all windows"_s;
    QStringList expected = {wayland ? u"session: Wayland%1, through XWayland\n"_s.arg(
                                          compositor == u"mutter"_s ? u" (GNOME)"_s : QString())
                                    : u"session: X11\n"_s,
                            wayland ? u"hot key grab: yes (X11 windows only)\n"_s : u"hot key grab: yes\n"_s};
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

    // Out of the open stack, its second row, onto the bar: moved, not copied or changed. While a flyout is
    // open the program learns of presses anywhere on the desktop, and takes the pointer's place when it reads
    // one for where the press was; synthetic input may by then be far along its path. A path that never
    // leaves the flyout and the bar (a jump across the gap between them, then along the bar) cannot be taken
    // for a press elsewhere, which would close the flyout mid-drag.
    const auto flyout = vantril.openFlyout(u"Stack"_s);
    QVERIFY2(flyout, "the stack did not open");
    const QPoint member = secondRowOf(frameOf(*flyout));
    const QPoint onBar(member.x(), vantril.chip(u"1"_s).y());
    QVERIFY(vantril.frame().contains(onBar));
    const QByteArray before = m_home->buttons();
    QVERIFY(dragAlong(QList<QPoint>{member, member + QPoint(0, 3)} +
                      pathBetween(onBar, vantril.gapAfter(u"1"_s), 8)));
    QVERIFY2(vantril.waitForSave(before), isViewable(*flyout)
                                              ? "the drag out of the flyout changed nothing"
                                              : "the flyout closed during the drag out of it");
    QCOMPARE(vantril.saved().buttons, (QList<ButtonSpec>{button(u"1"_s), m2, button(u"2"_s),
                                                         stackOf(u"Stack"_s, {m1}), button(u"3"_s)}));
}

void TestBarEndToEnd::dropsFromAnotherProgram()
{
    // An application that only notes the files it was started with.
    const QString record = m_home->path(u"opened.txt"_s);
    const QString script = m_home->path(u"record.sh"_s);
    QVERIFY(writeAll(script, "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" + QFile::encodeName(record) + "'\n"));
    QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const QString entry = installApplication(u"vantril-test-recorder"_s, script + u" %F"_s);
    RunningBar vantril(*m_home,
                       barOf({button(u"A"_s), button(u"Recorder"_s, u"app"_s, entry), button(u"B"_s)}));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");

    // Files dropped between two chips each become a chip that opens them, in reverse order. What a drop
    // makes of programs is tst_actions' to check.
    const QStringList files = {m_home->path(u"one.txt"_s), m_home->path(u"two.txt"_s)};
    QVERIFY(writeAll(files[0], "x") && writeAll(files[1], "x"));
    QByteArray before = m_home->buttons();
    const QPoint gap = vantril.gapAfter(u"A"_s);
    QVERIFY(dropFiles(vantril, files, gap, QPoint(gap.x(), vantril.frame().y() + 10)));
    QVERIFY2(vantril.waitForSave(before), "the drop changed nothing");
    QList<ButtonSpec> expected = {button(u"A"_s), button(u"Recorder"_s, u"app"_s, entry), button(u"B"_s)};
    for (const QString& file : files) // with the file's own icon
        expected.insert(1, ButtonSpec::make(QFileInfo(file).fileName(), u"doc"_s, u"open"_s, file, file));
    QCOMPARE(vantril.saved().buttons, expected);

    // A file dropped on an application's chip opens with it (the chip's highlight: a white ring just
    // inside its edge), and no chip is added.
    const QString letter = m_home->path(u"letter.txt"_s);
    QVERIFY(writeAll(letter, "x"));
    before = m_home->buttons();
    const QRectF chip = vantril.chipRect(u"Recorder"_s);
    QVERIFY(dropFiles(vantril, {letter}, chip.center().toPoint(),
                      QPoint(qRound(chip.left()) + 1, qRound(chip.center().y()))));
    QVERIFY2(waitFor([&] { return readAll(record) == (letter + u'\n').toUtf8(); }),
             readAll(record).constData());
    QCOMPARE(m_home->buttons(), before);
}

void TestBarEndToEnd::frontApplicationChoosesTheSet()
{
    // The program behind every window below is an installed application, as xterm would be for a window
    // of "xterm -class MyTool": its desktop entry is found from the window's executable.
    QVERIFY(!installApplication(u"vantril-test-windows"_s, testWindow).isEmpty());
    BarConfig config = barOf({button(u"Log"_s, u"applescript"_s, u"beep"_s), button(u"1"_s)});
    config.appSets = QList<AppSet>{{u"VantrilAlpha"_s, u"Alpha"_s, {button(u"a1"_s)}},
                                   {u"VantrilBeta"_s, u"Beta"_s, {button(u"b1"_s), button(u"b2"_s)}}};
    const int alphaWidth = layoutOf(config, config.appSets->at(0).buttons).width;
    const int betaWidth = layoutOf(config, config.appSets->at(1).buttons).width;
    RunningBar vantril(*m_home, config, {});
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    QVERIFY(vantril.frame().width() < alphaWidth && alphaWidth < betaWidth);
    const QByteArray before = m_home->buttons();

    TestProcess alphaApp(testWindow, {u"app"_s, u"VantrilAlpha"_s}),
        betaApp(testWindow, {u"app"_s, u"VantrilBeta"_s});
    const auto alpha = alphaApp.waitForWindow(u"VantrilAlpha"_s),
               beta = betaApp.waitForWindow(u"VantrilBeta"_s);
    QVERIFY2(alpha && beta, "the applications' windows did not appear");
    const auto activate = [](quintptr window) {
        return xdotool({u"windowactivate"_s, u"--sync"_s, QString::number(window)});
    };
    QVERIFY(activate(*alpha) && vantril.waitForWidth(alphaWidth));
    QVERIFY(activate(*beta) && vantril.waitForWidth(betaWidth));
    // A tap on the bar takes nothing from the application in front, so its set stays. The chip only
    // complains, which tells when the tap was handled.
    QVERIFY(clickAt(vantril.chip(u"Log"_s)));
    QVERIFY2(waitFor([&] { return vantril.log().contains(u"AppleScript is not available"_s); }),
             qPrintable(vantril.log()));
    QCOMPARE(activeWindow(), *beta);
    QCOMPARE(frameOf(vantril.bar()).width(), betaWidth);
    QVERIFY(activate(*alpha) && vantril.waitForWidth(alphaWidth));
    // Showing a set is no edit.
    QCOMPARE(m_home->buttons(), before);
}

void TestBarEndToEnd::editsReachTheBarFromTheEditorAndByHand()
{
    QVERIFY(moveTo(away));
    RunningBar vantril(*m_home, Config::defaults(), withoutFrontApp({{u"VANTRIL_SHOW_EDITOR"_s, u"Help"_s}}));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    QVERIFY2(vantril.waitForWindow(u"Edit Button"_s, true), "no editor with the keyboard focus");

    // The title field has the focus: its text is replaced and Return saves.
    const QByteArray before = m_home->buttons();
    QVERIFY(keys({u"ctrl+a"_s}) && xdotool({u"type"_s, u"Support"_s}) && keys({u"Return"_s}));
    QVERIFY2(vantril.waitForSave(before), "the editor saved nothing");
    BarConfig renamed = Config::defaults();
    for (ButtonSpec& spec : renamed.buttons)
        spec.title = spec.title == u"Help"_s ? u"Support"_s : spec.title;
    QCOMPARE(vantril.saved(), renamed);
    QVERIFY2(waitFor([&] { return !findWindow(u"Edit Button"_s, vantril.pid()); }), "the editor stayed open");

    // A hand edit after the program's own save reaches the bar too; how the watcher follows a file that
    // editors replace is tst_store's.
    const BarConfig edited = barOf({button(u"Edited"_s)});
    QVERIFY(m_home->writeButtons(Config::encoded(edited)));
    QVERIFY2(vantril.waitForWidth(layoutOf(edited).width), "the hand edit did not reach the bar");
}

void TestBarEndToEnd::autoHideLetsClicksThroughAndRestBringsItBack()
{
    QVERIFY(moveTo(away));
    QVERIFY(QDir().mkpath(QFileInfo(m_home->preferencesFile()).absolutePath()));
    QVERIFY(writeAll(m_home->preferencesFile(), "[General]\nautoHide=true\n"));
    // A window across the bottom of the screen, under where the bar will be, that records the clicks
    // reaching it. Shown first, so that the bar is mapped above it.
    const QRect area = workArea();
    const QRect band(area.x(), area.bottom() + 1 - 200, area.width(), 200);
    PressRecorder below(nullptr, Qt::Window | Qt::FramelessWindowHint);
    below.setGeometry(band);
    below.show();
    QVERIFY2(QTest::qWaitForWindowExposed(&below) && placeWindow(below.winId(), band),
             "the window below is not in place");

    RunningBar vantril(*m_home);
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    const quintptr bar = vantril.bar();
    const QRect frame = vantril.frame();
    QVERIFY2(band.contains(frame), qPrintable(describe(frame)));
    // The pointer on the bar keeps it, or brings it back if it went while the program was starting.
    QVERIFY(moveTo(frame.center()) && waitFor([&] { return shownAs(bar, true); }));

    // Gone within ten ticks of 150 ms and a 200 ms fade after the pointer left, with room for a busy
    // machine; read straight from the server and often, as how long it takes is what is measured here.
    QVERIFY(moveTo(away));
    QElapsedTimer clock;
    clock.start();
    QVERIFY(waitFor([&] { return values(bar, "_NET_WM_WINDOW_OPACITY") == QList<quint32>{0}; },
                    windowTimeoutMs, 10));
    QVERIFY2(clock.elapsed() <= 2000,
             qPrintable(u"hidden %1 ms after the pointer left"_s.arg(clock.elapsed())));
    QVERIFY2(waitFor([&] { return shownAs(bar, false); }), "faded out, but still drawn or taking clicks");

    // A click on a chip's place goes to the window below, where the bar takes nothing; it leaves the
    // pointer resting on the bar's place, which brings the bar back within two ticks and a fade.
    const QPoint files = vantril.chip(u"Files"_s);
    QVERIFY(clickAt(files));
    QVERIFY2(waitFor([&] { return below.presses.contains(files); }), "the window below got no click");
    QVERIFY(!vantril.shownFlyout());
    clock.restart();
    QVERIFY2(waitFor([&] { return shownAs(bar, true); }), "resting on the bar's place did not bring it back");
    QVERIFY2(clock.elapsed() <= 2000,
             qPrintable(u"shown %1 ms after the pointer came to rest"_s.arg(clock.elapsed())));
    QCOMPARE(frameOf(bar), frame);
    // And it takes clicks again.
    const qsizetype seen = below.presses.size();
    QVERIFY(clickAt(files));
    QVERIFY2(waitFor([&] { return vantril.shownFlyout().has_value(); }), "a click on Files opened nothing");
    QCOMPARE(below.presses.size(), seen);
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
        QVERIFY(!numLock || (keys({u"Num_Lock"_s}) && waitFor(numLockOn, 5000)));
        for (const bool shown : {false, true}) {
            QVERIFY(keys({u"ctrl+alt+b"_s}));
            QVERIFY2(waitFor([&] { return shownAs(vantril.bar(), shown); }),
                     qPrintable(u"Num Lock %1, not %2"_s.arg(numLock ? u"on"_s : u"off"_s,
                                                             shown ? u"shown"_s : u"hidden"_s)));
        }
    }
    QVERIFY2(vantril.isRunning() && !vantril.log().contains(hotKeyTaken), qPrintable(vantril.log()));
}

void TestBarEndToEnd::programsAskBeforeTheyRun_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("script with an execute bit") << strays[0];
    QTest::newRow("ELF at --x--x--x") << strays[1];
    QTest::newRow("desktop entry at 0644") << strays[2];
}

void TestBarEndToEnd::programsAskBeforeTheyRun()
{
    QFETCH(QString, name);
    const QString folder = m_home->path(u"offered"_s);
    const QString file = QDir().mkpath(folder) ? makeStray(name, folder) : QString();
    QVERIFY(!file.isEmpty());
    RunningBar vantril(
        *m_home, barOf({button(u"Target"_s, u"open"_s, file), button(u"Listed"_s, u"folder"_s, folder)}));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    // The question has no title of its own: the window manager shows the program's name.
    const QString question = u"vantril"_s;

    // The chip asks, and so does the row of the folder's listing after "Open in File Manager", in a window
    // that takes the keyboard; Escape cancels, and so does Return, Cancel being the default.
    for (const QString& key : {u"Escape"_s, u"Return"_s}) {
        const auto listing = key == u"Return"_s ? vantril.openFlyout(u"Listed"_s) : std::nullopt;
        QVERIFY(clickAt(listing ? secondRowOf(frameOf(*listing)) : vantril.chip(u"Target"_s)));
        QVERIFY2(vantril.waitForWindow(question, true),
                 "nothing asked, or the question did not take the keyboard");
        QVERIFY(keys({key}));
        QVERIFY2(waitFor([&] { return !vantril.shownWindow(question); }),
                 qPrintable(key + u" left the question open"_s));
    }
    QVERIFY2(vantril.openFlyout(u"Listed"_s), "the bar stopped answering");
    QVERIFY2(!QFile::exists(markerOf(file)), "a cancelled question started the program");
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
        QVERIFY(crashed.waitForBar() && waitFor([&] { return QFileInfo::exists(socket); }));
        crashed.stop(); // SIGKILL: nothing is cleaned up
    }
    QVERIFY(QFileInfo::exists(lock) && QFileInfo::exists(socket));
    RunningBar vantril(*m_home);
    QVERIFY2(vantril.waitForBar(), "no bar took over from the crashed one");
    QVERIFY(waitFor([&] { return shownAs(vantril.bar(), true); }));

    // A second start hands its command line over and ends within a second of what any start of the
    // program takes on this machine; the first bar stays the only one, and shows.
    const Ran version = run(*m_home, {u"--version"_s});
    const QList<std::pair<QString, bool>> steps = {{QString(), true},
                                                   {u"--toggle"_s, false},
                                                   {u"--toggle"_s, true},
                                                   {u"--hide"_s, false},
                                                   {QString(), true}};
    for (const auto& [argument, shown] : steps) {
        const Ran ran = run(*m_home, argument.isEmpty() ? QStringList() : QStringList{argument});
        QCOMPARE(ran.status, 0);
        QCOMPARE(ran.err, QString());
        QVERIFY2(ran.ms <= version.ms + 1000,
                 qPrintable(u"%1 ms, --version %2 ms"_s.arg(ran.ms).arg(version.ms)));
        QVERIFY2(waitFor([&] { return shownAs(vantril.bar(), shown); }), qPrintable(argument));
    }
    QCOMPARE(barsShown(), 1);
    QCOMPARE(run(*m_home, {u"--open"_s, u"Files"_s}).status, 0);
    QVERIFY2(waitFor([&] { return vantril.shownFlyout().has_value(); }), "--open Files opened nothing");
    const Ran unknown = run(*m_home, {u"--open"_s, u"nosuchtitle"_s});
    QCOMPARE(unknown.status, 1);
    QCOMPARE(unknown.err, u"vantril: no button is titled \"nosuchtitle\"\n"_s);

    // A "folder" that is a file cannot hold a lock: its bar runs beside the first all the same, says so
    // once, and takes commands. It finds the hot key taken by the first, and says that once too.
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
    QCOMPARE(unlocked.log().count(hotKeyTaken), 1);

    // The answer to --quit comes once the bar has let its folder go.
    QCOMPARE(run(*m_home, {u"--quit"_s}).status, 0);
    QVERIFY2(vantril.process().waitForFinished(windowTimeoutMs), "--quit left the bar running");
    QCOMPARE(vantril.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(vantril.process().exitCode(), 0);
    QVERIFY(!QFileInfo::exists(lock));
}

QTEST_MAIN(TestBarEndToEnd)
#include "tst_bare2e.moc"
