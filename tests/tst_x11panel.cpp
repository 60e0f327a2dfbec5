// The bar's windows, monitors and the global click notice against a real X server and window manager
// (openbox), checked from the outside with xprop and driven with xdotool like a user would.
// Runs inside tests/x11/with-x-session.sh.

#include "X11Windows.h"
#include "platform/Platform.h"
#include "platform/x11/WorkArea.h"

#include <QApplication>
#include <QMouseEvent>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QWidget>
#include <functional>

namespace {

/// Clicks until `arrived` holds. openbox copies a client's input shape onto its frame only when it
/// handles the ShapeNotify, so a click sent at once may still meet the frame's old shape.
bool clickUntil(const QPoint& global, const std::function<bool()>& arrived)
{
    for (int attempt = 0; attempt < 20; ++attempt) {
        if (!clickAt(global))
            return false;
        if (QTest::qWaitFor(arrived, 250))
            return true;
    }
    return false;
}

/// A window that counts the presses it gets.
class Recorder : public QWidget
{
public:
    using QWidget::QWidget;
    int presses = 0;

protected:
    void mousePressEvent(QMouseEvent*) override { ++presses; }
};

} // namespace

class TestX11Panel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void clickThrough();
    void wmHintsWithoutQtsHelp();
    void screens();
    void panelReservesSpace();
    void clickMonitorSeesOtherClients();
    void pressedButtons();

private:
    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<Recorder> m_below;
    std::unique_ptr<Recorder> m_bar;
};

void TestX11Panel::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    m_platform = createDesktopPlatform();

    m_below = std::make_unique<Recorder>();
    m_below->setWindowTitle(QStringLiteral("below"));
    m_below->setGeometry(200, 200, 500, 300);
    m_below->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_below.get()));
    m_below->activateWindow();
    QTRY_COMPARE(activeWindow(), m_below->winId());

    // The flags the bar itself uses.
    m_bar = std::make_unique<Recorder>(nullptr);
    m_bar->setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                          Qt::WindowDoesNotAcceptFocus);
    m_bar->setAttribute(Qt::WA_ShowWithoutActivating);
    m_bar->setFocusPolicy(Qt::NoFocus);
    const QRect belowFrame = m_below->geometry();
    m_bar->setGeometry(QRect(QPoint(0, 0), QSize(200, 60)).translated(belowFrame.center() - QPoint(100, 30)));
    m_platform->panelWindows().prepareDock(m_bar->winId());
    m_bar->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_bar.get()));
    QTRY_VERIFY(windowProperty(m_bar->winId(), QStringLiteral("_NET_WM_STATE"))
                    .contains(QStringLiteral("SKIP_PAGER")));
    QVERIFY(m_below->geometry().contains(m_bar->geometry()));
}

void TestX11Panel::cleanupTestCase()
{
    m_platform->clickMonitor().stop();
    m_bar.reset();
    m_below.reset();
}

void TestX11Panel::clickThrough()
{
    const QPoint spot = m_bar->geometry().center();
    const int barPresses = m_bar->presses;
    const int belowPresses = m_below->presses;

    m_platform->panelWindows().setClickThrough(m_bar->winId(), true);
    QVERIFY(clickUntil(spot, [&] { return m_below->presses > belowPresses; }));
    QCOMPARE(m_bar->presses, barPresses);
    QVERIFY(m_bar->isVisible());

    m_platform->panelWindows().setClickThrough(m_bar->winId(), false);
    QVERIFY(clickUntil(spot, [&] { return m_bar->presses > barPresses; }));
    int below = m_below->presses;
    QVERIFY(clickAt(spot));
    QTRY_COMPARE(m_bar->presses, barPresses + 2);
    QTest::qWait(100);
    QCOMPARE(m_below->presses, below);

    // A bar that grew while clicks went through takes clicks over its whole new size once they come back.
    m_platform->panelWindows().setClickThrough(m_bar->winId(), true);
    m_bar->resize(m_bar->width() + 100, m_bar->height());
    QTRY_COMPARE(m_bar->width(), 300);
    m_platform->panelWindows().setClickThrough(m_bar->winId(), false);
    const QPoint grown = m_bar->geometry().topRight() + QPoint(-20, 20);
    QVERIFY(clickUntil(grown, [&] { return m_bar->presses > barPresses + 2; }));
    below = m_below->presses;
    QVERIFY(clickAt(grown));
    QTRY_COMPARE(m_bar->presses, barPresses + 4);
    QTest::qWait(100);
    QCOMPARE(m_below->presses, below);
}

