// Editing the real program's buttons from the outside, against a real X server and window manager
// (openbox unless VANTRIL_TEST_WM names another): chips dragged with the pointer, files and links dropped
// from another program over XDND, the buttons of the application in front, and buttons.json edited by hand
// while the program runs, and the button editor opened at start-up, typed into and undone from the bar's
// menu. Runs inside tests/x11/with-x-session.sh. Every test writes its own buttons.json into folders of its
// own before it starts the program, and reads the outcome back from that file or from the bar's width.

#include "BarLayout.h"
#include "RunningBar.h"
#include "StrayPrograms.h"
#include "TestSupport.h"
#include "app/MenuModel.h"
#include "bar/BarView.h"
#include "config/Config.h"
#include "config/ConfigReader.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QScreen>
#include <QTest>
#include <cstdio>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

/// What the program writes to standard error when an "applescript" chip is tapped. Such a chip does
/// nothing else, so a tap on it tells when the program has handled all the input sent before it.
const QString tapLogLine = QStringLiteral("AppleScript is not available");

/// Moves in even steps from `from` to `to`; the button stays as it is.
QStringList stepsBetween(const QPoint& from, const QPoint& to, int steps)
{
    QStringList arguments;
    for (int i = 1; i <= steps; ++i)
        arguments += moveArguments(from + (to - from) * i / steps);
    return arguments;
}

/// One pixel of `window` at a point of the screen, as the X server has it. From the window itself: a
/// rootless XWayland's root window holds none of what is shown.
QColor pixelAt(quintptr window, const QPoint& global)
{
    const QPoint local = global - frameOf(window).topLeft();
    const QImage image =
        QGuiApplication::primaryScreen()->grabWindow(window, local.x(), local.y(), 1, 1).toImage();
    return image.isNull() ? QColor() : image.pixelColor(0, 0);
}

/// The drop marker and a stack's highlight are white; nothing else on the plate is.
bool isWhite(const QColor& colour)
{
    return colour.isValid() && colour.red() >= 235 && colour.green() >= 235 && colour.blue() >= 235;
}

ButtonSpec plain(const QString& title)
{
    return ButtonSpec::make(title, QStringLiteral("doc"), QStringLiteral("open"), QStringLiteral("/tmp"));
}

/// A chip whose tap only writes a line to standard error.
ButtonSpec logChip(const QString& title)
{
    return ButtonSpec::make(title, QStringLiteral("terminal"), QStringLiteral("applescript"),
                            QStringLiteral("beep"));
}

ButtonSpec stack(const QString& title, const QList<ButtonSpec>& children)
{
    ButtonSpec spec = ButtonSpec::make(title, QStringLiteral("folder"), QStringLiteral("group"));
    spec.children = children;
    return spec;
}

BarConfig document(const QList<ButtonSpec>& buttons)
{
    return BarConfig{buttons, std::nullopt, std::nullopt};
}

/// `config` with a set of buttons for each of the made-up applications VantrilAlpha and VantrilBeta.
BarConfig withAppSets(BarConfig config, const QList<ButtonSpec>& alpha, const QList<ButtonSpec>& beta)
{
    config.appSets = QList<AppSet>{{QStringLiteral("VantrilAlpha"), QStringLiteral("Alpha"), alpha},
                                   {QStringLiteral("VantrilBeta"), QStringLiteral("Beta"), beta}};
    return config;
}

bool activate(quintptr window)
{
    return xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(window)});
}

QList<ButtonSpec> plainButtons(const QStringList& titles)
{
    QList<ButtonSpec> buttons;
    for (const QString& title : titles)
        buttons.append(plain(title));
    return buttons;
}

/// What buttons.json holds now; nothing when it does not decode.
BarConfig decoded(const QByteArray& bytes)
{
    return ConfigReader::decode(bytes).value_or(BarConfig{});
}

ButtonSpec topButton(const QByteArray& bytes, const QString& title)
{
    for (const ButtonSpec& button : decoded(bytes).buttons) {
        if (button.title == title)
            return button;
    }
    return {};
}

/// How long buttons.json must stay untouched after a refused change before it counts as unchanged. A
/// change would be written while the program handles the key or click, well within this.
constexpr int quietMs = 1000;

