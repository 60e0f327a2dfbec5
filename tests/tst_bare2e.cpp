// The real program against a real X server and window manager (openbox): where its windows appear,
// what they tell the window manager, and what clicks on them do, observed from the outside with xprop,
// xwininfo and xdotool. Runs inside tests/x11/with-x-session.sh; every test starts its own copy of the
// program with configuration folders of its own, so no test sees what another one saved.

#include "TestSupport.h"
#include "bar/BarView.h"
#include "config/Config.h"
#include "dragdrop/DragState.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QIcon>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLayout>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <memory>
#include <optional>

namespace {

/// The screen with-x-session.sh sets up.
constexpr int screenWidth = 1440;
constexpr int screenHeight = 900;

/// Long enough for a slow, loaded machine; a passing run never waits for it.
constexpr int windowTimeoutMs = 20000;

QString output(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForFinished(10000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return QString::fromUtf8(process.readAllStandardOutput());
}

QString windowProperty(quintptr window, const QString& name)
{
    return output(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(window), name});
}

/// The windows openbox manages, which are the mapped top-level windows of its clients.
QList<quintptr> clientWindows()
{
    const QString line =
        output(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST")});
    QList<quintptr> windows;
    auto matches = QRegularExpression(QStringLiteral("0x[0-9a-fA-F]+")).globalMatch(line);
    while (matches.hasNext())
        windows.append(matches.next().captured(0).toULongLong(nullptr, 16));
    return windows;
}

/// The title exactly as the window gives it: name searches in xdotool ignore case, and the client
/// leader of the program is called "vantril" too.
std::optional<QString> windowName(quintptr window)
{
    const QString line = windowProperty(window, QStringLiteral("_NET_WM_NAME"));
    const auto match =
        QRegularExpression(QStringLiteral("^_NET_WM_NAME\\(UTF8_STRING\\) = \"(.*)\"\\s*$")).match(line);
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1);
}

std::optional<qint64> windowPid(quintptr window)
{
    const QString line = windowProperty(window, QStringLiteral("_NET_WM_PID"));
    const auto match = QRegularExpression(QStringLiteral("= (\\d+)")).match(line);
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1).toLongLong();
}

/// The managed window of process `pid` titled exactly `name`, if there is one.
std::optional<quintptr> findWindow(const QString& name, qint64 pid)
{
    for (const quintptr window : clientWindows()) {
        if (windowName(window) == name && windowPid(window) == pid)
            return window;
    }
    return std::nullopt;
}

struct WindowInfo
{
    QRect frame;
    bool viewable = false;
};

std::optional<WindowInfo> windowInfo(quintptr window)
{
    const QString text = output(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::number(window)});
    const auto field = [&text](const QString& label) -> std::optional<int> {
        const auto match =
            QRegularExpression(
                QStringLiteral("^\\s*%1:\\s*(-?\\d+)\\s*$").arg(QRegularExpression::escape(label)),
                QRegularExpression::MultilineOption)
                .match(text);
        if (!match.hasMatch())
            return std::nullopt;
        return match.captured(1).toInt();
    };
    const auto x = field(QStringLiteral("Absolute upper-left X"));
    const auto y = field(QStringLiteral("Absolute upper-left Y"));
    const auto width = field(QStringLiteral("Width"));
    const auto height = field(QStringLiteral("Height"));
    if (!x || !y || !width || !height)
        return std::nullopt;
    return WindowInfo{QRect(*x, *y, *width, *height), text.contains(QStringLiteral("Map State: IsViewable"))};
}

QString describe(const QRect& rect)
{
    return QStringLiteral("x=%1 y=%2 w=%3 h=%4")
        .arg(rect.x())
        .arg(rect.y())
        .arg(rect.width())
        .arg(rect.height());
}

