// The X11 back end against a real X server and window manager (openbox): key presses and pastes
// delivered to another program that has the focus, then the bar's windows, monitors and the global click
// notice, checked from the outside with xprop and driven with xdotool like a user would. Runs inside
// tests/x11/with-x-session.sh. Until its dock windows appear this process shows no window, so the focus
// stays with keyprobe for the key tests.

#include "TestSupport.h"
#include "X11Windows.h"
#include "actions/KeyCombo.h"
#include "actions/Keys.h"
#include "platform/Platform.h"
#include "platform/x11/KeySymbols.h"
#include "platform/x11/WorkArea.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QMouseEvent>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>
#include <algorithm>
#include <functional>

namespace {

/// One key press as keyprobe saw it.
struct Press
{
    QString key;
    QString text;
    QString mods;
};

/// The modifier keys' own presses, which come before the key of a combination and are not of interest.
bool isModifierKey(const QString& key)
{
    static const QStringList names = {
        QStringLiteral("Key_Control"), QStringLiteral("Key_Shift"),   QStringLiteral("Key_Alt"),
        QStringLiteral("Key_Meta"),    QStringLiteral("Key_Super_L"), QStringLiteral("Key_Super_R"),
    };
    return names.contains(key);
}

struct Output
{
    int exitCode = -1;
    QByteArray out;
};

/// Runs a program to its end while this process keeps serving its event loop: when it owns the clipboard,
/// the program may be waiting on this very process to hand the contents over.
Output run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForStarted(10000))
        return {};
    QElapsedTimer timer;
    timer.start();
    while (process.state() != QProcess::NotRunning && timer.elapsed() < 10000)
        QTest::qWait(5);
    if (process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    if (process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput()};
}

Output clipboardAs(const QString& target)
{
    return run(QStringLiteral("xclip"), {QStringLiteral("-o"), QStringLiteral("-selection"),
                                         QStringLiteral("clipboard"), QStringLiteral("-t"), target});
}

/// What another program reading the clipboard as text gets, or nothing when the clipboard has no text.
std::optional<QString> clipboardText()
{
    const Output read = clipboardAs(QStringLiteral("UTF8_STRING"));
    if (read.exitCode != 0 || read.out.isEmpty())
        return std::nullopt;
    return QString::fromUtf8(read.out);
}

/// Whether the clipboard's owner offers any form of text.
bool offersText()
{
    const QList<QByteArray> targets = clipboardAs(QStringLiteral("TARGETS")).out.split('\n');
    return std::any_of(targets.cbegin(), targets.cend(), [](const QByteArray& target) {
        return target.startsWith("text/") || target == "UTF8_STRING" || target == "STRING" ||
               target == "TEXT" || target == "COMPOUND_TEXT";
    });
}

/// Hands the clipboard to an xclip that stays behind as its owner; returns once the clipboard offers
/// `target`.
bool putOnClipboard(const QStringList& arguments, const QByteArray& input, const QString& target)
{
    QProcess xclip;
    // The owner it leaves behind keeps any inherited pipe open: give it none.
    xclip.setStandardOutputFile(QProcess::nullDevice());
    xclip.setStandardErrorFile(QProcess::nullDevice());
    xclip.start(QStringLiteral("xclip"),
                QStringList{QStringLiteral("-selection"), QStringLiteral("clipboard")} + arguments);
    if (!xclip.waitForStarted(10000))
        return false;
    xclip.write(input);
    xclip.closeWriteChannel();
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 10000) {
        if (clipboardAs(QStringLiteral("TARGETS")).out.split('\n').contains(target.toUtf8()))
            return true;
        QTest::qWait(20);
    }
    return false;
}

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

class TestX11 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void inputIsTrusted();
    void everyKeyNameHasAKeySymbol();
    void combosArriveWithTheirModifiers_data();
    void combosArriveWithTheirModifiers();
    void modifiersAreReleasedAfterwards();
    void badComboIsLoggedAndPostsNothing();

    void pasteTypesTextAndPutsTheUsersTextBack();
    void pasteOverAnImageLeavesNoText();

    // From here on a window of this process has the focus.
    void dockOverAWindowThatHasTheFocus();
    void clickThrough();
    void wmHintsWithoutQtsHelp();
    void screens();
    void panelReservesSpace();
    void clickMonitorSeesOtherClients();
    void pointerSampledOnItsBeat();

