// The real program against a real X server and window manager (openbox unless VANTRIL_TEST_WM names
// another): where its windows appear, what they tell the window manager, what clicks on them do, hiding
// and showing by pointer, hot key and command line, and one bar per configuration folder, observed from
// the outside with xprop, xwininfo, xdotool, xset and the server's own answers. Runs inside
// tests/x11/with-x-session.sh; every test starts its own copy of the program with configuration folders
// of its own, so no test sees what another one saved.

#include "BarLayout.h"
#include "RunningBar.h"
#include "StrayPrograms.h"
#include "TestSupport.h"
#include "app/InstancePaths.h"
#include "bar/BarView.h"
#include "bar/RunQuestionBox.h"
#include "config/Config.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QRegion>
#include <QRegularExpression>
#include <QTest>
#include <xcb/shape.h>

namespace {

/// Where the Run button sits in the program's question about `name`, a window of `size`: the same
/// question asked in this process, with the program's style, fonts and icon theme, as BarLayout lays
/// out the bar, then put away again so that it covers nothing.
std::optional<QPoint> runButtonIn(const QString& name, const QSize& size)
{
    QPoint centre;
    QSize local;
    xcb_window_t window = 0;
    {
        RunQuestionBox question;
        question.ask(name, [](RunQuestion::Answer) {});
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(widget);
            if (!box || !box->isVisible())
                continue;
            for (QAbstractButton* button : box->buttons()) {
                if (button->text() == QLatin1String("Run"))
                    centre = button->mapTo(box, button->rect().center());
            }
            local = box->size();
            window = static_cast<xcb_window_t>(box->winId());
        }
    }
    waitFor([&] { return !attributesOf(window); });
    if (local != size || centre.isNull()) {
        qWarning("the question here is %dx%d, the program's %dx%d", local.width(), local.height(),
                 size.width(), size.height());
        return std::nullopt;
    }
    return centre;
}

/// How long the pointer may be away before the bar has faded out, and resting on its place before it
/// is back: ten ticks of 150 ms and a 200 ms fade, two ticks and a fade, with room for a busy machine.
constexpr int hideWithinMs = 2000;
constexpr int showWithinMs = 2000;

bool numLockOn()
{
    return QRegularExpression(QStringLiteral("Num Lock:\\s+on\\b"))
        .match(output(QStringLiteral("xset"), {QStringLiteral("q")}))
        .hasMatch();
}

/// One of the window's shapes, in window coordinates.
QRegion shapeOf(xcb_window_t window, xcb_shape_kind_t kind)
{
    const auto reply = adoptReply(xcb_shape_get_rectangles_reply(
        connection(), xcb_shape_get_rectangles(connection(), window, kind), nullptr));
    QRegion region;
    if (!reply)
        return region;
    const xcb_rectangle_t* rectangles = xcb_shape_get_rectangles_rectangles(reply.get());
    for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(reply.get()); ++i)
        region += QRect(rectangles[i].x, rectangles[i].y, rectangles[i].width, rectangles[i].height);
    return region;
}

/// Hidden as auto-hide and the hot key hide: faded out, letting every click through, and where no
/// compositor makes the fade visible, cut away to nothing.
bool fullyHidden(quintptr bar)
{
    const QString opacity = windowProperty(bar, QStringLiteral("_NET_WM_WINDOW_OPACITY")).trimmed();
    if (opacity != QStringLiteral("_NET_WM_WINDOW_OPACITY(CARDINAL) = 0"))
        return false;
    const auto window = static_cast<xcb_window_t>(bar);
    const QRect inside(QPoint(0, 0), screenRect(window).size());
    return !inside.isEmpty() && shapeOf(window, XCB_SHAPE_SK_INPUT).isEmpty() &&
           (isCompositing() || !shapeOf(window, XCB_SHAPE_SK_BOUNDING).intersects(inside));
}

/// Shown: opaque, drawn and taking clicks over its middle.
bool fullyShown(quintptr bar)
{
    const QString opacity = windowProperty(bar, QStringLiteral("_NET_WM_WINDOW_OPACITY")).trimmed();
    if (!opacity.endsWith(QStringLiteral("not found.")) &&
        opacity != QStringLiteral("_NET_WM_WINDOW_OPACITY(CARDINAL) = 4294967295"))
        return false;
    const auto window = static_cast<xcb_window_t>(bar);
    const QRect inside(QPoint(0, 0), screenRect(window).size());
    return !inside.isEmpty() && shapeOf(window, XCB_SHAPE_SK_INPUT).contains(inside.center()) &&
           shapeOf(window, XCB_SHAPE_SK_BOUNDING).contains(inside.center());
}

/// A command line run to its end: what it printed, and how long it took.
struct Ran
{
    int status = -1;
    QString out;
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
    const bool ended = process.waitForFinished(windowTimeoutMs);
    const qint64 ms = clock.elapsed();
    if (!ended) {
        process.kill();
        process.waitForFinished();
    }
    return {ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()), ms};
}

/// Bars on screen, whichever process shows them.
int barsShown()
{
    const QList<quintptr> windows = topLevelWindows();
    return int(std::count_if(windows.begin(), windows.end(), [](quintptr window) {
        return windowName(window) == QStringLiteral("Vantril") && isViewable(window);
    }));
}

