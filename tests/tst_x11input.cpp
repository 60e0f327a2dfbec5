// Key presses and pastes delivered through the real X server to another program that has the focus.
// Runs inside tests/x11/with-x-session.sh; this process itself never shows a window, so the focus
// stays with keyprobe throughout.

#include "TestSupport.h"
#include "X11Windows.h"
#include "actions/KeyCombo.h"
#include "actions/Keys.h"
#include "platform/Platform.h"
#include "platform/x11/KeySymbols.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>

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

} // namespace

class TestX11Input : public QObject
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
};

void TestX11Input::initTestCase()
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

void TestX11Input::cleanupTestCase()
{
    m_keys.reset();
    m_platform.reset();
    m_probe.kill();
    m_probe.waitForFinished(10000);
}

QList<Press> TestX11Input::newPresses()
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

std::optional<Press> TestX11Input::nextKey()
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

void TestX11Input::forgetPresses()
{
    newPresses();
    m_pending.clear();
}

void TestX11Input::clearProbe()
{
    m_keys->press(QStringLiteral("ctrl+a"));
    m_keys->press(QStringLiteral("backspace"));
    QVERIFY(nextKey().has_value());
    QVERIFY(nextKey().has_value());
    QTRY_COMPARE_WITH_TIMEOUT(probeText(), QString(), 10000);
}

void TestX11Input::inputIsTrusted()
{
    QVERIFY(m_platform->input().isTrusted());
}

void TestX11Input::everyKeyNameHasAKeySymbol()
{
    const auto& codes = KeyCombo::codes();
    for (auto it = codes.cbegin(); it != codes.cend(); ++it)
        QVERIFY2(KeySymbols::forKeyCode(it.value()), qPrintable(it.key()));
}

void TestX11Input::combosArriveWithTheirModifiers_data()
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

void TestX11Input::combosArriveWithTheirModifiers()
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

void TestX11Input::modifiersAreReleasedAfterwards()
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

void TestX11Input::badComboIsLoggedAndPostsNothing()
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

void TestX11Input::pasteTypesTextAndPutsTheUsersTextBack()
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

void TestX11Input::pasteOverAnImageLeavesNoText()
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

QTEST_MAIN(TestX11Input)
#include "tst_x11input.moc"