private:
    /// Presses logged since the last call.
    QList<Press> newPresses();
    /// Waits for the next press of a key that is not a modifier, and consumes everything up to it.
    std::optional<Press> nextKey();
    /// Drops every press seen so far.
    void forgetPresses();
    QString probeText() const { return QString::fromUtf8(readAll(m_textFile)); }
    /// Empties keyprobe's line edit, so that a paste is all it then holds.
    void clearProbe();

    QTemporaryDir m_dir;
    QString m_pressFile;
    QString m_textFile;
    qsizetype m_consumed = 0;
    QList<Press> m_pending;
    QProcess m_probe;
    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<Keys> m_keys;
    std::unique_ptr<Recorder> m_below;
    std::unique_ptr<Recorder> m_bar;
};

void TestX11::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    QVERIFY(m_dir.isValid());
    m_pressFile = m_dir.filePath(QStringLiteral("presses.txt"));
    m_textFile = m_dir.filePath(QStringLiteral("text.txt"));

    m_probe.setProcessChannelMode(QProcess::ForwardedChannels);
    m_probe.start(QStringLiteral(TESTWINDOW_BINARY), {QStringLiteral("keys"), m_pressFile, m_textFile});
    QVERIFY2(m_probe.waitForStarted(10000), qPrintable(m_probe.errorString()));

    // Keys pressed before openbox has given keyprobe the focus would go to the root window and be lost.
    QTRY_COMPARE_WITH_TIMEOUT(windowName(activeWindow()), std::optional(QStringLiteral("keyprobe")), 20000);

    m_platform = createDesktopPlatform();
    m_keys = std::make_unique<Keys>(m_platform->input(), m_platform->clipboard(), m_platform->beeper(),
                                    m_platform->scheduler());
}

void TestX11::cleanupTestCase()
{
    m_platform->clickMonitor().stop();
    m_bar.reset();
    m_below.reset();
    m_keys.reset();
    m_platform.reset();
    m_probe.kill();
    m_probe.waitForFinished(10000);
}

QList<Press> TestX11::newPresses()
{
    const QByteArray all = readAll(m_pressFile);
    // Only whole lines: keyprobe may be halfway through writing the last one.
    const qsizetype end = all.lastIndexOf('\n') + 1;
    QList<Press> presses;
    if (end <= m_consumed)
        return presses;
    const QString chunk = QString::fromUtf8(all.mid(m_consumed, end - m_consumed));
    m_consumed = end;
    for (const QString& line : chunk.split(u'\n', Qt::SkipEmptyParts)) {
        Press press;
        for (const QString& field : line.split(u' ', Qt::SkipEmptyParts)) {
            if (field.startsWith(QStringLiteral("key=")))
                press.key = field.mid(4);
            else if (field.startsWith(QStringLiteral("text=")))
                press.text = field.mid(5);
            else if (field.startsWith(QStringLiteral("mods=")))
                press.mods = field.mid(5);
        }
        presses.append(press);
    }
    return presses;
}

std::optional<Press> TestX11::nextKey()
{
    QElapsedTimer timer;
    timer.start();
    do {
        m_pending += newPresses();
        while (!m_pending.isEmpty()) {
            const Press press = m_pending.takeFirst();
            if (!isModifierKey(press.key))
                return press;
        }
        QTest::qWait(10);
    } while (timer.elapsed() < 10000);
    return std::nullopt;
}

void TestX11::forgetPresses()
{
    newPresses();
    m_pending.clear();
}

void TestX11::clearProbe()
{
    m_keys->press(QStringLiteral("ctrl+a"));
    m_keys->press(QStringLiteral("backspace"));
    QVERIFY(nextKey().has_value());
    QVERIFY(nextKey().has_value());
    QTRY_COMPARE_WITH_TIMEOUT(probeText(), QString(), 10000);
}

void TestX11::inputIsTrusted()
{
    QVERIFY(m_platform->input().isTrusted());
}