ButtonSpec* buttonTitled(BarConfig& config, const QString& title)
{
    for (ButtonSpec& button : config.buttons) {
        if (button.title == title)
            return &button;
    }
    return nullptr;
}

/// Counts the times one file of a folder is written, from the kernel's notices rather than from its
/// content: polling would miss a second write of the same bytes. The program replaces the file
/// atomically (a rename onto it); a write in place counts as well.
class FileWrites
{
public:
    FileWrites(const QString& folder, const QString& name)
        : m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
        , m_name(QFile::encodeName(name))
    {
        if (m_fd >= 0 && inotify_add_watch(m_fd, QFile::encodeName(folder).constData(),
                                           IN_MOVED_TO | IN_CLOSE_WRITE) < 0) {
            ::close(m_fd);
            m_fd = -1;
        }
        m_sinceLast.start();
    }
    ~FileWrites()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    FileWrites(const FileWrites&) = delete;
    FileWrites& operator=(const FileWrites&) = delete;

    bool isValid() const { return m_fd >= 0; }

    int count()
    {
        drain();
        return m_count;
    }

    /// Waits until the file has been left alone for `ms` from now on.
    bool waitQuiet(int ms)
    {
        m_sinceLast.restart();
        return waitFor([&] {
            drain();
            return m_sinceLast.elapsed() >= ms;
        });
    }

private:
    void drain()
    {
        alignas(inotify_event) char buffer[4096];
        for (;;) {
            const ssize_t length = ::read(m_fd, buffer, sizeof buffer);
            if (length <= 0)
                return;
            for (ssize_t at = 0; at < length;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
                if (event->len > 0 && QByteArray(event->name) == m_name) {
                    ++m_count;
                    m_sinceLast.restart();
                }
                at += ssize_t(sizeof(inotify_event)) + event->len;
            }
        }
    }

    int m_fd = -1;
    QByteArray m_name;
    int m_count = 0;
    QElapsedTimer m_sinceLast;
};

} // namespace

class TestEditingEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void chipDraggedToEitherEndMovesThere();
    void memberDraggedOutOfFlyoutLandsOnTheBar();

    void filesDroppedBetweenChipsLandInReverseOrder();
    void fileDroppedOnAppChipOpensWithIt();
    void droppedProgramsOnlyBecomeChips();

    void frontApplicationChoosesTheSet();

    void handEditsAreFollowed();

    void editorAtStartUpRenamesAndUndoBringsItBack();

private:
    QString path(const QString& name) const { return m_home->path(name); }
    QByteArray saved() const { return m_home->buttons(); }
    QRect barFrame() const { return m_vantril->frame(); }
    bool writeConfig(const BarConfig& config)
    {
        return writeAll(m_home->buttonsJson(), Config::encoded(config));
    }
    /// Writes `config`, starts the program and waits for its bar.
    bool startBar(const BarConfig& config, const Variables& variables = {});
    bool waitForWidth(int width, int timeoutMs = windowTimeoutMs)
    {
        return m_vantril->waitForWidth(width, timeoutMs);
    }
    QPoint chipCentre(const BarLayout& layout, const QString& title) const
    {
        return layout.centreOf(title, barFrame());
    }
    /// The middle of the gap between chip `left` and the chip after it, where the drop marker goes.
    QPoint gapAfter(const BarLayout& layout, const QString& left) const;
    QString log() { return m_vantril->log(); }
    /// Taps the program's "applescript" chip titled `title` and waits until it has handled the tap.
    bool tapAndWait(const BarLayout& layout, const QString& title);
    /// Waits until buttons.json differs from `before` and decodes.
    bool waitForSave(const QByteArray& before);
    /// Drags from the drag source's window to `target` and drops there once `hovering` shows that the
    /// program has taken the drag.
    bool dropFromSource(TestProcess& source, quintptr sourceWindow, const QPoint& target,
                        const std::function<bool()>& hovering);

    std::unique_ptr<TestHome> m_home;
    std::unique_ptr<RunningBar> m_vantril;
};

void TestEditingEndToEnd::initTestCase()
{
    QVERIFY(onSessionScreen());
    useProgramIconTheme();
}