void TestX11Panel::wmHintsWithoutQtsHelp()
{
    // Without Qt::WindowDoesNotAcceptFocus Qt writes input True; prepareDock alone must turn it off.
    Recorder plain(nullptr);
    plain.setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    plain.setAttribute(Qt::WA_ShowWithoutActivating);
    plain.setGeometry(QRect(m_below->geometry().bottomLeft() - QPoint(-20, 80), QSize(100, 40)));
    const quintptr window = plain.winId();
    const QString before = windowProperty(window, QStringLiteral("WM_HINTS"));
    QVERIFY2(before.contains(QStringLiteral("input focus: True")), qPrintable(before));
    m_platform->panelWindows().prepareDock(window);
    const QString after = windowProperty(window, QStringLiteral("WM_HINTS"));
    QVERIFY2(after.contains(QStringLiteral("input focus: False")), qPrintable(after));
    // Qt's window group survives the rewrite.
    const auto group = QRegularExpression(QStringLiteral("group leader: 0x[0-9a-f]+")).match(before);
    QVERIFY2(group.hasMatch(), qPrintable(before));
    QVERIFY2(after.contains(group.captured()), qPrintable(after));

    plain.show();
    QVERIFY(QTest::qWaitForWindowExposed(&plain));
    const quintptr active = activeWindow();
    QVERIFY(clickAt(plain.geometry().center()));
    QTRY_COMPARE(plain.presses, 1);
    QTest::qWait(200);
    QCOMPARE(activeWindow(), active);
}

void TestX11Panel::screens()
{
    Screens& screens = m_platform->screens();
    const QList<ScreenInfo> all = screens.all();
    QCOMPARE(all.size(), 1);
    QVERIFY(all[0].number != 0);
    QCOMPARE(all[0].frame, QRect(0, 0, 1440, 900));
    QVERIFY(all[0].frame.contains(all[0].available));
    QVERIFY(!all[0].available.isEmpty());

    QCOMPARE(screens.screenOf(QRect(100, 100, 50, 50)), std::optional<ScreenInfo>(all[0]));
    QCOMPARE(screens.screenOf(QRect(1400, 850, 200, 200)), std::optional<ScreenInfo>(all[0]));
    QVERIFY(!screens.screenOf(QRect(2000, 100, 50, 50)));
}

void TestX11Panel::panelReservesSpace()
{
    QCOMPARE(currentWorkArea(), std::optional<QRect>(QRect(0, 0, 1440, 900)));

    QWidget panel(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
    panel.setAttribute(Qt::WA_ShowWithoutActivating);
    panel.setGeometry(0, 860, 1440, 40);
    m_platform->panelWindows().prepareDock(panel.winId());
    // A 40 pixel strut at the bottom, as a taskbar would claim.
    QVERIFY(QProcess::execute(QStringLiteral("xprop"),
                              {QStringLiteral("-id"), QString::number(panel.winId()), QStringLiteral("-f"),
                               QStringLiteral("_NET_WM_STRUT"), QStringLiteral("32c"), QStringLiteral("-set"),
                               QStringLiteral("_NET_WM_STRUT"), QStringLiteral("0, 0, 0, 40")}) == 0);
    panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));

    QTRY_COMPARE(currentWorkArea(), std::optional<QRect>(QRect(0, 0, 1440, 860)));
    QTRY_COMPARE(m_platform->screens().all()[0].available, QRect(0, 0, 1440, 860));
    QCOMPARE(m_platform->screens().all()[0].frame, QRect(0, 0, 1440, 900));

    panel.hide();
    QTRY_COMPARE(currentWorkArea(), std::optional<QRect>(QRect(0, 0, 1440, 900)));
}

