// The X11 back end against a real X server and window manager (openbox), checked from the outside and
// driven with xdotool and xclip like a user would. Runs inside tests/x11/with-x-session.sh. Until its dock
// windows appear this process shows no window, so the focus stays with keyprobe for the key tests.

#include "XSession.h"
#include "actions/KeyCombo.h"
#include "actions/Keys.h"
#include "platform/Platform.h"
#include "platform/x11/KeySymbols.h"
#include "platform/x11/WorkArea.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

namespace {

/// What the clipboard gives another program that asks for `target`; empty when it has nothing of it.
QString clipboardAs(const QString& target)
{
    return output(u"xclip"_s, {u"-o"_s, u"-selection"_s, u"clipboard"_s, u"-t"_s, target});
}

/// Whether the clipboard's owner offers any form of text. (Not read as text: xclip answers any request
/// with its data, whatever the target.)
bool offersText()
{
    const QStringList targets = clipboardAs(u"TARGETS"_s).split(u'\n');
    return std::any_of(targets.cbegin(), targets.cend(), [](const QString& target) {
        return target.startsWith(u"text/"_s) ||
               QStringList{u"UTF8_STRING"_s, u"STRING"_s, u"TEXT"_s, u"COMPOUND_TEXT"_s}.contains(target);
    });
}

/// Hands the clipboard to an xclip that stays behind as its owner; returns once it offers `target`.
bool putOnClipboard(const QString& target, const QByteArray& content)
{
    QProcess xclip;
    // The owner it leaves behind keeps any inherited pipe open: give it none.
    xclip.setStandardOutputFile(QProcess::nullDevice());
    xclip.setStandardErrorFile(QProcess::nullDevice());
    xclip.start(u"xclip"_s, {u"-selection"_s, u"clipboard"_s, u"-t"_s, target});
    xclip.write(content);
    xclip.closeWriteChannel();
    return waitFor([&] { return clipboardAs(u"TARGETS"_s).split(u'\n').contains(target); }, 10000, 20);
}

/// Clicks until `arrived` holds. openbox copies a client's input shape onto its frame only when it
/// handles the ShapeNotify, so a click sent at once may still meet the frame's old shape.
bool clickUntil(const QPoint& global, const std::function<bool()>& arrived)
{
    for (int attempt = 0; attempt < 20; ++attempt) {
        if (!clickAt(global))
            return false;
        if (waitFor(arrived, 250))
            return true;
    }
    return false;
}

} // namespace

class TestX11 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void everyKeyNameHasAKeySymbol();
    void keysArriveWithTheirModifiersAndLeaveNoneHeld_data();
    void keysArriveWithTheirModifiersAndLeaveNoneHeld();
    void pasteTypesTextAndPutsTheClipboardBack_data();
    void pasteTypesTextAndPutsTheClipboardBack();

    // From here on a window of this process has the focus.
    void dockTakesNoFocusAndLetsClicksThrough();
    void panelsShrinkTheWorkArea();
    void clickMonitorSeesPressesOnEveryWindow();
    void pointerSampledOnItsBeat();

private:
    /// The key presses keyprobe logged since the last call, once one of `key` is among them.
    QStringList presses(const QString& key = {});
    QString probeText() const { return QString::fromUtf8(readAll(m_dir.filePath(u"text.txt"_s))); }

    QTemporaryDir m_dir;
    qsizetype m_consumed = 0;
    std::unique_ptr<TestProcess> m_probe;
    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<Keys> m_keys;
    std::unique_ptr<PressRecorder> m_below;
};

void TestX11::initTestCase()
{
    QVERIFY(onSessionScreen());
    m_probe = std::make_unique<TestProcess>(
        QStringLiteral(TESTWINDOW_BINARY),
        QStringList{u"keys"_s, m_dir.filePath(u"presses.txt"_s), m_dir.filePath(u"text.txt"_s)});
    // Keys pressed before the window manager has given keyprobe the focus would go to the root and be lost.
    QVERIFY(m_probe->waitForWindow(u"keyprobe"_s, true));
    m_platform = createDesktopPlatform();
    QVERIFY(m_platform->input().isTrusted());
    m_keys = std::make_unique<Keys>(m_platform->input(), m_platform->clipboard(), m_platform->beeper(),
                                    m_platform->scheduler());
}