void TestEditingEndToEnd::init()
{
    m_home = std::make_unique<TestHome>();
    QVERIFY(m_home->isValid());
    QVERIFY(QDir().mkpath(m_home->configDir()));
}

void TestEditingEndToEnd::cleanup()
{
    m_vantril.reset();
    m_home.reset();
}

bool TestEditingEndToEnd::startBar(const BarConfig& config, const Variables& variables)
{
    if (!writeConfig(config))
        return false;
    m_vantril = std::make_unique<RunningBar>(*m_home, variables);
    if (!m_vantril->waitForBar()) {
        qWarning("no bar window appeared");
        return false;
    }
    return true;
}

QPoint TestEditingEndToEnd::gapAfter(const BarLayout& layout, const QString& left) const
{
    const QRectF chip = layout.chips.value(left);
    return barFrame().topLeft() + QPoint(qRound(chip.right()) + 4, BarView::barHeight / 2);
}

bool TestEditingEndToEnd::tapAndWait(const BarLayout& layout, const QString& title)
{
    const qsizetype before = log().count(tapLogLine);
    if (!clickAt(chipCentre(layout, title)))
        return false;
    return waitFor([&] { return log().count(tapLogLine) > before; });
}

bool TestEditingEndToEnd::waitForSave(const QByteArray& before)
{
    return waitFor([&] {
        const QByteArray now = saved();
        return now != before && ConfigReader::decode(now).has_value();
    });
}

bool TestEditingEndToEnd::dropFromSource(TestProcess& source, quintptr sourceWindow, const QPoint& target,
                                         const std::function<bool()>& hovering)
{
    QString said;
    const auto saidCount = [&](const char* word) {
        said += QString::fromUtf8(source.process().readAllStandardOutput());
        return said.count(QLatin1String(word));
    };
    const qsizetype startedBefore = saidCount("started");
    const qsizetype finishedBefore = saidCount("finished");

    const QPoint start = frameOf(sourceWindow).center();
    if (!xdotool(moveArguments(start) + QStringList{QStringLiteral("mousedown"), QStringLiteral("1")}))
        return false;
    if (!waitFor([&] { return saidCount("started") > startedBefore; })) {
        qWarning("the press started no drag");
        return false;
    }
    if (!xdotool(stepsBetween(start, target, 12)))
        return false;
    // The source sends a new position only after the target has answered the last one; a pointer
    // that keeps still might leave the final position unsent. A one-pixel wiggle that ends on the target
    // brings it along.
    QElapsedTimer timer;
    timer.start();
    bool shown = hovering();
    while (!shown && timer.elapsed() < windowTimeoutMs) {
        QTest::qWait(100);
        shown = hovering();
        if (!shown)
            xdotool(moveArguments(target + QPoint(1, 0)) + moveArguments(target));
    }
    if (!shown)
        qWarning("the program showed no drop feedback at %d,%d", target.x(), target.y());
    if (!xdotool({QStringLiteral("mouseup"), QStringLiteral("1")}))
        return false;
    if (!waitFor([&] { return saidCount("finished") > finishedBefore; })) {
        qWarning("the drag did not end");
        return false;
    }
    return shown;
}

// ---- chips dragged with the pointer ----

void TestEditingEndToEnd::chipDraggedToEitherEndMovesThere()
{
    const QStringList numbers = {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                                 QStringLiteral("4"), QStringLiteral("5")};
    const BarConfig config = document(plainButtons(numbers));
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(config);
    QVERIFY(waitForWidth(layout.width));

    QByteArray before = saved();
    const QPoint farLeft = barFrame().topLeft() + QPoint(4, BarView::barHeight / 2);
    QVERIFY(dragBetween(chipCentre(layout, QStringLiteral("3")), farLeft));
    QVERIFY2(waitForSave(before), "the drag to the left end changed nothing");
    QCOMPARE(titles(decoded(saved()).buttons),
             (QStringList{QStringLiteral("3"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("4"),
                          QStringLiteral("5")}));

    // The same chips in another order: the bar keeps its width, and the chips move along.
    const BarLayout reordered = layoutOf(*ConfigReader::decode(saved()));
    QVERIFY(waitForWidth(reordered.width));
    before = saved();
    const QPoint farRight = barFrame().topLeft() + QPoint(barFrame().width() - 4, BarView::barHeight / 2);
    QVERIFY(dragBetween(chipCentre(reordered, QStringLiteral("3")), farRight));
    QVERIFY2(waitForSave(before), "the drag to the right end changed nothing");
    QCOMPARE(titles(decoded(saved()).buttons),
             (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("4"), QStringLiteral("5"),
                          QStringLiteral("3")}));
    // Moved, not copied or changed.
    QCOMPARE(topButton(saved(), QStringLiteral("3")), plain(QStringLiteral("3")));
}