void TestX11Panel::clickMonitorSeesOtherClients()
{
    QProcess message;
    message.start(QStringLiteral("xmessage"),
                  {QStringLiteral("-name"), QStringLiteral("vantril-probe"), QStringLiteral("-geometry"),
                   QStringLiteral("400x200+900+100"), QStringLiteral("a window of another program")});
    QVERIFY(message.waitForStarted());
    const QString found =
        output(QStringLiteral("xdotool"),
               {QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
                QStringLiteral("--classname"), QStringLiteral("vantril-probe")});
    QVERIFY2(!found.trimmed().isEmpty(), "xmessage did not appear");
    const QString geometry =
        output(QStringLiteral("xdotool"), {QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"),
                                           found.split(QLatin1Char('\n')).first()});
    const auto x = QRegularExpression(QStringLiteral("X=(\\d+)")).match(geometry);
    const auto y = QRegularExpression(QStringLiteral("Y=(\\d+)")).match(geometry);
    QVERIFY2(x.hasMatch() && y.hasMatch(), qPrintable(geometry));
    // Into the message text, well clear of xmessage's "okay" button at the bottom.
    const QPoint spot(x.captured(1).toInt() + 30, y.captured(1).toInt() + 20);

    QList<QPoint> seen;
    ClickMonitor& monitor = m_platform->clickMonitor();
    monitor.start([&seen](QPoint at) { seen.append(at); });

    QVERIFY(clickAt(spot, 1));
    QTRY_COMPARE(seen.size(), 1);
    QCOMPARE(seen[0], spot);

    QVERIFY(clickAt(spot, 3));
    QTRY_COMPARE(seen.size(), 2);
    QCOMPARE(seen[1], spot);

    // The middle button and the wheel are not of interest.
    QVERIFY(clickAt(spot, 2));
    QVERIFY(clickAt(spot, 4));
    QVERIFY(clickAt(spot, 5));
    QTest::qWait(300);
    QCOMPARE(seen.size(), 2);

    // Presses on the program's own windows are reported too; the caller tells them apart by position.
    const int belowPresses = m_below->presses;
    QVERIFY(clickAt(m_below->geometry().topLeft() + QPoint(20, 20)));
    QTRY_COMPARE(seen.size(), 3);
    QTRY_COMPARE(m_below->presses, belowPresses + 1);

    // A replaced callback gets the next press instead of the old one.
    int replaced = 0;
    monitor.start([&replaced](QPoint) { ++replaced; });
    QVERIFY(clickAt(spot, 1));
    QTRY_COMPARE(replaced, 1);
    QCOMPARE(seen.size(), 3);

    monitor.stop();
    QVERIFY(clickAt(spot, 1));
    QVERIFY(clickAt(spot, 3));
    QTest::qWait(300);
    QCOMPARE(replaced, 1);
    QCOMPARE(seen.size(), 3);

    // And it starts again after a stop.
    monitor.start([&seen](QPoint at) { seen.append(at); });
    QVERIFY(clickAt(spot, 1));
    QTRY_COMPARE(seen.size(), 4);
    monitor.stop();

    message.kill();
    message.waitForFinished();
}

void TestX11Panel::pressedButtons()
{
    ClickMonitor& monitor = m_platform->clickMonitor();
    const QPoint spot = m_below->geometry().topLeft() + QPoint(40, 40);
    QVERIFY(xdotool({QStringLiteral("mousemove"), QStringLiteral("--sync"), QString::number(spot.x()),
                     QString::number(spot.y())}));
    QCOMPARE(monitor.pointer().buttons, 0);
    QCOMPARE(monitor.pointer().position, spot);

    QVERIFY(xdotool({QStringLiteral("mousedown"), QStringLiteral("1")}));
    QTRY_COMPARE(monitor.pointer().buttons, int(Qt::LeftButton));
    QVERIFY(xdotool({QStringLiteral("mousedown"), QStringLiteral("3")}));
    QTRY_COMPARE(monitor.pointer().buttons, int(Qt::LeftButton | Qt::RightButton));
    QVERIFY(xdotool({QStringLiteral("mouseup"), QStringLiteral("3")}));
    QVERIFY(xdotool({QStringLiteral("mouseup"), QStringLiteral("1")}));
    QTRY_COMPARE(monitor.pointer().buttons, 0);
}

QTEST_MAIN(TestX11Panel)
#include "tst_x11panel.moc"