/// The window openbox calls active, 0 for None.
quintptr activeWindow()
{
    const QString line =
        output(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_ACTIVE_WINDOW")});
    const auto match = QRegularExpression(QStringLiteral("window id # (0x[0-9a-fA-F]+)")).match(line);
    return match.hasMatch() ? match.captured(1).toULongLong(nullptr, 16) : 0;
}

bool clickAt(const QPoint& global)
{
    // No --sync: it waits for a motion that never comes when the pointer is already there.
    // The warp and the press travel on one connection, so the server sees them in order.
    return QProcess::execute(QStringLiteral("xdotool"),
                             {QStringLiteral("mousemove"), QString::number(global.x()),
                              QString::number(global.y()), QStringLiteral("click"), QStringLiteral("1")}) ==
           0;
}

/// Polls `condition` while serving this process's events, until it holds or `timeoutMs` has passed.
bool waitFor(const std::function<bool()>& condition, int timeoutMs = windowTimeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QTest::qWait(50);
    }
    return true;
}

/// Where the chips of `config` sit on a bar at the bottom of the screen, in bar coordinates, and how wide
/// that bar is. Laid out by the program's own bar view in this process, with the icon theme the program
/// sets up, rather than by pixel offsets copied from its code: a change of font, icon or spacing then
/// moves the clicks along with the chips. The width is compared with the window on screen, which shows
/// that this layout is the one the program drew.
struct BarLayout
{
    int width = 0;
    QHash<QString, QRectF> chips;
};

BarLayout layoutOf(const BarConfig& config)
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(config, {}, true);
    // A hidden widget lays its children out at its final size only when it is shown; this one never is.
    view.layout()->setGeometry(view.rect());
    return {view.width(), view.chipFrames()};
}

QJsonObject jsonObject(const QByteArray& bytes)
{
    return QJsonDocument::fromJson(bytes).object();
}

QStringList setNames(const QJsonObject& config)
{
    QStringList names;
    for (const QJsonValue& set : config.value(QStringLiteral("appSets")).toArray())
        names.append(set.toObject().value(QStringLiteral("name")).toString());
    return names;
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
    void topPlaceIsBelowTheTopEdge();
    void windowTellsTheWindowManagerItIsADock();
    void clickLeavesTheActiveWindowAlone();
    void stackOpensAboveItsChipAndCloses();
    void openAtStartUpNeedsNoClick();
    void movedBarComesBackWhereItWasLeft();
    void folderListingNavigatesDownAndUp();
    void firstLaunchWritesDefaultsAndOneBackup();
    void presetsRestoreAndRemoveAtStartUp();
    void unreadableFileIsKeptAndDefaultsShown();

private:
    QString configDir() const { return m_dir->filePath(QStringLiteral("vantril")); }
    QString buttonsJson() const { return QDir(configDir()).filePath(QStringLiteral("buttons.json")); }
    QString backupsDir() const { return QDir(configDir()).filePath(QStringLiteral("backups")); }
    QString preferencesFile() const { return m_dir->filePath(QStringLiteral("xdg/vantril/vantril.ini")); }

    /// Starts the program with this test's folders and the given extra variables.
    QProcess* launch(const QList<std::pair<QString, QString>>& variables = {},
                     QProcess::ProcessChannelMode channels = QProcess::ForwardedErrorChannel);
    /// Waits for the bar of `process` to be on screen.
    std::optional<quintptr> waitForBar(const QProcess* process);
    /// Where the window is on screen, empty when it is gone.
    QRect frameOf(quintptr window);
    /// The process's flyout while one is on screen.
    std::optional<quintptr> shownFlyout(const QProcess* process);
    /// Starts keyprobe and waits until openbox has made it the active window.
    std::optional<quintptr> startActiveClient();
    /// Stops `process` and waits until its windows are gone, so that none lingers into the next step.
    void stop(QProcess* process, bool gently = false);

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<QProcess*> m_processes;
};

void TestBarEndToEnd::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QCOMPARE(screen, QRect(0, 0, screenWidth, screenHeight));
    // The same icon theme as the program's, so that the chips laid out here have its icons' widths.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

