// The real program's button editor, button menu and probe against a real X server and window manager
// (openbox): the editor opened at start-up and from a stack's menu, typed into with xdotool, its refusal
// of a key combination that does not parse, locking and the refused removal of a locked button, undo
// from the bar's menu, and the "--probe" report. Outcomes are read back from buttons.json on disk, from
// the kernel's notices of its rewrites and from the server's bell notices. Runs inside
// tests/x11/with-x-session.sh; every test starts its own copy of the program with folders of its own.
// Screenshots are saved to $VANTRIL_TEST_SCREENSHOTS when set.

#include "BarLayout.h"
#include "RunningBar.h"
#include "TestSupport.h"
#include "app/MenuModel.h"
#include "editor/EditView.h"
#include "editor/ItemMenuModel.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLayout>
#include <QPushButton>
#include <QTest>
#include <sys/inotify.h>
#include <unistd.h>

// Last: Xlib's macros (None, Bool, KeyPress…) would otherwise rename identifiers in Qt's headers.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>

namespace {

/// The bells rung on the display, from the server's XKB bell notices: under Xvfb a bell makes no sound,
/// but the server still tells every client that asked.
class BellMonitor
{
public:
    BellMonitor()
        : m_display(XOpenDisplay(nullptr))
    {
        if (!m_display)
            return;
        int opcode = 0;
        int error = 0;
        int major = XkbMajorVersion;
        int minor = XkbMinorVersion;
        if (!XkbQueryExtension(m_display, &opcode, &m_eventBase, &error, &major, &minor))
            return;
        m_valid = XkbSelectEvents(m_display, XkbUseCoreKbd, XkbBellNotifyMask, XkbBellNotifyMask);
        // Selected before anything can ring: the request has reached the server when this returns.
        XSync(m_display, False);
    }
    ~BellMonitor()
    {
        if (m_display)
            XCloseDisplay(m_display);
    }
    BellMonitor(const BellMonitor&) = delete;
    BellMonitor& operator=(const BellMonitor&) = delete;

    bool isValid() const { return m_valid; }

    /// Bells rung since the monitor was made.
    int count()
    {
        if (!m_valid)
            return 0;
        while (XPending(m_display) > 0) {
            XEvent event;
            XNextEvent(m_display, &event);
            if (event.type == m_eventBase + XkbEventCode &&
                reinterpret_cast<const XkbAnyEvent*>(&event)->xkb_type == XkbBellNotify)
                ++m_count;
        }
        return m_count;
    }

private:
    Display* m_display = nullptr;
    int m_eventBase = 0;
    bool m_valid = false;
    int m_count = 0;
};

/// How long buttons.json must stay untouched after a refused change before it counts as unchanged. A
/// change would be written while the program handles the key or click, well within this.
constexpr int quietMs = 1000;

/// The button menu the program shows for `button`, in a session without an application in front.
QList<ItemMenuModel::Item> itemMenu(const ButtonSpec& button, bool canUndo)
{
    ItemMenuModel::State state;
    state.button = button;
    state.canUndo = canUndo;
    return ItemMenuModel::populate(state);
}

ButtonSpec* topButton(BarConfig& config, const QString& title)
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

class TestEditorEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { m_home.reset(); }

    void editorAtStartUpRenamesAndUndoBringsItBack();
    void stackMenuAddsAButtonToTheStack();
    void unparsableCombinationCannotBeSaved();
    void lockedButtonIsNotRemoved();
    void probeReportsAndOpensNoWindow();

private:
    std::unique_ptr<TestHome> m_home;
};

void TestEditorEndToEnd::initTestCase()
{
    QVERIFY(onSessionScreen());
    useProgramIconTheme();
}

void TestEditorEndToEnd::init()
{
    m_home = std::make_unique<TestHome>();
    QVERIFY(m_home->isValid());
    // Away from where the bar will be, so that nothing is hovered by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
}

void TestEditorEndToEnd::editorAtStartUpRenamesAndUndoBringsItBack()
{
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
    topButton(renamed, QStringLiteral("Help"))->title = QStringLiteral("Support");
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
    QVERIFY2(menuLooksLike(*menu, items), "the bar's menu is not the one with “Undo last change”");
    const QStringList undo = keysFor(items, QStringLiteral("Undo last change"));
    QVERIFY(!undo.isEmpty());
    QVERIFY(keys(undo));

    QVERIFY2(waitFor([&] { return m_home->buttons() == defaults; }), m_home->buttons().constData());
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 2);
    QVERIFY(vantril.waitForWidth(layoutOf(Config::defaults()).width));
}