void TestX11::everyKeyNameHasAKeySymbol()
{
    const auto& codes = KeyCombo::codes();
    for (auto it = codes.cbegin(); it != codes.cend(); ++it)
        QVERIFY2(KeySymbols::forKeyCode(it.value()), qPrintable(it.key()));
}

void TestX11::combosArriveWithTheirModifiers_data()
{
    QTest::addColumn<QString>("combo");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("mods");

    // Qt names the key by the symbol the modifiers produce: shift+4 is the dollar sign on the US layout.
    QTest::newRow("ctrl+shift+4") << QStringLiteral("ctrl+shift+4") << QStringLiteral("Key_Dollar")
                                  << QStringLiteral("ctrl,shift");
    QTest::newRow("alt+f5") << QStringLiteral("alt+f5") << QStringLiteral("Key_F5") << QStringLiteral("alt");
    QTest::newRow("cmd+left") << QStringLiteral("cmd+left") << QStringLiteral("Key_Left")
                              << QStringLiteral("meta");
    QTest::newRow("shift+cmd+.") << QStringLiteral("shift+cmd+.") << QStringLiteral("Key_Greater")
                                 << QStringLiteral("shift,meta");
    QTest::newRow("a") << QStringLiteral("a") << QStringLiteral("Key_A") << QString();
}

void TestX11::combosArriveWithTheirModifiers()
{
    QFETCH(QString, combo);
    QFETCH(QString, key);
    QFETCH(QString, mods);

    forgetPresses();
    m_keys->press(combo);
    const auto press = nextKey();
    QVERIFY2(press, "keyprobe saw no key press");
    QCOMPARE(press->key, key);
    QCOMPARE(press->mods, mods);
}

void TestX11::modifiersAreReleasedAfterwards()
{
    forgetPresses();
    m_keys->press(QStringLiteral("ctrl+alt+shift+cmd+f5"));
    const auto combo = nextKey();
    QVERIFY(combo);
    QCOMPARE(combo->mods, QStringLiteral("ctrl,alt,shift,meta"));

    m_keys->press(QStringLiteral("b"));
    const auto plain = nextKey();
    QVERIFY(plain);
    QCOMPARE(plain->key, QStringLiteral("Key_B"));
    QCOMPARE(plain->text, QStringLiteral("b"));
    QCOMPARE(plain->mods, QString());
}

void TestX11::badComboIsLoggedAndPostsNothing()
{
    forgetPresses();
    {
        StderrCapture capture;
        m_keys->press(QStringLiteral("nonsense"));
        QVERIFY2(capture.text().contains(QStringLiteral("Bad key combo: nonsense\n")),
                 qPrintable(capture.text()));
    }
    // The server delivers in order: had the bad combo posted anything, it would arrive before this key.
    m_keys->press(QStringLiteral("c"));
    QTRY_VERIFY_WITH_TIMEOUT((m_pending += newPresses(), !m_pending.isEmpty()), 10000);
    QCOMPARE(m_pending.first().key, QStringLiteral("Key_C"));
    QCOMPARE(m_pending.first().mods, QString());
}

void TestX11::pasteTypesTextAndPutsTheUsersTextBack()
{
    const QString users = QStringLiteral("old clipboard text");
    const QString pasted = QStringLiteral("Hello from the bar");
    QVERIFY(putOnClipboard({}, users.toUtf8(), QStringLiteral("UTF8_STRING")));
    QCOMPARE(clipboardText(), users);
    clearProbe();
    if (QTest::currentTestFailed())
        return;

    QElapsedTimer sincePaste;
    sincePaste.start();
    m_keys->paste(pasted);
    // A read that is over before the restore can fire must see the pasted text. Qt may fire a coarse timer
    // up to 5% early, hence the margin; a slower machine simply gets no verdict here.
    const auto during = clipboardText();
    if (sincePaste.elapsed() < Keys::restoreDelayMs * 9 / 10)
        QCOMPARE(during, pasted);
    else
        qInfo("clipboard read took %lld ms, too long to see the pasted text", sincePaste.elapsed());

    QTRY_COMPARE_WITH_TIMEOUT(probeText(), pasted, 10000);
    QTRY_COMPARE_WITH_TIMEOUT(clipboardText(), std::optional<QString>(users), 10000);
    QVERIFY(sincePaste.elapsed() >= Keys::restoreDelayMs * 9 / 10);
}