void TestEditingEndToEnd::memberDraggedOutOfFlyoutLandsOnTheBar()
{
    const ButtonSpec m1 = plain(QStringLiteral("m1"));
    const ButtonSpec m2 = plain(QStringLiteral("m2"));
    const BarConfig config = document({plain(QStringLiteral("1")), plain(QStringLiteral("2")),
                                       stack(QStringLiteral("Stack"), {m1, m2}), plain(QStringLiteral("3"))});
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(config);
    QVERIFY(waitForWidth(layout.width));

    QVERIFY(clickAt(chipCentre(layout, QStringLiteral("Stack"))));
    std::optional<quintptr> flyout;
    QVERIFY2(waitFor([&] {
                 flyout = m_vantril->shownFlyout();
                 return flyout && frameOf(*flyout).height() > 16;
             }),
             "the stack did not open");
    // Two rows of one height between 8 pixel margins, 6 apart; the second is m2.
    const QRect flyoutFrame = frameOf(*flyout);
    const int rowHeight = (flyoutFrame.height() - 2 * 8 - 6) / 2;
    const QPoint member(flyoutFrame.center().x(), flyoutFrame.y() + 8 + rowHeight + 6 + rowHeight / 2);

    // While a flyout is open the program learns of presses anywhere on the desktop, and takes the
    // pointer's place when it reads one for where the press was; synthetic input may by then be far along
    // its path. A path that never leaves the flyout and the bar (a jump across the gap between them, then
    // along the bar) cannot be taken for a press elsewhere, which would close the flyout mid-drag.
    const QPoint onBar(member.x(), barFrame().y() + BarView::barHeight / 2);
    QVERIFY(barFrame().contains(onBar));
    const QPoint target = gapAfter(layout, QStringLiteral("1"));
    QList<QPoint> path = {member, member + QPoint(0, 3), onBar};
    for (int i = 1; i <= 8; ++i)
        path.append(onBar + (target - onBar) * i / 8);
    const QByteArray before = saved();
    QVERIFY(dragAlong(path));
    if (!waitForSave(before)) {
        const bool open = isViewable(*flyout);
        QFAIL(open ? "the drag out of the flyout changed nothing"
                   : "the drag out of the flyout changed nothing, and the flyout closed during it");
    }
    const QByteArray after = saved();
    QCOMPARE(titles(decoded(after).buttons),
             (QStringList{QStringLiteral("1"), QStringLiteral("m2"), QStringLiteral("2"),
                          QStringLiteral("Stack"), QStringLiteral("3")}));
    QCOMPARE(topButton(after, QStringLiteral("m2")), m2);
    QCOMPARE(topButton(after, QStringLiteral("Stack")).children, std::optional(QList<ButtonSpec>{m1}));
}

// ---- drops from another program ----