void TestBarEndToEnd::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(QDir().mkpath(m_dir->filePath(QStringLiteral("xdg"))));
}

void TestBarEndToEnd::cleanup()
{
    for (QProcess* process : std::as_const(m_processes))
        stop(process);
    qDeleteAll(m_processes);
    m_processes.clear();
    m_dir.reset();
}

QProcess* TestBarEndToEnd::launch(const QList<std::pair<QString, QString>>& variables,
                                  QProcess::ProcessChannelMode channels)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        if (name.startsWith(QStringLiteral("VANTRIL_")))
            environment.remove(name);
    }
    environment.insert(QStringLiteral("VANTRIL_CONFIG_DIR"), configDir());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_dir->filePath(QStringLiteral("xdg")));
    for (const auto& [name, value] : variables)
        environment.insert(name, value);

    auto* process = new QProcess;
    m_processes.append(process);
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(channels);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start(QStringLiteral(VANTRIL_BINARY), {});
    if (!process->waitForStarted(10000))
        qWarning("cannot start %s: %s", VANTRIL_BINARY, qPrintable(process->errorString()));
    return process;
}

std::optional<quintptr> TestBarEndToEnd::waitForBar(const QProcess* process)
{
    std::optional<quintptr> bar;
    waitFor([&] {
        if (process->state() != QProcess::Running)
            return true;
        bar = findWindow(QStringLiteral("Vantril"), process->processId());
        return bar && windowInfo(*bar).value_or(WindowInfo{}).viewable;
    });
    return bar;
}

QRect TestBarEndToEnd::frameOf(quintptr window)
{
    return windowInfo(window).value_or(WindowInfo{}).frame;
}

std::optional<quintptr> TestBarEndToEnd::shownFlyout(const QProcess* process)
{
    const auto flyout = findWindow(QStringLiteral("Vantril flyout"), process->processId());
    if (!flyout || !windowInfo(*flyout).value_or(WindowInfo{}).viewable)
        return std::nullopt;
    return flyout;
}

std::optional<quintptr> TestBarEndToEnd::startActiveClient()
{
    auto* probe = new QProcess;
    m_processes.append(probe);
    probe->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    probe->setStandardOutputFile(QProcess::nullDevice());
    probe->start(QStringLiteral(KEYPROBE_BINARY), {m_dir->filePath(QStringLiteral("presses.txt")),
                                                   m_dir->filePath(QStringLiteral("text.txt"))});
    if (!probe->waitForStarted(10000))
        return std::nullopt;
    std::optional<quintptr> window;
    waitFor([&] {
        window = findWindow(QStringLiteral("keyprobe"), probe->processId());
        return window && activeWindow() == *window;
    });
    if (!window || activeWindow() != *window)
        return std::nullopt;
    return window;
}

void TestBarEndToEnd::stop(QProcess* process, bool gently)
{
    if (process->state() == QProcess::NotRunning)
        return;
    const qint64 pid = process->processId();
    if (gently)
        process->terminate();
    else
        process->kill();
    if (!process->waitForFinished(10000)) {
        process->kill();
        process->waitForFinished(10000);
    }
    // openbox drops a dead client's windows from its list a moment later.
    waitFor([pid] {
        const QList<quintptr> windows = clientWindows();
        return std::none_of(windows.begin(), windows.end(),
                            [pid](quintptr window) { return windowPid(window) == pid; });
    });
}

void TestBarEndToEnd::defaultPlaceIsBottomCentre()
{
    QProcess* vantril = launch();
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");

    const auto placed = [&] {
        const QRect frame = frameOf(*bar);
        const int centredX = qRound(screenWidth / 2.0 - frame.width() / 2.0);
        return frame.height() == BarView::barHeight && frame.bottom() + 1 == screenHeight - 6 &&
               qAbs(frame.x() - centredX) <= 1;
    };
    QVERIFY2(waitFor(placed), qPrintable(describe(frameOf(*bar))));
    QCOMPARE(frameOf(*bar).width(), layoutOf(Config::defaults()).width); // the default buttons, no more
}