QStringList TestX11::presses(const QString& key)
{
    QStringList lines;
    waitFor(
        [&] {
            const QByteArray all = readAll(m_dir.filePath(u"presses.txt"_s));
            // Only whole lines: keyprobe may be halfway through writing the last one.
            const qsizetype end = std::max(m_consumed, all.lastIndexOf('\n') + 1);
            lines +=
                QString::fromUtf8(all.mid(m_consumed, end - m_consumed)).split(u'\n', Qt::SkipEmptyParts);
            m_consumed = end;
            return key.isEmpty() || std::any_of(lines.cbegin(), lines.cend(),
                                                [&](const QString& line) { return line.endsWith(key); });
        },
        10000, 10);
    return lines;
}

void TestX11::everyKeyNameHasAKeySymbol()
{
    const auto& codes = KeyCombo::codes();
    for (auto it = codes.cbegin(); it != codes.cend(); ++it)
        QVERIFY2(KeySymbols::forKeyCode(it.value()), qPrintable(it.key()));
}

void TestX11::keysArriveWithTheirModifiersAndLeaveNoneHeld_data()
{
    QTest::addColumn<QString>("combo");
    QTest::addColumn<QString>("arrived"); // as keyprobe names it; empty: nothing at all
    // Qt names the key by the symbol the modifiers produce: shift+4 is the dollar sign on the US layout.
    QTest::newRow("ctrl+shift+4") << u"ctrl+shift+4"_s << u"ctrl,shift+Key_Dollar"_s;
    QTest::newRow("alt+f5") << u"alt+f5"_s << u"alt+Key_F5"_s;
    QTest::newRow("cmd+left") << u"cmd+left"_s << u"meta+Key_Left"_s;
    QTest::newRow("shift+cmd+.") << u"shift+cmd+."_s << u"shift,meta+Key_Greater"_s;
    QTest::newRow("all four") << u"ctrl+alt+shift+cmd+f5"_s << u"ctrl,alt,shift,meta+Key_F5"_s;
    QTest::newRow("a") << u"a"_s << u"Key_A"_s;
    QTest::newRow("not a combination") << u"nonsense"_s << QString();
}

void TestX11::keysArriveWithTheirModifiersAndLeaveNoneHeld()
{
    QFETCH(QString, combo);
    QFETCH(QString, arrived);
    presses();
    {
        StderrCapture capture;
        m_keys->press(combo);
        QCOMPARE(capture.text().contains(u"Bad key combo: "_s + combo + u'\n'), arrived.isEmpty());
    }
    // Then a plain key, which arrives without modifiers: none is left held. The server delivers in order,
    // so whatever the combination posted comes first.
    m_keys->press(u"b"_s);
    const QStringList all = presses(u"Key_B"_s);
    // The modifier keys' own presses come before the key of a combination.
    QStringList keys = all;
    keys.removeIf([](const QString& key) {
        return key.contains(QRegularExpression(u"Key_(Control|Shift|Alt|Meta|Super_.)$"_s));
    });
    QCOMPARE(keys, (arrived.isEmpty() ? QStringList{u"Key_B"_s} : QStringList{arrived, u"Key_B"_s}));
    if (arrived.isEmpty())
        QCOMPARE(all, QStringList{u"Key_B"_s}); // not even a modifier
}

void TestX11::pasteTypesTextAndPutsTheClipboardBack_data()
{
    QTest::addColumn<QString>("target"); // what the user left on the clipboard
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("text") << u"UTF8_STRING"_s << QByteArray("old clipboard text");
    QByteArray png;
    QBuffer buffer(&png);
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::red);
    image.save(&buffer, "PNG");
    QTest::newRow("picture") << u"image/png"_s << png;
}