/// Whether the open flyout of `vantril` hangs above the chip titled `title` of `config`.
bool flyoutOn(RunningBar& vantril, const QString& title, const BarConfig& config = Config::defaults())
{
    const auto flyout = vantril.shownFlyout();
    const QRectF chip = layoutOf(config).chips.value(title);
    const QRect barFrame = frameOf(vantril.bar());
    if (!flyout || chip.isEmpty())
        return false;
    const QRect frame = frameOf(*flyout);
    return qAbs(frame.x() + frame.width() / 2.0 - (barFrame.x() + chip.center().x())) <= 2 &&
           frame.bottom() + 1 == barFrame.y() - 4;
}

} // namespace

class TestBarEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void defaultPlaceIsBottomCentre();
    void windowTellsTheWindowManagerItIsADock();
    void startUpAndProbeTellHowFarFacilitiesReach();
    void clickLeavesTheActiveWindowAlone();
    void keysAndPasteChipsTypeIntoTheFrontWindow();
    void stackOpensAboveItsChipAndCloses();
    void movedBarComesBackWhereItWasLeft();
    void gripDragMovesBarAndTurnsFlyoutsDown();
    void openingAProgramAsksFirst_data();
    void openingAProgramAsksFirst();

    void autoHideLetsClicksThroughAndRestBringsItBack();
    void hotKeyTogglesAlsoWithNumLock();
    void commandsReachTheRunningBar();
    void oneBarPerFolderAfterACrashBesideOthersAndWithoutALock();

private:
    std::unique_ptr<TestHome> m_home;
    int m_defaultWidth = 0;
};

void TestBarEndToEnd::initTestCase()
{
    QVERIFY(onSessionScreen());
    useProgramIconTheme();
    m_defaultWidth = layoutOf(Config::defaults()).width;
    QVERIFY2(!numLockOn(), "Num Lock is on before any test turned it on");
}

void TestBarEndToEnd::init()
{
    m_home = std::make_unique<TestHome>();
    QVERIFY(m_home->isValid());
}

void TestBarEndToEnd::cleanup()
{
    // The lock state belongs to the server, which the next test shares.
    if (numLockOn()) {
        keys({QStringLiteral("Num_Lock")});
        waitFor([] { return !numLockOn(); }, 5000);
    }
    m_home.reset();
}

void TestBarEndToEnd::defaultPlaceIsBottomCentre()
{
    RunningBar vantril(*m_home);
    const auto bar = vantril.waitForBar();
    QVERIFY2(bar, "no bar window appeared");

    // Above a panel the window manager keeps at the bottom, as it says in _NET_WORKAREA.
    const QRect area = workArea();
    const auto placed = [&] {
        const QRect frame = frameOf(*bar);
        const int centredX = qRound(area.x() + area.width() / 2.0 - frame.width() / 2.0);
        return frame.height() == BarView::barHeight && frame.bottom() + 1 == area.bottom() + 1 - 6 &&
               qAbs(frame.x() - centredX) <= 1;
    };
    QVERIFY2(waitFor(placed), qPrintable(describe(frameOf(*bar))));
    QCOMPARE(frameOf(*bar).width(), layoutOf(Config::defaults()).width); // the default buttons, no more
}

void TestBarEndToEnd::windowTellsTheWindowManagerItIsADock()
{
    RunningBar vantril(*m_home);
    const auto bar = vantril.waitForBar();
    QVERIFY2(bar, "no bar window appeared");

    QCOMPARE(windowProperty(*bar, QStringLiteral("_NET_WM_WINDOW_TYPE")).trimmed(),
             QStringLiteral("_NET_WM_WINDOW_TYPE(ATOM) = _NET_WM_WINDOW_TYPE_DOCK"));
    // A manager without stacking layers tiles, and focuses what it manages: there nobody manages the bar.
    const auto attributes = attributesOf(static_cast<xcb_window_t>(*bar));
    QVERIFY(attributes);
    QCOMPARE(attributes->overrideRedirect, !supportsHint("_NET_WM_STATE_ABOVE"));

    // Managers rewrite the state themselves and leave out what they do not support.
    const QString state = windowProperty(*bar, QStringLiteral("_NET_WM_STATE"));
    const QStringList atoms = state.section(QLatin1Char('='), 1)
                                  .split(QLatin1Char(','), Qt::SkipEmptyParts)
                                  .replaceInStrings(QRegularExpression(QStringLiteral("\\s")), QString());
    for (const QByteArray& wanted :
         {QByteArrayLiteral("_NET_WM_STATE_ABOVE"), QByteArrayLiteral("_NET_WM_STATE_STICKY"),
          QByteArrayLiteral("_NET_WM_STATE_SKIP_TASKBAR"), QByteArrayLiteral("_NET_WM_STATE_SKIP_PAGER")}) {
        if (supportsHint(wanted))
            QVERIFY2(atoms.contains(QString::fromLatin1(wanted)), qPrintable(state));
    }
    const QString hints = windowProperty(*bar, QStringLiteral("WM_HINTS"));
    QVERIFY2(hints.contains(QStringLiteral("Client accepts input or input focus: False")), qPrintable(hints));

    // Above an application window that covers its place and is active.
    const QRect frame = frameOf(*bar);
    TestProcess probe(QStringLiteral(TESTWINDOW_BINARY),
                      {QStringLiteral("keys"), m_home->path(QStringLiteral("presses.txt")),
                       m_home->path(QStringLiteral("text.txt"))});
    const auto client = probe.waitForWindow(QStringLiteral("keyprobe"), true);
    QVERIFY2(client, "keyprobe did not become the active window");
    const QString id = QString::number(*client);
    xdotool(
        {QStringLiteral("windowmove"), id, QString::number(frame.x() - 20), QString::number(frame.y() - 60)});
    xdotool({QStringLiteral("windowsize"), id, QString::number(frame.width() + 40), QStringLiteral("200")});
    QVERIFY2(waitFor([&] { return frameOf(*client).intersects(frame); }),
             qPrintable(describe(frameOf(*client))));
    QVERIFY(xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), id}));
    QVERIFY2(waitFor([&] { return isStackedAbove(*bar, *client); }), "the bar is below the active window");
    QCOMPARE(frameOf(*bar), frame);
    // Nobody else stacks a bar that nobody manages: it climbs back over a window raised above it.
    if (attributes->overrideRedirect) {
        raiseFrameToTop(*client);
        QVERIFY2(waitFor([&] { return isStackedAbove(*bar, *client); }),
                 "the bar stayed below a raised window");
    }

    // On every workspace, at the same place.
    QVERIFY(switchWorkspace(1));
    QVERIFY2(waitFor([&] { return isViewable(*bar) && frameOf(*bar) == frame; }),
             qPrintable(describe(frameOf(*bar))));
    QVERIFY(switchWorkspace(0));
}