void TestBarEndToEnd::topPlaceIsBelowTheTopEdge()
{
    QProcess* vantril = launch({{QStringLiteral("VANTRIL_TOP"), QStringLiteral("1")}});
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");

    const auto placed = [&] {
        const QRect frame = frameOf(*bar);
        const int centredX = qRound(screenWidth / 2.0 - frame.width() / 2.0);
        return frame.height() == BarView::barHeight && frame.y() == 6 && qAbs(frame.x() - centredX) <= 1;
    };
    QVERIFY2(waitFor(placed), qPrintable(describe(frameOf(*bar))));
}

void TestBarEndToEnd::windowTellsTheWindowManagerItIsADock()
{
    QProcess* vantril = launch();
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");

    QCOMPARE(windowProperty(*bar, QStringLiteral("_NET_WM_WINDOW_TYPE")).trimmed(),
             QStringLiteral("_NET_WM_WINDOW_TYPE(ATOM) = _NET_WM_WINDOW_TYPE_DOCK"));

    // openbox rewrites the state itself and leaves out STICKY, which it does not support.
    const QString state = windowProperty(*bar, QStringLiteral("_NET_WM_STATE"));
    const QStringList atoms = state.section(QLatin1Char('='), 1)
                                  .split(QLatin1Char(','), Qt::SkipEmptyParts)
                                  .replaceInStrings(QRegularExpression(QStringLiteral("\\s")), QString());
    for (const QString& wanted :
         {QStringLiteral("_NET_WM_STATE_ABOVE"), QStringLiteral("_NET_WM_STATE_SKIP_TASKBAR"),
          QStringLiteral("_NET_WM_STATE_SKIP_PAGER")})
        QVERIFY2(atoms.contains(wanted), qPrintable(state));

    QCOMPARE(windowProperty(*bar, QStringLiteral("_NET_WM_DESKTOP")).trimmed(),
             QStringLiteral("_NET_WM_DESKTOP(CARDINAL) = 4294967295"));
    const QString hints = windowProperty(*bar, QStringLiteral("WM_HINTS"));
    QVERIFY2(hints.contains(QStringLiteral("Client accepts input or input focus: False")), qPrintable(hints));
}

void TestBarEndToEnd::clickLeavesTheActiveWindowAlone()
{
    const auto client = startActiveClient();
    QVERIFY2(client, "keyprobe did not become the active window");

    QProcess* vantril = launch();
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");
    QCOMPARE(activeWindow(), *client); // showing the bar takes nothing either

    const BarLayout layout = layoutOf(Config::defaults());
    QVERIFY2(waitFor([&] { return frameOf(*bar).width() == layout.width; }),
             qPrintable(describe(frameOf(*bar))));
    const QRect frame = frameOf(*bar);
    QVERIFY(clickAt(frame.topLeft() + layout.chips.value(QStringLiteral("Files")).center().toPoint()));
    // openbox lists the flyout only after it has handled the press that opened it, so a change of focus
    // caused by that press would show by now.
    QVERIFY2(waitFor([&] { return shownFlyout(vantril).has_value(); }), "the click opened no flyout");
    QCOMPARE(activeWindow(), *client);
}