void TestEditorEndToEnd::stackMenuAddsAButtonToTheStack()
{
    RunningBar vantril(*m_home, withoutFrontApp());
    const BarLayout layout = layoutOf(Config::defaults());
    const auto bar = vantril.waitForBar(layout.width);
    QVERIFY2(bar, "no bar window appeared");
    const QByteArray defaults = Config::encoded(Config::defaults());
    QVERIFY2(waitFor([&] { return m_home->buttons() == defaults; }), m_home->buttons().constData());

    BarConfig config = Config::defaults();
    const ButtonSpec files = *topButton(config, QStringLiteral("Files"));
    const auto menu = vantril.openMenu(layout.centreOf(files.title, vantril.frame()));
    QVERIFY2(menu, "right-clicking the Files chip opened no menu");
    const QList<ItemMenuModel::Item> items = itemMenu(files, false);
    QVERIFY2(menuLooksLike(*menu, items), "the Files chip's menu is not the one of a stack");
    const QStringList add = keysFor(items, QStringLiteral("Add button to this stack…"));
    QVERIFY(!add.isEmpty());
    QVERIFY(keys(add));

    const auto editor = vantril.waitForWindow(QStringLiteral("New Button"), true);
    QVERIFY2(editor, "no “New Button” editor with the keyboard focus");
    // Title, then past the action (a new button opens a file or folder) to the path.
    QVERIFY(type(QStringLiteral("Music")));
    QVERIFY(keys({QStringLiteral("Tab"), QStringLiteral("Tab")}));
    QVERIFY(type(QStringLiteral("/tmp")));
    saveScreenshot(QStringLiteral("vantril-editor-new.png"));
    QVERIFY(keys({QStringLiteral("Return")}));

    BarConfig added = Config::defaults();
    ButtonSpec music;
    music.title = QStringLiteral("Music");
    music.symbol = QStringLiteral("doc");
    music.action = QStringLiteral("open");
    music.argument = QStringLiteral("/tmp");
    topButton(added, QStringLiteral("Files"))->children->append(music);
    const QByteArray expected = Config::encoded(added);
    QVERIFY2(waitFor([&] { return m_home->buttons() == expected; }), m_home->buttons().constData());
    QVERIFY2(waitFor([&] { return !findWindow(QStringLiteral("New Button"), vantril.pid()); }),
             "the editor stayed open after saving");
}

void TestEditorEndToEnd::unparsableCombinationCannotBeSaved()
{
    BarConfig config = Config::defaults();
    ButtonSpec copy;
    copy.title = QStringLiteral("Copy");
    copy.symbol = QStringLiteral("doc");
    copy.action = QStringLiteral("keys");
    copy.argument = QStringLiteral("ctrl+c");
    config.buttons.append(copy);
    const QByteArray original = Config::encoded(config);
    QVERIFY(m_home->writeButtons(original));
    FileWrites writes(m_home->configDir(), QStringLiteral("buttons.json"));
    QVERIFY(writes.isValid());

    RunningBar vantril(*m_home,
                       withoutFrontApp({{QStringLiteral("VANTRIL_SHOW_EDITOR"), QStringLiteral("Copy")}}));
    QVERIFY2(vantril.waitForBar(layoutOf(config).width), "no bar window appeared");
    const auto editor = vantril.waitForWindow(QStringLiteral("Edit Button"), true);
    QVERIFY2(editor, "no editor with the keyboard focus");
    const QRect client = frameOf(*editor);

    // Where Save is: an editor for the same button laid out here at the size of the one on screen.
    EditView reference(copy, false, EditorServices{});
    reference.setAttribute(Qt::WA_DontShowOnScreen);
    reference.show();
    reference.resize(client.size());
    reference.layout()->activate();
    const auto* saveButton = reference.findChild<QPushButton*>(QStringLiteral("save"));
    QVERIFY(saveButton);
    const QPoint save = client.topLeft() + saveButton->mapTo(&reference, saveButton->rect().center());
    reference.hide();

    // From the title past the action to the key field. Plain keys edit it; a combination held with a
    // modifier would be recorded instead, so the text is cleared and typed key by key.
    QVERIFY(keys({QStringLiteral("Tab"), QStringLiteral("Tab"), QStringLiteral("End")}));
    QVERIFY(keys(QStringList(12, QStringLiteral("BackSpace"))));
    QVERIFY(type(QStringLiteral("ctrl+nonsense")));
    saveScreenshot(QStringLiteral("vantril-editor-bad-keys.png"));
    // Return in the key field would be recorded as the key "return"; in the title field it saves.
    QVERIFY(keys({QStringLiteral("shift+Tab"), QStringLiteral("shift+Tab"), QStringLiteral("Return")}));
    QVERIFY(clickAt(save));
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 0);
    QCOMPARE(m_home->buttons(), original);
    QVERIFY2(findWindow(QStringLiteral("Edit Button"), vantril.pid()), "the editor closed without saving");

    // Recorded from the keys themselves this time; the same click on Save now saves.
    QVERIFY(keys({QStringLiteral("Tab"), QStringLiteral("Tab"), QStringLiteral("ctrl+shift+c")}));
    QVERIFY(clickAt(save));
    BarConfig fixed = config;
    topButton(fixed, QStringLiteral("Copy"))->argument = QStringLiteral("ctrl+shift+c");
    const QByteArray expected = Config::encoded(fixed);
    QVERIFY2(waitFor([&] { return m_home->buttons() == expected; }), m_home->buttons().constData());
    QVERIFY2(waitFor([&] { return !findWindow(QStringLiteral("Edit Button"), vantril.pid()); }),
             "the editor stayed open after saving");
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 1);
}

