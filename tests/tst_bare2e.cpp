// The real program against a real X server and window manager (openbox unless VANTRIL_TEST_WM names
// another): where its windows appear,
// what they tell the window manager, and what clicks on them do, observed from the outside with xprop,
// xwininfo and xdotool. Runs inside tests/x11/with-x-session.sh; every test starts its own copy of the
// program with configuration folders of its own, so no test sees what another one saved.

#include "BarLayout.h"
#include "RunningBar.h"
#include "StrayPrograms.h"
#include "TestSupport.h"
#include "bar/BarView.h"
#include "bar/RunQuestionBox.h"
#include "config/ConfigReader.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTest>

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

} // namespace

class TestBarEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { m_home.reset(); }

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

private:
    std::unique_ptr<TestHome> m_home;
};

void TestBarEndToEnd::initTestCase()
{
    QVERIFY(onSessionScreen());
    useProgramIconTheme();
}

void TestBarEndToEnd::init()
{
    m_home = std::make_unique<TestHome>();
    QVERIFY(m_home->isValid());
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

    const auto chip = [](const QString& title, const QString& action, const QString& argument) {
        return QJsonObject{{QStringLiteral("title"), title},
                           {QStringLiteral("symbol"), QStringLiteral("keyboard")},
                           {QStringLiteral("action"), action},
                           {QStringLiteral("argument"), argument}};
    };
    const QJsonObject config{
        {QStringLiteral("buttons"),
         QJsonArray{
             chip(QStringLiteral("Shout"), QStringLiteral("keys"), QStringLiteral("shift+h")),
             chip(QStringLiteral("Greet"), QStringLiteral("paste"), QStringLiteral("hello from the bar"))}}};
    QVERIFY(m_home->writeButtons(QJsonDocument(config).toJson()));
    RunningBar vantril(*m_home, withoutFrontApp());
    QVERIFY2(vantril.waitForBar(), "no bar window appeared");
    const BarLayout layout = layoutOf(*ConfigReader::decode(QJsonDocument(config).toJson()));
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
    RunningBar vantril(*m_home, withoutFrontApp());
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
}

QTEST_MAIN(TestBarEndToEnd)
#include "tst_bare2e.moc"