void TestBarEndToEnd::stackOpensAboveItsChipAndCloses()
{
    const auto client = startActiveClient();
    QVERIFY2(client, "keyprobe did not become the active window");
    QProcess* vantril = launch();
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");

    const BarLayout layout = layoutOf(Config::defaults());
    QVERIFY2(waitFor([&] { return frameOf(*bar).width() == layout.width; }),
             qPrintable(describe(frameOf(*bar))));
    const QRect barFrame = frameOf(*bar);
    const QRectF chip = layout.chips.value(QStringLiteral("Files"));
    const QPoint chipCentre = barFrame.topLeft() + chip.center().toPoint();

    QVERIFY(clickAt(chipCentre));
    std::optional<quintptr> flyout;
    QVERIFY2(waitFor([&] { return (flyout = shownFlyout(vantril)).has_value(); }), "no flyout appeared");
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
    QVERIFY2(waitFor([&] { return !shownFlyout(vantril); }), "a second tap left the flyout open");

    // A click into another application closes it too.
    QVERIFY(clickAt(chipCentre));
    QVERIFY2(waitFor([&] { return shownFlyout(vantril).has_value(); }), "the flyout did not open again");
    const QRect clientFrame = frameOf(*client);
    QVERIFY(!clientFrame.intersects(frameOf(*shownFlyout(vantril))));
    QVERIFY(clickAt(clientFrame.center()));
    QVERIFY2(waitFor([&] { return !shownFlyout(vantril); }), "a click elsewhere left the flyout open");
    QVERIFY(waitFor([&] { return frameOf(*bar) == barFrame; })); // the bar stays where it was
}

void TestBarEndToEnd::openAtStartUpNeedsNoClick()
{
    QProcess* vantril = launch({{QStringLiteral("VANTRIL_OPEN"), QStringLiteral("Apps")}});
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");

    std::optional<quintptr> flyout;
    QVERIFY2(waitFor([&] { return (flyout = shownFlyout(vantril)).has_value(); }, 10000),
             "VANTRIL_OPEN opened no flyout");
    const BarLayout layout = layoutOf(Config::defaults());
    const QRectF chip = layout.chips.value(QStringLiteral("Apps"));
    const auto onApps = [&] {
        const QRect barFrame = frameOf(*bar);
        const QRect frame = frameOf(*flyout);
        return qAbs(frame.x() + frame.width() / 2.0 - (barFrame.x() + chip.center().x())) <= 2 &&
               frame.bottom() + 1 == barFrame.y() - 4;
    };
    QVERIFY2(
        waitFor(onApps),
        qPrintable(
            QStringLiteral("flyout %1, bar %2").arg(describe(frameOf(*flyout)), describe(frameOf(*bar)))));
}

void TestBarEndToEnd::movedBarComesBackWhereItWasLeft()
{
    QProcess* first = launch({{QStringLiteral("VANTRIL_MOVE"), QStringLiteral("100,50")}});
    const auto bar = waitForBar(first);
    QVERIFY2(bar, "no bar window appeared");

    const int width = frameOf(*bar).width();
    const QPoint start(qRound(screenWidth / 2.0 - width / 2.0), screenHeight - 6 - BarView::barHeight);
    const QPoint moved = start + QPoint(100, -50);
    const auto near = [](const QPoint& a, const QPoint& b) {
        return qAbs(a.x() - b.x()) <= 1 && qAbs(a.y() - b.y()) <= 1;
    };
    QVERIFY2(waitFor([&] { return near(frameOf(*bar).topLeft(), moved); }),
             qPrintable(describe(frameOf(*bar))));

    // The place is saved a moment after the move; stopping earlier would lose it.
    QVERIFY2(waitFor([&] { return readAll(preferencesFile()).contains("[barPosition]"); }),
             "the moved place was never saved");
    stop(first, true);

    QProcess* second = launch();
    const auto again = waitForBar(second);
    QVERIFY2(again, "no bar window appeared after the restart");
    QVERIFY2(waitFor([&] { return near(frameOf(*again).topLeft(), moved); }),
             qPrintable(QStringLiteral("%1, expected x=%2 y=%3")
                            .arg(describe(frameOf(*again)))
                            .arg(moved.x())
                            .arg(moved.y())));
}