void TestBarEndToEnd::startUpAndProbeTellHowFarFacilitiesReach()
{
    // tests/wayland/with-wayland-session.sh runs XWayland under a compositor: mutter as GNOME's session
    // has it, or weston, which names no desktop. Every other session is an X11 one.
    const QString compositor = qEnvironmentVariable("VANTRIL_TEST_COMPOSITOR");
    const bool wayland = !compositor.isEmpty();
    const QString underXWayland = QStringLiteral(
        "instead start the application under XWayland (GDK_BACKEND=x11 for GTK, QT_QPA_PLATFORM=xcb for Qt)");
    const QString shortcutSettings =
        compositor == QLatin1String("mutter")
            ? QStringLiteral(
                  "GNOME's Settings › Keyboard › Keyboard Shortcuts › View and Customize Shortcuts › "
                  "Custom Shortcuts")
            : QStringLiteral("the desktop's keyboard settings");
    const QString setsInstead =
        compositor == QLatin1String("mutter")
            ? QStringLiteral("instead run \"gnome-extensions enable vantril@vantril.github.io\" and log in "
                             "again, or start the application under XWayland (GDK_BACKEND=x11 for GTK, "
                             "QT_QPA_PLATFORM=xcb for Qt)")
            : underXWayland;
    const QString whatWorks = QStringLiteral("In this Wayland session ");
    const QStringList startUp =
        wayland ? QStringList{whatWorks +
                                  QStringLiteral("the hot key works in X11 windows only; instead bind "
                                                 "`vantril --toggle` in ") +
                                  shortcutSettings,
                              whatWorks + QStringLiteral("key and paste chips work in X11 windows only; ") +
                                  underXWayland,
                              whatWorks +
                                  QStringLiteral("closing a stack by a click elsewhere and auto-hide work "
                                                 "in X11 windows only; instead close a stack by clicking "
                                                 "its chip again"),
                              whatWorks + QStringLiteral("application sets work in X11 windows only; ") +
                                  setsInstead}
                : QStringList{};
    const QString desktop = compositor == QLatin1String("mutter") ? QStringLiteral(" (GNOME)") : QString();
    const QStringList reportLines =
        wayland
            ? QStringList{QStringLiteral("hot key grab: yes (X11 windows only)"),
                          QStringLiteral("session: Wayland%1, through XWayland").arg(desktop),
                          QStringLiteral("hot key: X11 windows only; instead bind `vantril --toggle` in ") +
                              shortcutSettings,
                          QStringLiteral("key and paste chips: X11 windows only; ") + underXWayland,
                          QStringLiteral("click elsewhere and auto-hide: X11 windows only; instead close a "
                                         "stack by clicking its chip again"),
                          QStringLiteral("application sets: X11 windows only; ") + setsInstead}
            : QStringList{QStringLiteral("hot key grab: yes"),
                          QStringLiteral("session: X11"),
                          QStringLiteral("hot key: all windows"),
                          QStringLiteral("key and paste chips: all windows"),
                          QStringLiteral("click elsewhere and auto-hide: all windows"),
                          QStringLiteral("application sets: all windows")};

    RunningBar vantril(*m_home);
    const auto said = [&] {
        return vantril.log().split(QLatin1Char('\n')).filter(QRegularExpression(QStringLiteral("^In this ")));
    };
    // Said while starting, before the bar is mapped. (Weston lists no client windows to find it by.)
    if (startUp.isEmpty())
        QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    else
        QVERIFY2(waitFor([&] { return said().size() >= startUp.size(); }), qPrintable(vantril.log()));
    QCOMPARE(said(), startUp);

    QProcess probe;
    QProcessEnvironment variables = m_home->environment();
    variables.insert(QStringLiteral("TMPDIR"), m_home->path(QString()));
    probe.setProcessEnvironment(variables);
    probe.start(QStringLiteral(VANTRIL_BINARY), {QStringLiteral("--probe")});
    QVERIFY(probe.waitForFinished(60000));
    const QStringList report = QString::fromUtf8(probe.readAllStandardOutput()).split(QLatin1Char('\n'));
    for (const QString& line : reportLines)
        QVERIFY2(report.contains(line), qPrintable(report.join(QLatin1Char('\n'))));
}