void TestEditorEndToEnd::lockedButtonIsNotRemoved()
{
    RunningBar vantril(*m_home, withoutFrontApp());
    const BarLayout layout = layoutOf(Config::defaults());
    const auto bar = vantril.waitForBar(layout.width);
    QVERIFY2(bar, "no bar window appeared");
    const QByteArray defaults = Config::encoded(Config::defaults());
    QVERIFY2(waitFor([&] { return m_home->buttons() == defaults; }), m_home->buttons().constData());
    FileWrites writes(m_home->configDir(), QStringLiteral("buttons.json"));
    QVERIFY(writes.isValid());
    BellMonitor bells;
    QVERIFY2(bells.isValid(), "the display reports no bells");

    BarConfig config = Config::defaults();
    const ButtonSpec help = *topButton(config, QStringLiteral("Help"));
    auto menu = vantril.openMenu(layout.centreOf(help.title, frameOf(*bar)));
    QVERIFY2(menu, "right-clicking the Help chip opened no menu");
    QList<ItemMenuModel::Item> items = itemMenu(help, false);
    QVERIFY2(menuLooksLike(*menu, items), "the Help chip's menu is not the one of a button");
    QVERIFY(keys(keysFor(items, QStringLiteral("Lock"))));

    BarConfig locked = Config::defaults();
    topButton(locked, QStringLiteral("Help"))->locked = true;
    const QByteArray expected = Config::encoded(locked);
    QVERIFY2(waitFor([&] { return m_home->buttons() == expected; }), m_home->buttons().constData());
    QVERIFY(m_home->buttons().contains("\"locked\""));
    QVERIFY(waitFor([&] { return !vantril.shownMenu(); }));
    QCOMPARE(bells.count(), 0);

    // What the program does on a refusal, done here: it shows that a bell would be seen at all.
    QApplication::beep();
    QVERIFY2(waitFor([&] { return bells.count() == 1; }, 5000), "a bell rung here was not reported");

    const BarLayout lockedLayout = layoutOf(locked);
    QVERIFY(vantril.waitForWidth(lockedLayout.width));
    // Off the first click's spot as well, so that it cannot make a double click either.
    const QRectF chip = lockedLayout.chips.value(help.title);
    const QPoint second = frameOf(*bar).topLeft() + (chip.center() + QPointF(chip.width() / 4, 0)).toPoint();
    menu = vantril.openMenu(second);
    QVERIFY2(menu, "right-clicking the Help chip again opened no menu");
    items = itemMenu(*topButton(locked, QStringLiteral("Help")), true);
    QVERIFY2(menuLooksLike(*menu, items), "the locked Help chip's menu is not the one of a locked button");
    QVERIFY(keys(keysFor(items, QStringLiteral("Remove"))));

    QVERIFY2(waitFor([&] { return bells.count() == 2; }), "removing a locked button rang no bell");
    QVERIFY(waitFor([&] { return !vantril.shownMenu(); }));
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(m_home->buttons(), expected);
    QCOMPARE(writes.count(), 1);
    QCOMPARE(bells.count(), 2);
    QCOMPARE(frameOf(*bar).width(), lockedLayout.width);
}