void TestBarEndToEnd::folderListingNavigatesDownAndUp()
{
    const QString folder = m_dir->filePath(QStringLiteral("listed"));
    QVERIFY(QDir().mkpath(QDir(folder).filePath(QStringLiteral("sub"))));
    QVERIFY(writeAll(QDir(folder).filePath(QStringLiteral("a.txt")), "a"));
    QVERIFY(writeAll(QDir(folder).filePath(QStringLiteral("b.txt")), "b"));
    QVERIFY(writeAll(QDir(folder).filePath(QStringLiteral("sub/c.txt")), "c"));

    QJsonObject button;
    button.insert(QStringLiteral("title"), QStringLiteral("Listed"));
    button.insert(QStringLiteral("symbol"), QStringLiteral("folder"));
    button.insert(QStringLiteral("action"), QStringLiteral("folder"));
    button.insert(QStringLiteral("argument"), folder);
    QJsonObject config;
    config.insert(QStringLiteral("buttons"), QJsonArray{button});
    QVERIFY(QDir().mkpath(configDir()));
    QVERIFY(writeAll(buttonsJson(), QJsonDocument(config).toJson()));

    QProcess* vantril = launch({{QStringLiteral("VANTRIL_OPEN"), QStringLiteral("Listed")}});
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");
    std::optional<quintptr> flyout;
    QVERIFY2(waitFor([&] { return (flyout = shownFlyout(vantril)).has_value(); }), "the folder did not open");

    // "Open in File Manager", sub, a.txt, b.txt: four rows of one height between 8 pixel margins, 6 apart.
    // The row height comes from this measurement rather than from font metrics.
    QVERIFY(waitFor([&] { return frameOf(*flyout).height() > 16; }));
    const QRect top = frameOf(*flyout);
    const double rowHeight = (top.height() - 2 * 8 - 3 * 6) / 4.0;
    QVERIFY2(rowHeight >= 16 && rowHeight == std::floor(rowHeight), qPrintable(describe(top)));
    const int pitch = int(rowHeight) + 6;
    const auto rowCentre = [&](const QRect& frame, int row) {
        return QPoint(frame.x() + frame.width() / 2, frame.y() + 8 + row * pitch + int(rowHeight) / 2);
    };
    // One row fewer: "Open in File Manager", the way back up, c.txt.
    const int subHeight = top.height() - pitch;

    QVERIFY(clickAt(rowCentre(top, 1)));
    std::optional<quintptr> inner;
    QVERIFY2(waitFor([&] {
                 inner = shownFlyout(vantril);
                 return inner && frameOf(*inner).height() == subHeight;
             }),
             qPrintable(QStringLiteral("expected a flyout %1 high, have %2")
                            .arg(subHeight)
                            .arg(inner ? describe(frameOf(*inner)) : QStringLiteral("none"))));
    // Still above the bar, where the folder's chip is.
    const QRect innerFrame = frameOf(*inner);
    QCOMPARE(innerFrame.bottom() + 1, frameOf(*bar).y() - 4);

    QVERIFY(clickAt(rowCentre(innerFrame, 1)));
    std::optional<quintptr> back;
    QVERIFY2(waitFor([&] {
                 back = shownFlyout(vantril);
                 return back && frameOf(*back).height() == top.height();
             }),
             qPrintable(QStringLiteral("expected a flyout %1 high, have %2")
                            .arg(top.height())
                            .arg(back ? describe(frameOf(*back)) : QStringLiteral("none"))));
    QVERIFY(vantril->state() == QProcess::Running);
}

void TestBarEndToEnd::firstLaunchWritesDefaultsAndOneBackup()
{
    QProcess* vantril = launch();
    QVERIFY2(waitForBar(vantril), "no bar window appeared");
    const QByteArray defaults = Config::encoded(Config::defaults());
    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == defaults; }), readAll(buttonsJson()).constData());
    // The backup is taken before the bar is shown.
    const QStringList backups = entries(backupsDir());
    QCOMPARE(backups.size(), 1);
    QVERIFY2(QRegularExpression(QStringLiteral("^buttons-\\d{4}-\\d\\d-\\d\\d-\\d{6}\\.json$"))
                 .match(backups.first())
                 .hasMatch(),
             qPrintable(backups.first()));
    QCOMPARE(readAll(QDir(backupsDir()).filePath(backups.first())), defaults);
}