void TestBarEndToEnd::clickLeavesTheActiveWindowAlone()
{
    TestProcess probe(QStringLiteral(TESTWINDOW_BINARY),
                      {QStringLiteral("keys"), m_home->path(QStringLiteral("presses.txt")),
                       m_home->path(QStringLiteral("text.txt"))});
    const auto client = probe.waitForWindow(QStringLiteral("keyprobe"), true);
    QVERIFY2(client, "keyprobe did not become the active window");

    RunningBar vantril(*m_home);
    const auto bar = vantril.waitForBar();
    QVERIFY2(bar, "no bar window appeared");
    QCOMPARE(activeWindow(), *client); // showing the bar takes nothing either

    const BarLayout layout = layoutOf(Config::defaults());
    QVERIFY(vantril.waitForWidth(layout.width));
    QVERIFY(clickAt(layout.centreOf(QStringLiteral("Files"), vantril.frame())));
    // The window manager lists the flyout only after it has handled the press that opened it, so a change
    // of focus caused by that press would show by now.
    std::optional<quintptr> flyout;
    QVERIFY2(waitFor([&] { return (flyout = vantril.shownFlyout()).has_value(); }),
             "the click opened no flyout");
    QCOMPARE(activeWindow(), *client);

    // Nor does a click on the flyout, here on its margin, where it does nothing else.
    QVERIFY(waitUntilDrawn(frameOf(*flyout)));
    QVERIFY(clickAt(frameOf(*flyout).topLeft() + QPoint(frameOf(*flyout).width() / 2, 3)));
    // A chip's tap comes after it and is handled after it: a change of focus would show by then.
    QVERIFY(clickAt(layout.centreOf(QStringLiteral("Files"), vantril.frame())));
    QVERIFY2(waitFor([&] { return !vantril.shownFlyout(); }), "the second tap on Files left the flyout open");
    QCOMPARE(activeWindow(), *client);
}

void TestBarEndToEnd::keysAndPasteChipsTypeIntoTheFrontWindow()
{
    const QString presses = m_home->path(QStringLiteral("presses.txt"));
    const QString text = m_home->path(QStringLiteral("text.txt"));
    TestProcess probe(QStringLiteral(TESTWINDOW_BINARY), {QStringLiteral("keys"), presses, text});
    const auto client = probe.waitForWindow(QStringLiteral("keyprobe"), true);
    QVERIFY2(client, "keyprobe did not become the active window");

    BarConfig config;
    config.buttons = {ButtonSpec::make(QStringLiteral("Shout"), QStringLiteral("keyboard"),
                                       QStringLiteral("keys"), QStringLiteral("shift+h")),
                      ButtonSpec::make(QStringLiteral("Greet"), QStringLiteral("keyboard"),
                                       QStringLiteral("paste"), QStringLiteral("hello from the bar"))};
    QVERIFY(m_home->writeButtons(Config::encoded(config)));
    RunningBar vantril(*m_home, withoutFrontApp());
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    const BarLayout layout = layoutOf(config);
    QVERIFY(vantril.waitForWidth(layout.width));
    QCOMPARE(activeWindow(), *client);

    QVERIFY(clickAt(layout.centreOf(QStringLiteral("Shout"), vantril.frame())));
    QVERIFY2(waitFor([&] { return readAll(text) == "H"; }),
             qPrintable(QStringLiteral("typed: %1; active: %2, keyprobe %3")
                            .arg(QString::fromUtf8(readAll(presses)))
                            .arg(activeWindow())
                            .arg(*client)));
    QVERIFY(clickAt(layout.centreOf(QStringLiteral("Greet"), vantril.frame())));
    QVERIFY2(waitFor([&] { return readAll(text) == "Hhello from the bar"; }),
             qPrintable(QStringLiteral("the line holds: %1; active: %2, keyprobe %3")
                            .arg(QString::fromUtf8(readAll(text)))
                            .arg(activeWindow())
                            .arg(*client)));
    QCOMPARE(activeWindow(), *client);
}