void TestX11::pasteOverAnImageLeavesNoText()
{
    const QString png = m_dir.filePath(QStringLiteral("picture.png"));
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::red);
    QVERIFY(image.save(png));
    QVERIFY(putOnClipboard({QStringLiteral("-t"), QStringLiteral("image/png")}, readAll(png),
                           QStringLiteral("image/png")));
    // Not read as text here: xclip answers any request with its data, whatever the target.
    QVERIFY(!offersText());
    clearProbe();
    if (QTest::currentTestFailed())
        return;

    const QString pasted = QStringLiteral("Hello over a picture");
    m_keys->paste(pasted);
    QTRY_COMPARE_WITH_TIMEOUT(probeText(), pasted, 10000);
    // The pasted text is gone once the restore has run, and nothing textual takes its place.
    QTRY_COMPARE_WITH_TIMEOUT(clipboardText(), std::nullopt, 10000);
    QVERIFY(!offersText());
}

void TestX11::dockOverAWindowThatHasTheFocus()
{
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

void TestX11::clickThrough()
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

void TestX11::wmHintsWithoutQtsHelp()
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

void TestX11::screens()
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

void TestX11::panelReservesSpace()
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

void TestX11::clickMonitorSeesOtherClients()
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
    const auto connection =
        connect(&monitor, &ClickMonitor::pressed, this, [&seen](QPoint at) { seen.append(at); });
    monitor.start();

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

    monitor.stop();
    QVERIFY(clickAt(spot, 1));
    QVERIFY(clickAt(spot, 3));
    QTest::qWait(300);
    QCOMPARE(seen.size(), 3);

    // And it starts again after a stop.
    monitor.start();
    QVERIFY(clickAt(spot, 1));
    QTRY_COMPARE(seen.size(), 4);
    monitor.stop();
    disconnect(connection);

    message.kill();
    message.waitForFinished();
}

void TestX11::pointerSampledOnItsBeat()
{
    PointerTicker& ticker = m_platform->pointerTicker();
    QList<PointerState> samples;
    QList<qint64> times;
    QElapsedTimer clock;
    const auto connection = connect(&ticker, &PointerTicker::sampled, this, [&](const PointerState& pointer) {
        samples.append(pointer);
        times.append(clock.elapsed());
    });
    const QPoint spot = m_below->geometry().topLeft() + QPoint(40, 40);
    QVERIFY(xdotool({QStringLiteral("mousemove"), QStringLiteral("--sync"), QString::number(spot.x()),
                     QString::number(spot.y())}));
    clock.start();
    ticker.start(50);
    QTRY_VERIFY(samples.size() >= 5);
    // Each sample waits for its beat, whoever keeps it: none comes early.
    for (qsizetype i = 1; i < times.size(); ++i)
        QVERIFY2(times[i] - times[i - 1] >= 25, qPrintable(QString::number(times[i] - times[i - 1])));
    QCOMPARE(samples.last().position, spot);
    QCOMPARE(samples.last().buttons, 0);

    QVERIFY(xdotool({QStringLiteral("mousedown"), QStringLiteral("1")}));
    QTRY_COMPARE(samples.last().buttons, int(Qt::LeftButton));
    QVERIFY(xdotool({QStringLiteral("mousedown"), QStringLiteral("3")}));
    QTRY_COMPARE(samples.last().buttons, int(Qt::LeftButton | Qt::RightButton));
    QVERIFY(xdotool({QStringLiteral("mouseup"), QStringLiteral("3")}));
    QVERIFY(xdotool({QStringLiteral("mouseup"), QStringLiteral("1")}));
    QTRY_COMPARE(samples.last().buttons, 0);

    ticker.stop();
    const qsizetype stopped = samples.size();
    QTest::qWait(200);
    QCOMPARE(samples.size(), stopped);
    // And it beats again after a stop.
    ticker.start(50);
    QTRY_VERIFY(samples.size() > stopped);
    ticker.stop();
    disconnect(connection);
}

QTEST_MAIN(TestX11)
#include "tst_x11.moc"