void TestX11::pasteTypesTextAndPutsTheClipboardBack()
{
    QFETCH(QString, target);
    QFETCH(QByteArray, content);
    const bool text = target == u"UTF8_STRING"_s;
    QVERIFY(putOnClipboard(target, content));
    QCOMPARE(offersText(), text);
    m_keys->press(u"ctrl+a"_s);
    m_keys->press(u"backspace"_s);
    QTRY_COMPARE_WITH_TIMEOUT(probeText(), QString(), 10000);

    const QString pasted = u"Hello from the bar"_s;
    QElapsedTimer sincePaste;
    sincePaste.start();
    m_keys->paste(pasted);
    // A read that is over before the restore can fire must see the pasted text. Qt may fire a coarse timer
    // up to 5% early, hence the margin; a slower machine simply gets no verdict here.
    const QString during = clipboardAs(u"UTF8_STRING"_s);
    if (sincePaste.elapsed() < Keys::restoreDelayMs * 9 / 10)
        QCOMPARE(during, pasted);
    QTRY_COMPARE_WITH_TIMEOUT(probeText(), pasted, 10000);
    // Then the user's clipboard is back; over a picture, the pasted text is gone and nothing textual
    // takes its place.
    QTRY_COMPARE_WITH_TIMEOUT(clipboardAs(u"UTF8_STRING"_s), text ? QString::fromUtf8(content) : QString(),
                              10000);
    QCOMPARE(offersText(), text);
    QVERIFY(sincePaste.elapsed() >= Keys::restoreDelayMs * 9 / 10);
}

void TestX11::dockTakesNoFocusAndLetsClicksThrough()
{
    m_below = std::make_unique<PressRecorder>();
    m_below->setGeometry(200, 200, 500, 300);
    m_below->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_below.get()));
    m_below->activateWindow();
    QTRY_COMPARE(activeWindow(), m_below->winId());

    // Without Qt::WindowDoesNotAcceptFocus Qt writes input True; prepareDock alone turns it off, and keeps
    // Qt's window group (the ninth field).
    PressRecorder bar(nullptr, Qt::Window | Qt::FramelessWindowHint);
    bar.setAttribute(Qt::WA_ShowWithoutActivating);
    bar.setGeometry(QRect(m_below->geometry().center() - QPoint(100, 30), QSize(200, 60)));
    const QList<quint32> before = values(bar.winId(), "WM_HINTS");
    QVERIFY(!refusesFocus(bar.winId()));
    m_platform->panelWindows().prepareDock(bar.winId());
    QVERIFY(refusesFocus(bar.winId()));
    QCOMPARE(values(bar.winId(), "WM_HINTS").value(8), before.value(8));
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    QVERIFY(m_below->geometry().contains(bar.geometry()));

    // Clicks go through to the window below, and once they come back they reach the bar over all of it,
    // even where it grew meanwhile.
    m_platform->panelWindows().setClickThrough(bar.winId(), true);
    bar.resize(300, 60);
    QTRY_COMPARE(frameOf(bar.winId()).width(), 300);
    QVERIFY(clickUntil(bar.geometry().center(), [&] { return !m_below->presses.isEmpty(); }));
    QVERIFY(bar.presses.isEmpty());
    QVERIFY(bar.isVisible());
    m_platform->panelWindows().setClickThrough(bar.winId(), false);
    const QPoint grown = bar.geometry().topRight() + QPoint(-20, 20);
    QVERIFY(clickUntil(grown, [&] { return !bar.presses.isEmpty(); }));
    // Both windows are this process's: their presses arrive in the order the server sent them.
    const qsizetype barPresses = bar.presses.size(), belowPresses = m_below->presses.size();
    QVERIFY(clickAt(grown));
    QTRY_COMPARE(bar.presses.size(), barPresses + 1);
    QCOMPARE(m_below->presses.size(), belowPresses);
    // None of the presses on the dock took the focus.
    QCOMPARE(activeWindow(), m_below->winId());
}