void TestBarEndToEnd::stackOpensAboveItsChipAndCloses()
{
    TestProcess probe(QStringLiteral(TESTWINDOW_BINARY),
                      {QStringLiteral("keys"), m_home->path(QStringLiteral("presses.txt")),
                       m_home->path(QStringLiteral("text.txt"))});
    const auto client = probe.waitForWindow(QStringLiteral("keyprobe"), true);
    QVERIFY2(client, "keyprobe did not become the active window");
    RunningBar vantril(*m_home);
    const auto bar = vantril.waitForBar();
    QVERIFY2(bar, "no bar window appeared");

    const BarLayout layout = layoutOf(Config::defaults());
    QVERIFY(vantril.waitForWidth(layout.width));
    const QRect barFrame = vantril.frame();
    const QRectF chip = layout.chips.value(QStringLiteral("Files"));
    const QPoint chipCentre = barFrame.topLeft() + chip.center().toPoint();

    QVERIFY(clickAt(chipCentre));
    std::optional<quintptr> flyout;
    QVERIFY2(waitFor([&] { return (flyout = vantril.shownFlyout()).has_value(); }), "no flyout appeared");
    const auto placed = [&] {
        const QRect frame = frameOf(*flyout);
        return qAbs(frame.x() + frame.width() / 2.0 - (barFrame.x() + chip.center().x())) <= 2 &&
               frame.bottom() + 1 == barFrame.y() - 4 && frame.height() > 0;
    };
    QVERIFY2(waitFor(placed), qPrintable(QStringLiteral("flyout %1, bar %2, chip centre x %3")
                                             .arg(describe(frameOf(*flyout)), describe(barFrame))
                                             .arg(barFrame.x() + chip.center().x())));

    // The same chip again closes it.
    QVERIFY(clickAt(chipCentre));
    QVERIFY2(waitFor([&] { return !vantril.shownFlyout(); }), "a second tap left the flyout open");

    // A click into another application closes it too.
    QVERIFY(clickAt(chipCentre));
    QVERIFY2(waitFor([&] { return vantril.shownFlyout().has_value(); }), "the flyout did not open again");
    // Into its middle, which a tiling manager's full-screen tile has under the bar and the flyout too.
    const QPoint elsewhere = frameOf(*client).center();
    QVERIFY(!frameOf(*vantril.shownFlyout()).contains(elsewhere) && !barFrame.contains(elsewhere));
    QVERIFY(clickAt(elsewhere));
    QVERIFY2(waitFor([&] { return !vantril.shownFlyout(); }), "a click elsewhere left the flyout open");
    QVERIFY(waitFor([&] { return frameOf(*bar) == barFrame; })); // the bar stays where it was
}

void TestBarEndToEnd::movedBarComesBackWhereItWasLeft()
{
    RunningBar first(*m_home, {{QStringLiteral("VANTRIL_MOVE"), QStringLiteral("100,50")}});
    const auto bar = first.waitForBar();
    QVERIFY2(bar, "no bar window appeared");

    const int width = frameOf(*bar).width();
    const QRect area = workArea();
    const QPoint start(qRound(area.x() + area.width() / 2.0 - width / 2.0),
                       area.bottom() + 1 - 6 - BarView::barHeight);
    const QPoint moved = start + QPoint(100, -50);
    const auto near = [](const QPoint& a, const QPoint& b) {
        return qAbs(a.x() - b.x()) <= 1 && qAbs(a.y() - b.y()) <= 1;
    };
    QVERIFY2(waitFor([&] { return near(frameOf(*bar).topLeft(), moved); }),
             qPrintable(describe(frameOf(*bar))));

    // The place is saved a moment after the move; stopping earlier would lose it.
    QVERIFY2(waitFor([&] { return readAll(m_home->preferencesFile()).contains("[barPosition]"); }),
             "the moved place was never saved");
    first.stop(true);

    RunningBar second(*m_home);
    const auto again = second.waitForBar();
    QVERIFY2(again, "no bar window appeared after the restart");
    QVERIFY2(waitFor([&] { return near(frameOf(*again).topLeft(), moved); }),
             qPrintable(QStringLiteral("%1, expected x=%2 y=%3")
                            .arg(describe(frameOf(*again)))
                            .arg(moved.x())
                            .arg(moved.y())));
}

void TestBarEndToEnd::gripDragMovesBarAndTurnsFlyoutsDown()
{
    RunningBar vantril(*m_home);
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    const BarLayout layout = layoutOf(Config::defaults());
    QVERIFY(vantril.waitForWidth(layout.width));
    const QRect start = vantril.frame();

    // Up into the top half of the screen by the grip: the window follows the pointer.
    const QPoint grip = gripOf(start);
    const QPoint offset(-100, -600);
    QVERIFY(dragBetween(grip, grip + offset, 20));
    QVERIFY2(waitFor([&] { return frameOf(vantril.bar()).topLeft() == start.topLeft() + offset; }),
             qPrintable(describe(frameOf(vantril.bar()))));
    QVERIFY2(waitFor([&] { return readAll(m_home->preferencesFile()).contains("[barPosition]"); }),
             "the dragged place was never saved");

    // Rebuilt for the upper half: the stack now opens below the bar.
    const QRect moved = frameOf(vantril.bar());
    QVERIFY(clickAt(moved.topLeft() + layout.chips.value(QStringLiteral("Files")).center().toPoint()));
    std::optional<quintptr> flyout;
    QVERIFY2(waitFor([&] { return (flyout = vantril.shownFlyout()).has_value(); }), "no flyout appeared");
    QVERIFY2(
        waitFor([&] { return frameOf(*flyout).y() == moved.bottom() + 1 + 4; }),
        qPrintable(QStringLiteral("flyout %1, bar %2").arg(describe(frameOf(*flyout)), describe(moved))));
}