void TestBarEndToEnd::presetsRestoreAndRemoveAtStartUp()
{
    QProcess* first = launch();
    QVERIFY2(waitForBar(first), "no bar window appeared");
    const QByteArray defaults = Config::encoded(Config::defaults());
    QVERIFY(waitFor([&] { return readAll(buttonsJson()) == defaults; }));
    stop(first);

    // Empty names and one that is no preset are passed over; the rest are added in order.
    QProcess* second = launch({{QStringLiteral("VANTRIL_PRESET"), QStringLiteral(",Mail,,Nope, Music")}});
    QVERIFY2(waitForBar(second), "no bar window appeared");
    const QStringList mailAndMusic = {QStringLiteral("Mail"), QStringLiteral("Music")};
    QVERIFY2(waitFor([&] { return setNames(jsonObject(readAll(buttonsJson()))) == mailAndMusic; }),
             readAll(buttonsJson()).constData());
    stop(second);

    // A backup with the Mail set alone, so that restoring it, then removing Mail, leaves no set behind.
    QJsonObject withMail = jsonObject(readAll(buttonsJson()));
    QJsonArray sets = withMail.value(QStringLiteral("appSets")).toArray();
    sets.removeAt(1);
    withMail.insert(QStringLiteral("appSets"), sets);
    const QString restored = QStringLiteral("buttons-2020-01-01-000000.json");
    QVERIFY(writeAll(QDir(backupsDir()).filePath(restored), QJsonDocument(withMail).toJson()));

    QProcess* third = launch({{QStringLiteral("VANTRIL_RESTORE"), restored},
                              {QStringLiteral("VANTRIL_REMOVE_PRESET"), QStringLiteral("Mail")},
                              {QStringLiteral("VANTRIL_PRESET"), QStringLiteral("Finder")}});
    QVERIFY2(waitForBar(third), "no bar window appeared");
    const QJsonArray defaultButtons = jsonObject(defaults).value(QStringLiteral("buttons")).toArray();
    QVERIFY2(waitFor([&] {
                 const QJsonObject now = jsonObject(readAll(buttonsJson()));
                 return setNames(now) == QStringList{QStringLiteral("Finder")} &&
                        now.value(QStringLiteral("buttons")).toArray() == defaultButtons;
             }),
             readAll(buttonsJson()).constData());
}

void TestBarEndToEnd::unreadableFileIsKeptAndDefaultsShown()
{
    const QByteArray broken = "{ \"buttons\": [ this is not json\n";
    QVERIFY(QDir().mkpath(configDir()));
    QVERIFY(writeAll(buttonsJson(), broken));

    QProcess* vantril = launch({}, QProcess::SeparateChannels);
    QVERIFY2(waitForBar(vantril), "no bar window appeared");
    const QString message = QStringLiteral(
        "buttons.json was unreadable and there is no backup; using defaults without overwriting it");
    QString log;
    const auto logged = [&] {
        log += QString::fromUtf8(vantril->readAllStandardError());
        return log.split(QLatin1Char('\n')).contains(message);
    };
    QVERIFY2(waitFor(logged), qPrintable(log));
    QCOMPARE(log.split(QLatin1Char('\n')).count(message), 1);

    // The defaults are on screen: the bar has their width.
    const auto bar = findWindow(QStringLiteral("Vantril"), vantril->processId());
    QVERIFY(bar);
    const int width = layoutOf(Config::defaults()).width;
    QVERIFY2(waitFor([&] { return frameOf(*bar).width() == width; }), qPrintable(describe(frameOf(*bar))));

    QCOMPARE(readAll(buttonsJson()), broken);
    const QStringList backups = entries(backupsDir());
    QCOMPARE(backups.size(), 1);
    QVERIFY2(backups.first().startsWith(QStringLiteral("invalid-")) &&
                 backups.first().endsWith(QStringLiteral(".json")),
             qPrintable(backups.first()));
    QCOMPARE(readAll(QDir(backupsDir()).filePath(backups.first())), broken);
}

QTEST_MAIN(TestBarEndToEnd)
#include "tst_bare2e.moc"