void TestEditingEndToEnd::filesDroppedBetweenChipsLandInReverseOrder()
{
    const QStringList files = {path(QStringLiteral("one.txt")), path(QStringLiteral("two.txt")),
                               path(QStringLiteral("three.txt"))};
    for (const QString& file : files)
        QVERIFY(writeAll(file, "x"));
    const BarConfig config =
        document(plainButtons({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(config);
    QVERIFY(waitForWidth(layout.width));

    TestProcess source(QStringLiteral(TESTWINDOW_BINARY), QStringList{QStringLiteral("drag")} + files);
    const auto window = source.waitForWindow(QStringLiteral("dragsource"));
    QVERIFY2(window, "the drag source did not appear");
    // A tiling manager gives it the whole screen, under the bar: the drag only has to start off the bar.
    QVERIFY(!barFrame().contains(frameOf(*window).center()));

    const QByteArray before = saved();
    const QPoint target = gapAfter(layout, QStringLiteral("A"));
    const QPoint marker(target.x(), barFrame().y() + 10);
    QVERIFY(!isWhite(pixelAt(m_vantril->bar(), marker))); // so that white there shows the drag
    QVERIFY(
        dropFromSource(source, *window, target, [&] { return isWhite(pixelAt(m_vantril->bar(), marker)); }));
    QVERIFY2(waitForSave(before), "the drop changed nothing");

    const QByteArray after = saved();
    QCOMPARE(titles(decoded(after).buttons),
             (QStringList{QStringLiteral("A"), QStringLiteral("three.txt"), QStringLiteral("two.txt"),
                          QStringLiteral("one.txt"), QStringLiteral("B"), QStringLiteral("C")}));
    const ButtonSpec dropped = topButton(after, QStringLiteral("two.txt"));
    QCOMPARE(dropped.action, QStringLiteral("open"));
    QCOMPARE(dropped.argument, std::optional(files.at(1)));
    // The bar shows what was saved.
    QVERIFY(waitForWidth(layoutOf(*ConfigReader::decode(after)).width));
}

void TestEditingEndToEnd::fileDroppedOnAppChipOpensWithIt()
{
    // An application whose only effect is to note the files it was started with.
    const QString record = path(QStringLiteral("opened.txt"));
    const QString script = path(QStringLiteral("record.sh"));
    QVERIFY(writeAll(script,
                     QStringLiteral("#!/bin/sh\nfor f in \"$@\"; do printf '%s\\n' \"$f\" >> '%1'; done\n")
                         .arg(record)
                         .toUtf8()));
    QVERIFY(QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const QString applications =
        QDir(qEnvironmentVariable("XDG_DATA_HOME")).filePath(QStringLiteral("applications"));
    QVERIFY(!qEnvironmentVariable("XDG_DATA_HOME").isEmpty());
    QVERIFY(QDir().mkpath(applications));
    const QString entry = QDir(applications).filePath(QStringLiteral("vantril-test-recorder.desktop"));
    QVERIFY(writeAll(entry, QStringLiteral("[Desktop Entry]\nType=Application\nName=Recorder\nExec=%1 %F\n")
                                .arg(script)
                                .toUtf8()));
    const QString dropped = path(QStringLiteral("letter.txt"));
    QVERIFY(writeAll(dropped, "x"));

    const ButtonSpec app =
        ButtonSpec::make(QStringLiteral("Recorder"), QStringLiteral("app"), QStringLiteral("app"), entry);
    const BarConfig config = document({plain(QStringLiteral("A")), app, plain(QStringLiteral("B"))});
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(config);
    QVERIFY(waitForWidth(layout.width));

    TestProcess source(QStringLiteral(TESTWINDOW_BINARY), {QStringLiteral("drag"), dropped});
    const auto window = source.waitForWindow(QStringLiteral("dragsource"));
    QVERIFY2(window, "the drag source did not appear");

    const QByteArray before = saved();
    const QRectF chip = layout.chips.value(QStringLiteral("Recorder"));
    // The chip's highlight: a white ring just inside its edge.
    const QPoint ring = barFrame().topLeft() + QPoint(qRound(chip.left()) + 1, qRound(chip.center().y()));
    QVERIFY(!isWhite(pixelAt(m_vantril->bar(), ring))); // so that white there shows the drag
    QVERIFY(dropFromSource(source, *window, chipCentre(layout, QStringLiteral("Recorder")),
                           [&] { return isWhite(pixelAt(m_vantril->bar(), ring)); }));
    QVERIFY2(waitFor([&] { return readAll(record).contains((dropped + QLatin1Char('\n')).toUtf8()); }),
             readAll(record).constData());
    QCOMPARE(readAll(record), (dropped + QLatin1Char('\n')).toUtf8());
    // Opening is all: no button was added.
    QCOMPARE(saved(), before);
    QCOMPARE(frameOf(m_vantril->bar()).width(), layout.width);
}

// ---- the application in front ----

void TestEditingEndToEnd::droppedProgramsOnlyBecomeChips()
{
    const QString folder = path(QStringLiteral("offered"));
    QVERIFY(QDir().mkpath(folder));
    QStringList files;
    for (const Stray kind : {Stray::Script, Stray::Elf, Stray::DesktopEntry, Stray::Fifo}) {
        files.append(makeStray(kind, folder));
        QVERIFY(!files.last().isEmpty());
    }
    const BarConfig config = document(plainButtons({QStringLiteral("A"), QStringLiteral("B")}));
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(config);
    QVERIFY(waitForWidth(layout.width));

    TestProcess source(QStringLiteral(TESTWINDOW_BINARY), QStringList{QStringLiteral("drag")} + files);
    const auto window = source.waitForWindow(QStringLiteral("dragsource"));
    QVERIFY2(window, "the drag source did not appear");
    const QByteArray before = saved();
    const QPoint target = gapAfter(layout, QStringLiteral("A"));
    const QPoint marker(target.x(), barFrame().y() + 10);
    QVERIFY(
        dropFromSource(source, *window, target, [&] { return isWhite(pixelAt(m_vantril->bar(), marker)); }));
    // Reading the FIFO would have held the program up before it saved.
    QVERIFY2(waitForSave(before), "the drop changed nothing");
    const QByteArray after = saved();
    QVERIFY(waitForWidth(layoutOf(*ConfigReader::decode(after)).width));

    // A stray desktop entry is no application, only a document that asks before it runs; nothing was
    // started.
    const auto action = [&](const QString& title) { return topButton(after, title).action; };
    QCOMPARE(action(QStringLiteral("invoice.pdf.sh")), QStringLiteral("open"));
    QCOMPARE(action(QStringLiteral("tool")), QStringLiteral("open"));
    QCOMPARE(action(QStringLiteral("invoice.desktop")), QStringLiteral("open"));
    QCOMPARE(action(QStringLiteral("x.desktop")), QStringLiteral("open"));
    for (const QString& file : files)
        QVERIFY2(!QFile::exists(markerOf(file)), qPrintable(file));
}

void TestEditingEndToEnd::frontApplicationChoosesTheSet()
{
    BarConfig config = withAppSets(
        document({logChip(QStringLiteral("Log")), plain(QStringLiteral("1"))}), {plain(QStringLiteral("a1"))},
        plainButtons({QStringLiteral("b1"), QStringLiteral("b2"), QStringLiteral("b3")}));
    // A set named the way a user sees a window: by its class, in any case.
    config.appSets->append(AppSet{QStringLiteral("mytool"), QStringLiteral("MyTool"),
                                  plainButtons({QStringLiteral("t1"), QStringLiteral("t2")})});
    const BarLayout plainLayout = layoutOf(config);
    const int alphaWidth = layoutOf(config, config.appSets->at(0).buttons).width;
    const int betaWidth = layoutOf(config, config.appSets->at(1).buttons).width;
    const int toolWidth = layoutOf(config, config.appSets->at(2).buttons).width;
    QVERIFY(plainLayout.width < alphaWidth && alphaWidth < toolWidth && toolWidth < betaWidth);

    // The program behind every window below is an installed application, as xterm would be for a window
    // of "xterm -class MyTool": its desktop entry is found from the window's executable.
    const QString applications =
        QDir(qEnvironmentVariable("XDG_DATA_HOME")).filePath(QStringLiteral("applications"));
    QVERIFY(QDir().mkpath(applications));
    QVERIFY(writeAll(QDir(applications).filePath(QStringLiteral("vantril-test-windows.desktop")),
                     "[Desktop Entry]\nType=Application\nName=Windows\nExec=" TESTWINDOW_BINARY "\n"));

    QVERIFY(startBar(config));
    QVERIFY(waitForWidth(plainLayout.width));
    const QByteArray before = saved();

    TestProcess alphaApp(QStringLiteral(TESTWINDOW_BINARY),
                         {QStringLiteral("app"), QStringLiteral("VantrilAlpha")});
    const auto alpha = alphaApp.waitForWindow(QStringLiteral("VantrilAlpha"));
    QVERIFY2(alpha, "the first client did not appear");
    TestProcess betaApp(QStringLiteral(TESTWINDOW_BINARY),
                        {QStringLiteral("app"), QStringLiteral("VantrilBeta")});
    const auto beta = betaApp.waitForWindow(QStringLiteral("VantrilBeta"));
    QVERIFY2(beta, "the second client did not appear");

    QVERIFY(activate(*alpha));
    QVERIFY2(waitForWidth(alphaWidth), qPrintable(windowProperty(*alpha, QStringLiteral("WM_CLASS"))));
    QVERIFY(activate(*beta));
    QVERIFY2(waitForWidth(betaWidth), qPrintable(windowProperty(*beta, QStringLiteral("WM_CLASS"))));

    // A tap on the bar takes nothing from the application in front, so its set stays.
    QVERIFY2(tapAndWait(plainLayout, QStringLiteral("Log")), qPrintable(log()));
    QCOMPARE(activeWindow(), *beta);
    QTest::qWait(500);
    QCOMPARE(frameOf(m_vantril->bar()).width(), betaWidth);

    // Still following: back to the first one.
    QVERIFY(activate(*alpha));
    QVERIFY(waitForWidth(alphaWidth));

    TestProcess toolApp(QStringLiteral(TESTWINDOW_BINARY), {QStringLiteral("app"), QStringLiteral("MyTool")});
    const auto tool = toolApp.waitForWindow(QStringLiteral("MyTool"));
    QVERIFY2(tool, "the third client did not appear");
    QVERIFY(activate(*tool));
    QVERIFY2(waitForWidth(toolWidth), qPrintable(windowProperty(*tool, QStringLiteral("WM_CLASS"))));

    // A native Wayland window, which the X11 side never sees, as KWin's script reports it (class in
    // lower case).
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("io.github.vantril.Vantril"), QStringLiteral("/FrontApplication"),
        QStringLiteral("io.github.vantril.FrontApplication"), QStringLiteral("WindowActivated"));
    call << QStringLiteral("kwin") << QString() << QStringLiteral("vantrilbeta") << QString()
         << QStringLiteral("0");
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call);
    QVERIFY2(reply.type() == QDBusMessage::ReplyMessage, qPrintable(reply.errorMessage()));
    QVERIFY(waitForWidth(betaWidth));
    // Showing a set is no edit.
    QCOMPARE(saved(), before);
}

// ---- buttons.json edited by hand ----

void TestEditingEndToEnd::handEditsAreFollowed()
{
    const auto configWith = [](int count) {
        QStringList titles;
        for (int i = 1; i <= count; ++i)
            titles.append(QStringLiteral("B%1").arg(i));
        return document(plainButtons(titles));
    };
    const auto widthWith = [&](int count) { return layoutOf(configWith(count)).width; };

    QVERIFY(startBar(configWith(2)));
    QVERIFY(waitForWidth(widthWith(2)));
    // The backup every launch takes; reloads must not add to it.
    QCOMPARE(entries(m_home->backupsDir()).size(), 1);

    // One more button: the bar grows soon after the write.
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(writeConfig(configWith(3)));
    QVERIFY(waitForWidth(widthWith(3), 1000));
    qInfo("reloaded after %lld ms", elapsed.elapsed());

    // Not JSON: ignored, and kept as it is.
    const QByteArray broken = "{ \"buttons\": [ { \"title\": \"B1\", \n";
    QVERIFY(writeAll(m_home->buttonsJson(), broken));
    QTest::qWait(1000);
    QCOMPARE(frameOf(m_vantril->bar()).width(), widthWith(3));
    QCOMPARE(m_vantril->process().state(), QProcess::Running);
    QCOMPARE(saved(), broken);
    QCOMPARE(entries(m_home->backupsDir()).size(), 1);

    // Mended: followed again.
    QVERIFY(writeConfig(configWith(5)));
    QVERIFY(waitForWidth(widthWith(5)));

    // Saved the way editors save: a new file renamed over the old one.
    const QString temporary = QDir(m_home->configDir()).filePath(QStringLiteral(".buttons.json.edit"));
    QVERIFY(writeAll(temporary, Config::encoded(configWith(6))));
    QCOMPARE(std::rename(QFile::encodeName(temporary).constData(),
                         QFile::encodeName(m_home->buttonsJson()).constData()),
             0);
    QVERIFY(waitForWidth(widthWith(6)));
    // The replacement is watched in its turn: a write into it in place is followed too.
    QVERIFY(writeConfig(configWith(4)));
    QVERIFY(waitForWidth(widthWith(4)));
    QVERIFY(writeAll(temporary, Config::encoded(configWith(7))));
    QCOMPARE(std::rename(QFile::encodeName(temporary).constData(),
                         QFile::encodeName(m_home->buttonsJson()).constData()),
             0);
    QVERIFY(waitForWidth(widthWith(7)));
    QCOMPARE(entries(m_home->backupsDir()).size(), 1);
}

void TestEditingEndToEnd::editorAtStartUpRenamesAndUndoBringsItBack()
{
    // Away from where the bar will be, so that nothing is hovered by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
    QElapsedTimer sinceStart;
    sinceStart.start();
    RunningBar vantril(*m_home,
                       withoutFrontApp({{QStringLiteral("VANTRIL_SHOW_EDITOR"), QStringLiteral("Help")}}));
    const QByteArray defaults = Config::encoded(Config::defaults());
    const auto bar = vantril.waitForBar(layoutOf(Config::defaults()).width);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY2(waitFor([&] { return m_home->buttons() == defaults; }), m_home->buttons().constData());
    FileWrites writes(m_home->configDir(), QStringLiteral("buttons.json"));
    QVERIFY(writes.isValid());

    const auto editor = vantril.waitForWindow(QStringLiteral("Edit Button"), true);
    QVERIFY2(editor, qPrintable(QStringLiteral("no editor with the keyboard focus; active window %1")
                                    .arg(activeWindow(), 0, 16)));
    // The timer starts once the program is up, after this process started it.
    QVERIFY2(sinceStart.elapsed() >= 900,
             qPrintable(QStringLiteral("the editor came %1 ms after start-up").arg(sinceStart.elapsed())));
    saveScreenshot(QStringLiteral("vantril-editor-help.png"));

    // The title field has the focus: its text is replaced and Return saves.
    QVERIFY(keys({QStringLiteral("ctrl+a")}));
    QVERIFY(type(QStringLiteral("Support")));
    QVERIFY(keys({QStringLiteral("Return")}));

    BarConfig renamed = Config::defaults();
    buttonTitled(renamed, QStringLiteral("Help"))->title = QStringLiteral("Support");
    const QByteArray expected = Config::encoded(renamed);
    QVERIFY2(waitFor([&] { return m_home->buttons() == expected; }), m_home->buttons().constData());
    QVERIFY2(waitFor([&] { return !findWindow(QStringLiteral("Edit Button"), vantril.pid()); }),
             "the editor stayed open after saving");
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 1);
    // The launch backup holds the defaults; the save's own backup of the previous state would hold the
    // same bytes, and a backup is never taken twice in a row.
    const QStringList backups = entries(m_home->backupsDir());
    QCOMPARE(backups.size(), 1);
    QCOMPARE(readAll(QDir(m_home->backupsDir()).filePath(backups.first())), defaults);

    // The bar shows the new title, which makes it wider or narrower, so its grip moves.
    QVERIFY(vantril.waitForWidth(layoutOf(renamed).width));
    const QPoint grip = gripOf(vantril.frame());
    MenuModel::State state;
    state.canUndo = true;
    const QList<MenuModel::Item> items = MenuModel::populate(state);
    const auto menu = vantril.openMenu(grip);
    QVERIFY2(menu, "right-clicking the grip opened no menu");
    const QStringList undo = keysFor(items, QStringLiteral("Undo last change"));
    QVERIFY(!undo.isEmpty());
    QVERIFY(keys(undo));

    QVERIFY2(waitFor([&] { return m_home->buttons() == defaults; }), m_home->buttons().constData());
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 2);
    QVERIFY(vantril.waitForWidth(layoutOf(Config::defaults()).width));
}

QTEST_MAIN(TestEditingEndToEnd)
#include "tst_editing_e2e.moc"