void TestBarEndToEnd::openingAProgramAsksFirst_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("script with an execute bit") << int(Stray::Script);
    QTest::newRow("ELF at --x--x--x") << int(Stray::Elf);
    QTest::newRow("desktop entry at 0644") << int(Stray::DesktopEntry);
    QTest::newRow("FIFO named x.desktop") << int(Stray::Fifo);
}

void TestBarEndToEnd::openingAProgramAsksFirst()
{
    QFETCH(int, kind);
    const QString folder = m_home->path(QStringLiteral("offered"));
    QVERIFY(QDir().mkpath(folder));
    const QString file = makeStray(Stray(kind), folder);
    QVERIFY(!file.isEmpty());
    const bool fifo = Stray(kind) == Stray::Fifo;

    BarConfig config;
    config.buttons = {
        ButtonSpec::make(QStringLiteral("Target"), QStringLiteral("doc"), QStringLiteral("open"), file),
        ButtonSpec::make(QStringLiteral("Listed"), QStringLiteral("folder"), QStringLiteral("folder"),
                         folder)};
    QVERIFY(m_home->writeButtons(Config::encoded(config)));
    // The session's choice of Qt platform, which the bar overrides for itself alone.
    RunningBar vantril(*m_home,
                       withoutFrontApp({{QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland")}}));
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    const BarLayout layout = layoutOf(config);
    QVERIFY(vantril.waitForWidth(layout.width));
    const QRect bar = vantril.frame();
    // The question has no title of its own: the window manager shows the program's name.
    const QString question = QStringLiteral("vantril");
    const auto openListing = [&]() -> std::optional<QRect> {
        if (!waitFor([&] { return !vantril.shownFlyout(); }) ||
            !clickAt(layout.centreOf(QStringLiteral("Listed"), bar)))
            return std::nullopt;
        std::optional<quintptr> flyout;
        if (!waitFor([&] { return (flyout = vantril.shownFlyout()) && frameOf(*flyout).height() > 16; }))
            return std::nullopt;
        return frameOf(*flyout);
    };

    // The chip asks, in a window that takes the keyboard; Escape cancels. A FIFO is refused at once, and
    // the bar goes on answering.
    QVERIFY(clickAt(layout.centreOf(QStringLiteral("Target"), bar)));
    if (!fifo) {
        const auto asked = vantril.waitForWindow(question, true);
        QVERIFY2(asked, "the chip asked nothing, or the question did not take the keyboard");
        saveScreenshot(QStringLiteral("question.png"), screenRect(*asked));
        QVERIFY(keys({QStringLiteral("Escape")}));
        QVERIFY2(waitFor([&] { return !vantril.shownWindow(question); }), "Escape left the question open");
    }

    // The folder listing's row asks the same; Return takes the default, Cancel. Two rows, "Open in File
    // Manager" and the file, of one height between 8 pixel margins, 6 apart.
    const auto listing = openListing();
    QVERIFY2(listing, "the folder did not open");
    const int rowHeight = (listing->height() - 2 * 8 - 6) / 2;
    QVERIFY(clickAt(QPoint(listing->center().x(), listing->y() + 8 + rowHeight + 6 + rowHeight / 2)));
    if (!fifo) {
        QVERIFY2(vantril.waitForWindow(question, true), "the listing's row asked nothing");
        QVERIFY(keys({QStringLiteral("Return")}));
        QVERIFY2(waitFor([&] { return !vantril.shownWindow(question); }), "Return left the question open");
    }
    QVERIFY2(openListing(), "the bar stopped answering");
    QVERIFY2(!QFile::exists(markerOf(file)), "a cancelled question started the program");
    if (fifo)
        return;

    // Run starts it: a desktop entry through GIO, a program directly.
    QVERIFY(clickAt(layout.centreOf(QStringLiteral("Target"), bar)));
    const auto asked = vantril.waitForWindow(question, true);
    QVERIFY2(asked, "the chip asked nothing the second time");
    const QRect frame = frameOf(*asked);
    const auto run = runButtonIn(QFileInfo(file).fileName(), frame.size());
    QVERIFY(run);
    QVERIFY(clickAt(frame.topLeft() + *run));
    QVERIFY2(waitFor([&] { return QFile::exists(markerOf(file)); }), "Run started nothing");
    if (Stray(kind) == Stray::Script)
        QTRY_COMPARE(readAll(markerOf(file)), QByteArray("wayland"));
}

void TestBarEndToEnd::autoHideLetsClicksThroughAndRestBringsItBack()
{
    // Away from where the bar will be, so that nothing is hovered or rested on by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
    QVERIFY(QDir().mkpath(QFileInfo(m_home->preferencesFile()).absolutePath()));
    QVERIFY(writeAll(m_home->preferencesFile(), "[General]\nautoHide=true\n"));

    // A window across the bottom of the screen, under where the bar will be, that records the clicks
    // reaching it. Started first, so that the bar is mapped above it.
    const QRect area = workArea();
    const QRect band(area.x(), area.bottom() + 1 - 200, area.width(), 200);
    const QString presses = m_home->path(QStringLiteral("presses.txt"));
    TestProcess probe(QStringLiteral(TESTWINDOW_BINARY),
                      {QStringLiteral("clicks"), presses, QString::number(band.x()),
                       QString::number(band.y()), QString::number(band.width()),
                       QString::number(band.height())});
    const auto probeWindow = probe.waitForWindow(QStringLiteral("clickprobe"));
    QVERIFY2(probeWindow, "the click probe did not appear");
    QVERIFY2(placeWindow(*probeWindow, band), qPrintable(describe(frameOf(*probeWindow))));

    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    const QRect frame = frameOf(*bar);
    QVERIFY2(band.contains(frame), qPrintable(describe(frame)));

    // The pointer on the bar keeps it, or brings it back if it went while the program was starting.
    QVERIFY(moveTo(frame.center()));
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "the bar is not shown with the pointer on it");

    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
    QElapsedTimer away;
    away.start();
    // Read straight from the server and often: how long it takes is what is measured here.
    const xcb_atom_t opacity = atom(QByteArrayLiteral("_NET_WM_WINDOW_OPACITY"));
    QVERIFY2(waitFor([&] { return cardinal(static_cast<xcb_window_t>(*bar), opacity) == 0u; },
                     windowTimeoutMs, 10),
             qPrintable(windowProperty(*bar, QStringLiteral("_NET_WM_WINDOW_OPACITY"))));
    const qint64 hiddenAfter = away.elapsed();
    QVERIFY2(hiddenAfter <= hideWithinMs,
             qPrintable(QStringLiteral("hidden only %1 ms after the pointer left").arg(hiddenAfter)));
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "faded out, but still drawn or taking clicks");

    // A click on a chip's place goes to the window below, where the bar takes nothing.
    const QPoint files = frame.topLeft() +
                         layoutOf(Config::defaults()).chips.value(QStringLiteral("Files")).center().toPoint();
    QVERIFY(clickAt(files));
    const QByteArray expected =
        QStringLiteral("press button=1 x=%1 y=%2\n").arg(files.x()).arg(files.y()).toUtf8();
    QVERIFY2(waitFor([&] { return readAll(presses).contains(expected); }),
             qPrintable(QStringLiteral("the probe saw: ") + QString::fromUtf8(readAll(presses))));
    QVERIFY(!vantril.shownFlyout());
    // The click left the pointer on the bar's place, where it now rests.
    QElapsedTimer resting;
    resting.start();
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "resting on the bar's place did not bring it back");
    QVERIFY2(
        resting.elapsed() <= showWithinMs,
        qPrintable(QStringLiteral("shown only %1 ms after the pointer came to rest").arg(resting.elapsed())));
    QCOMPARE(frameOf(*bar), frame);

    // And it takes clicks again.
    const qsizetype pressesBefore = readAll(presses).size();
    QVERIFY(clickAt(files));
    QVERIFY2(waitFor([&] { return vantril.shownFlyout().has_value(); }), "a click on Files opened nothing");
    QCOMPARE(readAll(presses).size(), pressesBefore);
}

void TestBarEndToEnd::hotKeyTogglesAlsoWithNumLock()
{
    // Away from where the bar will be, so that nothing is hovered or rested on by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
    const QString taken = QStringLiteral("Hot key ctrl+alt+b is taken by another program; bind `vantril "
                                         "--toggle` in your desktop's keyboard settings instead");
    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY(waitFor([&] { return fullyShown(*bar); }));
    // Some window managers bind the combination themselves (icewm opens a browser with it).
    // The line comes before the bar is shown; the pipe may still hold it.
    if (waitFor([&] { return vantril.log().contains(taken); }, 2000))
        QSKIP("the window manager holds Ctrl+Alt+B, and the program says so");

    QVERIFY(keys({QStringLiteral("ctrl+alt+b")}));
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "Ctrl+Alt+B did not hide the bar");
    QVERIFY(keys({QStringLiteral("ctrl+alt+b")}));
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "Ctrl+Alt+B did not show the bar again");

    // Num Lock is a modifier to the server: a grab of Ctrl+Alt+B alone would no longer match.
    QVERIFY(keys({QStringLiteral("Num_Lock")}));
    QVERIFY2(waitFor(numLockOn, 5000), qPrintable(output(QStringLiteral("xset"), {QStringLiteral("q")})));
    QVERIFY(keys({QStringLiteral("ctrl+alt+b")}));
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "Ctrl+Alt+B with Num Lock on did not hide the bar");
    QVERIFY(keys({QStringLiteral("ctrl+alt+b")}));
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "Ctrl+Alt+B with Num Lock on did not show the bar");

    QVERIFY(keys({QStringLiteral("Num_Lock")}));
    QVERIFY2(waitFor([] { return !numLockOn(); }, 5000), "Num Lock stayed on");
    QVERIFY(vantril.isRunning());
    QVERIFY2(!vantril.log().contains(taken), qPrintable(vantril.log()));

    // A second copy, with folders of its own, finds the combination taken, and says so once.
    TestHome otherHome;
    RunningBar second(otherHome, withoutFrontApp());
    QVERIFY2(second.waitForBar(m_defaultWidth), "no second bar appeared");
    QVERIFY2(waitFor([&] { return second.log().contains(taken); }), qPrintable(second.log()));
    QCOMPARE(second.log().count(taken), 1);
}