void TestX11::panelsShrinkTheWorkArea()
{
    const QRect screen(0, 0, screenWidth, screenHeight);
    QCOMPARE(currentWorkArea(), std::optional(screen));
    const QList<ScreenInfo> all = m_platform->screens().all();
    QCOMPARE(all.size(), 1);
    QVERIFY(all[0].number != 0);
    QCOMPARE(all[0].frame, screen);
    QCOMPARE(m_platform->screens().screenOf(QRect(1400, 850, 200, 200)), std::optional(all[0]));
    QVERIFY(!m_platform->screens().screenOf(QRect(2000, 100, 50, 50)));

    // A 40 pixel strut at the bottom, as a taskbar would claim.
    QWidget panel(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
    panel.setAttribute(Qt::WA_ShowWithoutActivating);
    panel.setGeometry(0, 860, 1440, 40);
    m_platform->panelWindows().prepareDock(panel.winId());
    const quint32 strut[] = {0, 0, 0, 40};
    xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, panel.winId(), atom("_NET_WM_STRUT"),
                        XCB_ATOM_CARDINAL, 32, 4, strut);
    panel.show();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    QTRY_COMPARE(currentWorkArea(), std::optional(QRect(0, 0, 1440, 860)));
    QTRY_COMPARE(m_platform->screens().all()[0].available, QRect(0, 0, 1440, 860));
    panel.hide();
    QTRY_COMPARE(currentWorkArea(), std::optional(screen));
}

void TestX11::clickMonitorSeesPressesOnEveryWindow()
{
    TestProcess other(QStringLiteral(TESTWINDOW_BINARY), {u"app"_s, u"other"_s});
    const auto window = other.waitForWindow(u"other"_s);
    QVERIFY2(window && placeWindow(*window, QRect(900, 100, 400, 200)),
             "no window of another program appeared");
    const QPoint spot = frameOf(*window).center();
    // This process's own windows too; the caller tells them apart by position.
    const QPoint own = m_below->geometry().topLeft() + QPoint(20, 20);
    QVERIFY(!frameOf(*window).contains(own));
    QList<QPoint> seen;
    ClickMonitor& monitor = m_platform->clickMonitor();
    const QObject listening;
    connect(&monitor, &ClickMonitor::pressed, &listening, [&seen](QPoint at) { seen.append(at); });
    monitor.start();

    // Left and right presses, each where it was (raw presses carry no place: each is read when it comes).
    QVERIFY(clickAt(spot, 1));
    QTRY_COMPARE(seen, QList<QPoint>{spot});
    QVERIFY(clickAt(spot, 3));
    QTRY_COMPARE(seen, (QList<QPoint>{spot, spot}));
    // Neither the middle button nor the wheel.
    for (const int button : {2, 4, 5})
        QVERIFY(clickAt(spot, button));
    QVERIFY(clickAt(own));
    QTRY_COMPARE(seen, (QList<QPoint>{spot, spot, own}));
    monitor.stop();
}

void TestX11::pointerSampledOnItsBeat()
{
    PointerTicker& ticker = m_platform->pointerTicker();
    QList<PointerState> samples;
    QList<qint64> times;
    QElapsedTimer clock;
    const QObject listening;
    connect(&ticker, &PointerTicker::sampled, &listening, [&](const PointerState& pointer) {
        samples.append(pointer);
        times.append(clock.elapsed());
    });
    const QPoint spot = m_below->geometry().topLeft() + QPoint(40, 40);
    QVERIFY(xdotool({u"mousemove"_s, u"--sync"_s, QString::number(spot.x()), QString::number(spot.y())}));
    clock.start();
    ticker.start(50);
    QTRY_VERIFY(samples.size() >= 5);
    // Each sample waits for its beat, whoever keeps it: none comes early.
    for (qsizetype i = 1; i < times.size(); ++i)
        QVERIFY2(times[i] - times[i - 1] >= 25, qPrintable(QString::number(times[i] - times[i - 1])));
    QCOMPARE(samples.last().position, spot);
    QCOMPARE(samples.last().buttons, 0);

    QVERIFY(xdotool({u"mousedown"_s, u"1"_s}));
    QTRY_COMPARE(samples.last().buttons, int(Qt::LeftButton));
    QVERIFY(xdotool({u"mousedown"_s, u"3"_s}));
    QTRY_COMPARE(samples.last().buttons, int(Qt::LeftButton | Qt::RightButton));
    QVERIFY(xdotool({u"mouseup"_s, u"3"_s, u"mouseup"_s, u"1"_s}));
    QTRY_COMPARE(samples.last().buttons, 0);
    // Stopped, it is silent: an idle bar must not wake (a wait already sent is dropped, not reported).
    ticker.stop();
    const qsizetype stopped = samples.size();
    QTest::qWait(4 * 50);
    QCOMPARE(samples.size(), stopped);
}

QTEST_MAIN(TestX11)
#include "tst_x11.moc"