void TestEditorEndToEnd::probeReportsAndOpensNoWindow()
{
    struct Run
    {
        int exitCode = -1;
        QString out;
        QString probeFile;
        bool probeFileExists = false;
        bool sawWindow = false;
    };
    int runs = 0;
    const auto run = [&](const QStringList& arguments) {
        Run result;
        const QString temp = m_home->path(QStringLiteral("tmp%1").arg(++runs));
        if (!QDir().mkpath(temp))
            return result;
        QProcess process;
        QProcessEnvironment variables = m_home->environment(withoutFrontApp());
        variables.insert(QStringLiteral("TMPDIR"), temp);
        process.setProcessEnvironment(variables);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QStringLiteral(VANTRIL_BINARY), arguments);
        if (!process.waitForStarted(10000))
            return result;
        // The program proper never ends by itself; watching its windows until it does catches a bar.
        const qint64 pid = process.processId();
        const bool ended = waitFor([&] {
            if (hasClientWindows(pid))
                result.sawWindow = true;
            return process.state() == QProcess::NotRunning;
        });
        if (!ended) {
            process.kill();
            process.waitForFinished(10000);
            return result;
        }
        result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        result.out = QString::fromUtf8(process.readAllStandardOutput());
        const QString probeFile = QDir(temp).filePath(QStringLiteral("probe.txt"));
        result.probeFileExists = QFileInfo::exists(probeFile);
        result.probeFile = QString::fromUtf8(readAll(probeFile));
        return result;
    };

    const QStringList expectedLines = {
        QStringLiteral("config folder writable: yes"),
        QStringLiteral("input synthesis (XTest): yes"),
        QStringLiteral("hot key grab: yes"),
        QStringLiteral("global mouse monitor (XInput2): yes"),
        QStringLiteral("clipboard: yes"),
    };
    const auto checkReport = [&](const QString& report) {
        const QStringList lines = report.split(QLatin1Char('\n'));
        if (!lines.first().startsWith(QStringLiteral("Vantril ")) ||
            !lines.first().endsWith(QStringLiteral(" probe")))
            return false;
        for (const QString& wanted : expectedLines) {
            // Some checks say where they looked, after the verdict.
            if (std::none_of(lines.begin(), lines.end(), [&](const QString& line) {
                    return line == wanted || line.startsWith(wanted + QStringLiteral(" ("));
                }))
                return false;
        }
        return true;
    };

    const Run probe = run({QStringLiteral("--probe")});
    QCOMPARE(probe.exitCode, 0);
    QVERIFY2(!probe.sawWindow, "the probe opened a window");
    QVERIFY2(checkReport(probe.out), qPrintable(probe.out));
    QVERIFY2(probe.out.contains(QStringLiteral("config folder writable: yes (%1)").arg(m_home->configDir())),
             qPrintable(probe.out));
    QVERIFY(probe.probeFileExists);
    QCOMPARE(probe.probeFile, probe.out);

    const Run both = run({QStringLiteral("--probe"), QStringLiteral("--probe-prompt")});
    QCOMPARE(both.exitCode, 0);
    QVERIFY2(!both.sawWindow, "the probe opened a window");
    QVERIFY2(checkReport(both.out), qPrintable(both.out));
    QVERIFY2(!both.out.contains(QStringLiteral("AXIsProcessTrustedWithOptions")), qPrintable(both.out));
    QCOMPARE(both.probeFile, both.out);

    const Run prompt = run({QStringLiteral("--probe-prompt")});
    QCOMPARE(prompt.exitCode, 0);
    QVERIFY2(!prompt.sawWindow, "the prompt opened a window");
    QCOMPARE(prompt.out, QStringLiteral("AXIsProcessTrustedWithOptions(prompt) → true\n"));
    // None of them started the program proper, which would have written the default buttons.
    QVERIFY2(!QFileInfo::exists(m_home->buttonsJson()), m_home->buttons().constData());
}

QTEST_MAIN(TestEditorEndToEnd)
#include "tst_editor_e2e.moc"