void TestBarEndToEnd::commandsReachTheRunningBar()
{
    // Away from where the bar will be, so that nothing is hovered or rested on by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY(waitFor([&] { return fullyShown(*bar); }));

    // A second start hands its command line over and ends within a second of what any start of the
    // program takes on this machine; the first bar stays the only one.
    const Ran version = run(*m_home, {QStringLiteral("--version")});
    const Ran second = run(*m_home, {});
    QCOMPARE(second.status, 0);
    QVERIFY2(second.ms <= version.ms + 1000,
             qPrintable(QStringLiteral("%1 ms, --version %2 ms").arg(second.ms).arg(version.ms)));
    QCOMPARE(barsShown(), 1);
    QVERIFY(vantril.isRunning());

    const QList<std::pair<QStringList, bool>> steps = {
        {{QStringLiteral("--toggle")}, false}, {{QStringLiteral("--toggle")}, true},
        {{QStringLiteral("--hide")}, false},   {{QStringLiteral("--show")}, true},
        {{QStringLiteral("--hide")}, false},   {{}, true}, // a plain start shows the running bar
    };
    for (const auto& [arguments, shown] : steps) {
        const Ran ran = run(*m_home, arguments);
        QCOMPARE(ran.status, 0);
        QCOMPARE(ran.err, QString());
        QVERIFY2(waitFor([&] { return shown ? fullyShown(*bar) : fullyHidden(*bar); }),
                 qPrintable(QStringLiteral("after \"vantril %1\"").arg(arguments.join(u' '))));
    }

    QCOMPARE(run(*m_home, {QStringLiteral("--open"), QStringLiteral("Files")}).status, 0);
    QVERIFY2(waitFor([&] { return flyoutOn(vantril, QStringLiteral("Files")); }),
             "--open Files opened nothing");
    const Ran unknown = run(*m_home, {QStringLiteral("--open"), QStringLiteral("nosuchtitle")});
    QCOMPARE(unknown.status, 1);
    QCOMPARE(unknown.err, QStringLiteral("vantril: no button is titled \"nosuchtitle\"\n"));

    // The answer comes once the bar has let its folder go.
    QCOMPARE(run(*m_home, {QStringLiteral("--quit")}).status, 0);
    QVERIFY2(vantril.process().waitForFinished(windowTimeoutMs), "--quit left the bar running");
    QCOMPARE(vantril.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(vantril.process().exitCode(), 0);
    QVERIFY(!QFileInfo::exists(InstancePaths::lockFile(m_home->configDir())));
}

void TestBarEndToEnd::oneBarPerFolderAfterACrashBesideOthersAndWithoutALock()
{
    // Away from where the bar will be, so that nothing is hovered or rested on by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
    const QString socket = InstancePaths::socketPath(
        m_home->configDir(), qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath());
    const QString lock = InstancePaths::lockFile(m_home->configDir());
    {
        RunningBar crashed(*m_home, withoutFrontApp());
        QVERIFY2(crashed.waitForBar(m_defaultWidth), "no bar window appeared");
        QVERIFY(waitFor([&] { return QFileInfo::exists(socket); }));
        crashed.stop(); // SIGKILL: nothing is cleaned up
    }
    QVERIFY(QFileInfo::exists(lock) && QFileInfo::exists(socket));

    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar took over from the crashed one");
    QCOMPARE(run(*m_home, {QStringLiteral("--toggle")}).status, 0);
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "the bar that took over does not take commands");

    // Another folder has a bar of its own beside it, and its own commands.
    TestHome other;
    RunningBar beside(other, withoutFrontApp());
    QVERIFY2(beside.waitForBar(m_defaultWidth), "no bar for the second folder");
    QCOMPARE(barsShown(), 2);
    QCOMPARE(run(other, {QStringLiteral("--quit")}).status, 0);
    QVERIFY2(beside.process().waitForFinished(windowTimeoutMs), "--quit left the second bar running");
    QVERIFY(vantril.isRunning());
    QVERIFY(fullyHidden(*bar));

    // A "folder" that is a file cannot hold a lock: its bar runs all the same, says so, and takes commands.
    TestHome broken;
    QVERIFY(writeAll(broken.configDir(), "not a folder"));
    RunningBar unlocked(broken, withoutFrontApp());
    QVERIFY2(unlocked.waitForBar(m_defaultWidth), "no bar without a lock");
    const QString line = QStringLiteral("vantril: cannot make a lock file in \"%1\" (it cannot be created); "
                                        "running without one\n")
                             .arg(broken.configDir());
    QVERIFY2(waitFor([&] { return unlocked.log().contains(line); }), qPrintable(unlocked.log()));
    QCOMPARE(run(broken, {}).status, 0);
    QCOMPARE(barsShown(), 2);
    QCOMPARE(run(broken, {QStringLiteral("--quit")}).status, 0);
    QVERIFY2(unlocked.process().waitForFinished(windowTimeoutMs), "--quit left the unlocked bar running");
    QCOMPARE(unlocked.log().count(line), 1);
}

QTEST_MAIN(TestBarEndToEnd)
#include "tst_bare2e.moc"
