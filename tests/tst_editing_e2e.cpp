// Editing the real program's buttons from the outside, against a real X server and window manager
// (openbox): chips dragged with the pointer, files and links dropped from another program over XDND,
// the buttons of the application in front, and buttons.json edited by hand while the program runs.
// Runs inside tests/x11/with-x-session.sh. Every test writes its own buttons.json into folders of its own
// before it starts the program, and reads the outcome back from that file or from the bar's width.

#include "TestSupport.h"
#include "bar/BarView.h"
#include "config/Config.h"
#include "config/ConfigReader.h"
#include "dragdrop/DragState.h"

#include <QAbstractNativeEventFilter>
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
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

namespace {

/// The screen with-x-session.sh sets up.
constexpr int screenWidth = 1440;
constexpr int screenHeight = 900;

/// Long enough for a slow, loaded machine; a passing run never waits for it.
constexpr int timeoutMs = 20000;

/// What the program writes to standard error when an "applescript" chip is tapped. Such a chip does
/// nothing else, so a tap on it tells when the program has handled all the input sent before it.
const QString tapLogLine = QStringLiteral("AppleScript is not available");

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

/// Read exactly: xdotool's name search ignores case, and the program's client leader is "vantril".
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

QRect frameOf(quintptr window)
{
    return windowInfo(window).value_or(WindowInfo{}).frame;
}

QString describe(const QRect& rect)
{
    return QStringLiteral("x=%1 y=%2 w=%3 h=%4")
        .arg(rect.x())
        .arg(rect.y())
        .arg(rect.width())
        .arg(rect.height());
}

quintptr activeWindow()
{
    const QString line =
        output(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_ACTIVE_WINDOW")});
    const auto match = QRegularExpression(QStringLiteral("window id # (0x[0-9a-fA-F]+)")).match(line);
    return match.hasMatch() ? match.captured(1).toULongLong(nullptr, 16) : 0;
}

bool xdotool(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

QStringList moveTo(const QPoint& point)
{
    return {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y())};
}

/// Moves in even steps from `from` to `to`; the button stays as it is.
QStringList stepsBetween(const QPoint& from, const QPoint& to, int steps)
{
    QStringList arguments;
    for (int i = 1; i <= steps; ++i)
        arguments += moveTo(from + (to - from) * i / steps);
    return arguments;
}

/// Press at the first point, move through the others, release: one drag, sent over one connection so
/// that the server sees every event in order. No --sync: it waits for a motion that never comes when
/// nothing moves.
bool dragAlong(const QList<QPoint>& path)
{
    QStringList arguments = moveTo(path.first());
    arguments += {QStringLiteral("mousedown"), QStringLiteral("1")};
    for (qsizetype i = 1; i < path.size(); ++i)
        arguments += moveTo(path.at(i));
    arguments += {QStringLiteral("mouseup"), QStringLiteral("1")};
    return xdotool(arguments);
}

/// A drag from `from` to `to` in even steps.
bool dragPointer(const QPoint& from, const QPoint& to)
{
    constexpr int steps = 10;
    QList<QPoint> path;
    for (int i = 0; i <= steps; ++i)
        path.append(from + (to - from) * i / steps);
    return dragAlong(path);
}

bool clickAt(const QPoint& global)
{
    return xdotool(moveTo(global) + QStringList{QStringLiteral("click"), QStringLiteral("1")});
}

/// Polls `condition` while serving this process's events, until it holds or `ms` have passed.
bool waitFor(const std::function<bool()>& condition, int ms = timeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > ms)
            return false;
        QTest::qWait(50);
    }
    return true;
}

/// One pixel of the screen as the X server has it.
QColor pixelAt(const QPoint& global)
{
    const QImage image =
        QGuiApplication::primaryScreen()->grabWindow(0, global.x(), global.y(), 1, 1).toImage();
    return image.isNull() ? QColor() : image.pixelColor(0, 0);
}

/// The drop marker and a stack's highlight are white; nothing else on the plate is.
bool isWhite(const QColor& colour)
{
    return colour.isValid() && colour.red() >= 235 && colour.green() >= 235 && colour.blue() >= 235;
}

/// Where the chips of `config` (with `context` after the separator) sit on a bar expanding upwards, in
/// bar coordinates, and how wide that bar is. Laid out by the program's own bar view in this process,
/// with the icon theme the program sets up, so that a change of font, icon or spacing moves the pointer
/// along with the chips; the width is compared with the window on screen, which shows that this layout
/// is the one the program drew.
struct BarLayout
{
    int width = 0;
    QHash<QString, QRectF> chips;
};

BarLayout layoutOf(const BarConfig& config, const QList<ButtonSpec>& context = {})
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(config, context, true);
    // A hidden widget lays its children out at its final size only when it is shown; this one never is.
    view.layout()->setGeometry(view.rect());
    return {view.width(), view.chipFrames()};
}

QJsonObject plain(const QString& title)
{
    return {{QStringLiteral("title"), title},
            {QStringLiteral("symbol"), QStringLiteral("doc")},
            {QStringLiteral("action"), QStringLiteral("open")},
            {QStringLiteral("argument"), QStringLiteral("/tmp")}};
}

/// A chip whose tap only writes a line to standard error.
QJsonObject logChip(const QString& title)
{
    return {{QStringLiteral("title"), title},
            {QStringLiteral("symbol"), QStringLiteral("terminal")},
            {QStringLiteral("action"), QStringLiteral("applescript")},
            {QStringLiteral("argument"), QStringLiteral("beep")}};
}

QJsonObject stack(const QString& title, const QJsonArray& children)
{
    return {{QStringLiteral("title"), title},
            {QStringLiteral("symbol"), QStringLiteral("folder")},
            {QStringLiteral("action"), QStringLiteral("group")},
            {QStringLiteral("children"), children}};
}

QJsonObject document(const QJsonArray& buttons)
{
    return {{QStringLiteral("buttons"), buttons}};
}

QJsonArray plainButtons(const QStringList& titles)
{
    QJsonArray buttons;
    for (const QString& title : titles)
        buttons.append(plain(title));
    return buttons;
}

BarConfig decoded(const QJsonObject& json)
{
    return ConfigReader::decode(QJsonDocument(json).toJson()).value_or(BarConfig{});
}

QJsonObject parsed(const QByteArray& bytes)
{
    return QJsonDocument::fromJson(bytes).object();
}

QStringList titlesOf(const QJsonArray& buttons)
{
    QStringList titles;
    for (const QJsonValue& button : buttons)
        titles.append(button.toObject().value(QStringLiteral("title")).toString());
    return titles;
}

QStringList topTitles(const QByteArray& bytes)
{
    return titlesOf(parsed(bytes).value(QStringLiteral("buttons")).toArray());
}

QJsonObject topButton(const QByteArray& bytes, const QString& title)
{
    for (const QJsonValue& button : parsed(bytes).value(QStringLiteral("buttons")).toArray()) {
        if (button.toObject().value(QStringLiteral("title")).toString() == title)
            return button.toObject();
    }
    return {};
}

QJsonArray childrenOf(const QByteArray& bytes, const QString& title)
{
    return topButton(bytes, title).value(QStringLiteral("children")).toArray();
}

/// Counts the sizes a foreign window takes, from the ConfigureNotify events the X server sends about it.
class ResizeLog : public QAbstractNativeEventFilter
{
public:
    explicit ResizeLog(quintptr window)
        : m_window(static_cast<xcb_window_t>(window))
    {
        auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        m_connection = x11 ? x11->connection() : nullptr;
        if (!m_connection)
            return;
        // This connection has selected nothing on that window yet, so nothing is replaced.
        const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, m_window, XCB_CW_EVENT_MASK, &mask);
        // A round trip: once it returns, the server sends every later change of the window here.
        free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
        qApp->installNativeEventFilter(this);
    }

    ~ResizeLog() override
    {
        if (!m_connection)
            return;
        qApp->removeNativeEventFilter(this);
        const uint32_t none = 0;
        xcb_change_window_attributes(m_connection, m_window, XCB_CW_EVENT_MASK, &none);
        xcb_flush(m_connection);
    }

    bool isValid() const { return m_connection != nullptr; }

    /// The widths the window was given, in order, each run of one width counted once.
    QList<int> widths() const { return m_widths; }

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr*) override
    {
        if (type != "xcb_generic_event_t")
            return false;
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        if ((event->response_type & 0x7f) != XCB_CONFIGURE_NOTIFY)
            return false;
        const auto* configure = reinterpret_cast<const xcb_configure_notify_event_t*>(event);
        if (configure->window == m_window && (m_widths.isEmpty() || m_widths.last() != configure->width))
            m_widths.append(configure->width);
        return false;
    }

private:
    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_window;
    QList<int> m_widths;
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
    void lockedChipStaysWhereItIs();
    void chipDroppedOnStackJoinsItInItsColour();
    void stackDroppedOnStackLandsBesideIt();
    void memberDraggedOutOfFlyoutLandsOnTheBar();

    void filesDroppedBetweenChipsLandInReverseOrder();
    void linkDropsBecomeNumberedUrlButtons();
    void fileDroppedOnAppChipOpensWithIt();

    void frontApplicationChoosesTheSet();
    void contextFromEnvironmentIsFixed();

    void handEditsAreFollowed();

private:
    QString configDir() const { return m_dir->filePath(QStringLiteral("vantril")); }
    QString buttonsJson() const { return QDir(configDir()).filePath(QStringLiteral("buttons.json")); }
    QString backupsDir() const { return QDir(configDir()).filePath(QStringLiteral("backups")); }
    QString path(const QString& name) const { return m_dir->filePath(name); }

    bool writeConfig(const QJsonObject& config);
    QProcess* launch(const QList<std::pair<QString, QString>>& variables = {});
    /// Writes `config`, starts the program and waits until its bar shows exactly those buttons.
    bool startBar(const QJsonObject& config, const QList<std::pair<QString, QString>>& variables = {});
    /// Waits until the bar has `width` and keeps its frame.
    bool waitForWidth(int width, int ms = timeoutMs);
    QPoint chipCentre(const BarLayout& layout, const QString& title) const;
    /// The middle of the gap between chip `left` and the chip after it, where the drop marker goes.
    QPoint gapAfter(const BarLayout& layout, const QString& left) const;
    /// Everything the program has written to standard error so far.
    QString log();
    /// Taps the program's "applescript" chip titled `title` and waits until it has handled the tap.
    bool tapAndWait(const BarLayout& layout, const QString& title);
    /// Waits until buttons.json differs from `before` and decodes.
    bool waitForSave(const QByteArray& before);
    /// Starts a helper program and waits for its window titled `name`.
    std::optional<quintptr> startHelper(const QString& program, const QStringList& arguments,
                                        const QString& name, QProcess** started = nullptr);
    /// Drags from the drag source's window to `target` and drops there once `hovering` shows that the
    /// program has taken the drag.
    bool dropFromSource(QProcess* source, quintptr sourceWindow, const QPoint& target,
                        const std::function<bool()>& hovering);
    void stop(QProcess* process);

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<QProcess*> m_processes;
    QProcess* m_vantril = nullptr;
    QString m_log;
    quintptr m_bar = 0;
    QRect m_barFrame;
};

void TestEditingEndToEnd::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    QCOMPARE(QGuiApplication::primaryScreen()->geometry(), QRect(0, 0, screenWidth, screenHeight));
    // The program's icon theme, so that the chips laid out here have its icons' widths.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

void TestEditingEndToEnd::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(QDir().mkpath(path(QStringLiteral("xdg"))));
    QVERIFY(QDir().mkpath(configDir()));
}

void TestEditingEndToEnd::cleanup()
{
    if (QTest::currentTestFailed() && m_vantril) {
        std::fprintf(stderr, "--- program's standard error ---\n%s--- buttons.json ---\n%s\n",
                     qPrintable(log()), readAll(buttonsJson()).constData());
    }
    for (QProcess* process : std::as_const(m_processes))
        stop(process);
    qDeleteAll(m_processes);
    m_processes.clear();
    m_vantril = nullptr;
    m_log.clear();
    m_bar = 0;
    m_barFrame = {};
    m_dir.reset();
}

bool TestEditingEndToEnd::writeConfig(const QJsonObject& config)
{
    return writeAll(buttonsJson(), QJsonDocument(config).toJson());
}

QProcess* TestEditingEndToEnd::launch(const QList<std::pair<QString, QString>>& variables)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        if (name.startsWith(QStringLiteral("VANTRIL_")))
            environment.remove(name);
    }
    environment.insert(QStringLiteral("VANTRIL_CONFIG_DIR"), configDir());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), path(QStringLiteral("xdg")));
    for (const auto& [name, value] : variables)
        environment.insert(name, value);

    auto* process = new QProcess;
    m_processes.append(process);
    process->setProcessEnvironment(environment);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start(QStringLiteral(VANTRIL_BINARY), {});
    if (!process->waitForStarted(10000))
        qWarning("cannot start %s: %s", VANTRIL_BINARY, qPrintable(process->errorString()));
    m_vantril = process;
    return process;
}

bool TestEditingEndToEnd::startBar(const QJsonObject& config,
                                   const QList<std::pair<QString, QString>>& variables)
{
    if (!writeConfig(config))
        return false;
    QProcess* process = launch(variables);
    std::optional<quintptr> bar;
    waitFor([&] {
        if (process->state() != QProcess::Running)
            return true;
        bar = findWindow(QStringLiteral("Vantril"), process->processId());
        return bar && windowInfo(*bar).value_or(WindowInfo{}).viewable;
    });
    if (!bar) {
        qWarning("no bar window appeared");
        return false;
    }
    m_bar = *bar;
    return true;
}

bool TestEditingEndToEnd::waitForWidth(int width, int ms)
{
    const bool done = waitFor(
        [&] {
            m_barFrame = frameOf(m_bar);
            return m_barFrame.width() == width;
        },
        ms);
    if (!done)
        qWarning("bar is %s, expected width %d", qPrintable(describe(m_barFrame)), width);
    return done;
}

QPoint TestEditingEndToEnd::chipCentre(const BarLayout& layout, const QString& title) const
{
    return m_barFrame.topLeft() + layout.chips.value(title).center().toPoint();
}

QPoint TestEditingEndToEnd::gapAfter(const BarLayout& layout, const QString& left) const
{
    const QRectF chip = layout.chips.value(left);
    return m_barFrame.topLeft() + QPoint(qRound(chip.right()) + 4, BarView::barHeight / 2);
}

QString TestEditingEndToEnd::log()
{
    if (m_vantril)
        m_log += QString::fromUtf8(m_vantril->readAllStandardError());
    return m_log;
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
        const QByteArray now = readAll(buttonsJson());
        return now != before && ConfigReader::decode(now).has_value();
    });
}

std::optional<quintptr> TestEditingEndToEnd::startHelper(const QString& program, const QStringList& arguments,
                                                         const QString& name, QProcess** started)
{
    auto* process = new QProcess;
    m_processes.append(process);
    process->setProcessChannelMode(QProcess::SeparateChannels);
    process->start(program, arguments);
    if (!process->waitForStarted(10000))
        return std::nullopt;
    if (started)
        *started = process;
    std::optional<quintptr> window;
    waitFor([&] {
        window = findWindow(name, process->processId());
        return window && windowInfo(*window).value_or(WindowInfo{}).viewable;
    });
    return window;
}

bool TestEditingEndToEnd::dropFromSource(QProcess* source, quintptr sourceWindow, const QPoint& target,
                                         const std::function<bool()>& hovering)
{
    QString said;
    const auto saidCount = [&](const char* word) {
        said += QString::fromUtf8(source->readAllStandardOutput());
        return said.count(QLatin1String(word));
    };
    const qsizetype startedBefore = saidCount("started");
    const qsizetype finishedBefore = saidCount("finished");

    const QPoint start = frameOf(sourceWindow).center();
    if (!xdotool(moveTo(start) + QStringList{QStringLiteral("mousedown"), QStringLiteral("1")}))
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
    while (!shown && timer.elapsed() < timeoutMs) {
        QTest::qWait(100);
        shown = hovering();
        if (!shown)
            xdotool(moveTo(target + QPoint(1, 0)) + moveTo(target));
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

void TestEditingEndToEnd::stop(QProcess* process)
{
    if (process->state() == QProcess::NotRunning)
        return;
    const qint64 pid = process->processId();
    process->kill();
    process->waitForFinished(10000);
    // openbox drops a dead client's windows from its list a moment later.
    waitFor([pid] {
        const QList<quintptr> windows = clientWindows();
        return std::none_of(windows.begin(), windows.end(),
                            [pid](quintptr window) { return windowPid(window) == pid; });
    });
}

// ---- chips dragged with the pointer ----

void TestEditingEndToEnd::chipDraggedToEitherEndMovesThere()
{
    const QStringList titles = {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                                QStringLiteral("4"), QStringLiteral("5")};
    const QJsonObject config = document(plainButtons(titles));
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(decoded(config));
    QVERIFY(waitForWidth(layout.width));

    QByteArray before = readAll(buttonsJson());
    const QPoint farLeft = m_barFrame.topLeft() + QPoint(4, BarView::barHeight / 2);
    QVERIFY(dragPointer(chipCentre(layout, QStringLiteral("3")), farLeft));
    QVERIFY2(waitForSave(before), "the drag to the left end changed nothing");
    QCOMPARE(topTitles(readAll(buttonsJson())),
             (QStringList{QStringLiteral("3"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("4"),
                          QStringLiteral("5")}));

    // The same chips in another order: the bar keeps its width, and the chips move along.
    const BarLayout reordered = layoutOf(*ConfigReader::decode(readAll(buttonsJson())));
    QVERIFY(waitForWidth(reordered.width));
    before = readAll(buttonsJson());
    const QPoint farRight = m_barFrame.topLeft() + QPoint(m_barFrame.width() - 4, BarView::barHeight / 2);
    QVERIFY(dragPointer(chipCentre(reordered, QStringLiteral("3")), farRight));
    QVERIFY2(waitForSave(before), "the drag to the right end changed nothing");
    QCOMPARE(topTitles(readAll(buttonsJson())),
             (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("4"), QStringLiteral("5"),
                          QStringLiteral("3")}));
    // Moved, not copied or changed.
    QCOMPARE(topButton(readAll(buttonsJson()), QStringLiteral("3")), plain(QStringLiteral("3")));
}

void TestEditingEndToEnd::lockedChipStaysWhereItIs()
{
    QJsonArray buttons = plainButtons({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                                       QStringLiteral("4"), QStringLiteral("5")});
    QJsonObject locked = plain(QStringLiteral("3"));
    locked.insert(QStringLiteral("locked"), true);
    buttons[2] = locked;
    buttons.append(logChip(QStringLiteral("Log")));
    const QJsonObject config = document(buttons);
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(decoded(config));
    QVERIFY(waitForWidth(layout.width));

    const QByteArray before = readAll(buttonsJson());
    const QPoint farLeft = m_barFrame.topLeft() + QPoint(4, BarView::barHeight / 2);
    QVERIFY(dragPointer(chipCentre(layout, QStringLiteral("3")), farLeft));
    // The tap comes after the drag, so once the program has handled it, it has handled the drag too.
    QVERIFY2(tapAndWait(layout, QStringLiteral("Log")), qPrintable(log()));
    QCOMPARE(readAll(buttonsJson()), before);
    QCOMPARE(frameOf(m_bar), m_barFrame);

    // An unlocked chip dragged the same way does move, so the drag above reached the program.
    QVERIFY(dragPointer(chipCentre(layout, QStringLiteral("4")), farLeft));
    QVERIFY2(waitForSave(before), "the drag of an unlocked chip changed nothing");
    QCOMPARE(topTitles(readAll(buttonsJson())),
             (QStringList{QStringLiteral("4"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
                          QStringLiteral("5"), QStringLiteral("Log")}));
    QCOMPARE(topButton(readAll(buttonsJson()), QStringLiteral("3")), locked);
}

void TestEditingEndToEnd::chipDroppedOnStackJoinsItInItsColour()
{
    QJsonObject member = plain(QStringLiteral("m1"));
    member.insert(QStringLiteral("color"), QStringLiteral("red"));
    QJsonArray buttons = plainButtons({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")});
    buttons.append(stack(QStringLiteral("Stack"), {member}));
    buttons.append(plain(QStringLiteral("4")));
    const QJsonObject config = document(buttons);
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(decoded(config));
    QVERIFY(waitForWidth(layout.width));

    const QByteArray before = readAll(buttonsJson());
    QVERIFY(
        dragPointer(chipCentre(layout, QStringLiteral("1")), chipCentre(layout, QStringLiteral("Stack"))));
    QVERIFY2(waitForSave(before), "the drop on the stack changed nothing");
    const QByteArray after = readAll(buttonsJson());
    QCOMPARE(topTitles(after), (QStringList{QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("Stack"),
                                            QStringLiteral("4")}));
    QJsonObject joined = plain(QStringLiteral("1"));
    joined.insert(QStringLiteral("color"), QStringLiteral("red"));
    QCOMPARE(childrenOf(after, QStringLiteral("Stack")), (QJsonArray{member, joined}));
}

void TestEditingEndToEnd::stackDroppedOnStackLandsBesideIt()
{
    const QJsonObject a = plain(QStringLiteral("a"));
    const QJsonObject b = plain(QStringLiteral("b"));
    const QJsonObject config =
        document({plain(QStringLiteral("1")), stack(QStringLiteral("S1"), {a}), plain(QStringLiteral("2")),
                  stack(QStringLiteral("S2"), {b}), plain(QStringLiteral("3"))});
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(decoded(config));
    QVERIFY(waitForWidth(layout.width));

    const QByteArray before = readAll(buttonsJson());
    // Just right of the middle of S2, well inside the part that takes chips into the stack.
    const QPoint target = chipCentre(layout, QStringLiteral("S2")) + QPoint(3, 0);
    QVERIFY(dragPointer(chipCentre(layout, QStringLiteral("S1")), target));
    QVERIFY2(waitForSave(before), "the drop of a stack on a stack changed nothing");
    const QByteArray after = readAll(buttonsJson());
    QCOMPARE(topTitles(after), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("S2"),
                                            QStringLiteral("S1"), QStringLiteral("3")}));
    QCOMPARE(childrenOf(after, QStringLiteral("S2")), QJsonArray{b});
    QCOMPARE(childrenOf(after, QStringLiteral("S1")), QJsonArray{a});
}

void TestEditingEndToEnd::memberDraggedOutOfFlyoutLandsOnTheBar()
{
    const QJsonObject m1 = plain(QStringLiteral("m1"));
    const QJsonObject m2 = plain(QStringLiteral("m2"));
    const QJsonObject config =
        document({plain(QStringLiteral("1")), plain(QStringLiteral("2")),
                  stack(QStringLiteral("Stack"), {m1, m2}), plain(QStringLiteral("3"))});
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(decoded(config));
    QVERIFY(waitForWidth(layout.width));

    QVERIFY(clickAt(chipCentre(layout, QStringLiteral("Stack"))));
    std::optional<quintptr> flyout;
    QVERIFY2(waitFor([&] {
                 flyout = findWindow(QStringLiteral("Vantril flyout"), m_vantril->processId());
                 return flyout && windowInfo(*flyout).value_or(WindowInfo{}).viewable &&
                        frameOf(*flyout).height() > 16;
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
    const QPoint onBar(member.x(), m_barFrame.y() + BarView::barHeight / 2);
    QVERIFY(m_barFrame.contains(onBar));
    const QPoint target = gapAfter(layout, QStringLiteral("1"));
    QList<QPoint> path = {member, member + QPoint(0, 3), onBar};
    for (int i = 1; i <= 8; ++i)
        path.append(onBar + (target - onBar) * i / 8);
    const QByteArray before = readAll(buttonsJson());
    QVERIFY(dragAlong(path));
    if (!waitForSave(before)) {
        const bool open = windowInfo(*flyout).value_or(WindowInfo{}).viewable;
        QFAIL(open ? "the drag out of the flyout changed nothing"
                   : "the drag out of the flyout changed nothing, and the flyout closed during it");
    }
    const QByteArray after = readAll(buttonsJson());
    QCOMPARE(topTitles(after), (QStringList{QStringLiteral("1"), QStringLiteral("m2"), QStringLiteral("2"),
                                            QStringLiteral("Stack"), QStringLiteral("3")}));
    QCOMPARE(topButton(after, QStringLiteral("m2")), m2);
    QCOMPARE(childrenOf(after, QStringLiteral("Stack")), QJsonArray{m1});
}

// ---- drops from another program ----

void TestEditingEndToEnd::filesDroppedBetweenChipsLandInReverseOrder()
{
    const QStringList files = {path(QStringLiteral("one.txt")), path(QStringLiteral("two.txt")),
                               path(QStringLiteral("three.txt"))};
    for (const QString& file : files)
        QVERIFY(writeAll(file, "x"));
    const QJsonObject config =
        document(plainButtons({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(decoded(config));
    QVERIFY(waitForWidth(layout.width));

    QProcess* source = nullptr;
    const auto window =
        startHelper(QStringLiteral(DRAGSOURCE_BINARY), files, QStringLiteral("dragsource"), &source);
    QVERIFY2(window, "the drag source did not appear");
    QVERIFY(!frameOf(*window).intersects(m_barFrame));

    const QByteArray before = readAll(buttonsJson());
    const QPoint target = gapAfter(layout, QStringLiteral("A"));
    const QPoint marker(target.x(), m_barFrame.y() + 10);
    QVERIFY(!isWhite(pixelAt(marker))); // so that white there shows the drag
    QVERIFY(dropFromSource(source, *window, target, [&] { return isWhite(pixelAt(marker)); }));
    QVERIFY2(waitForSave(before), "the drop changed nothing");

    const QByteArray after = readAll(buttonsJson());
    QCOMPARE(topTitles(after),
             (QStringList{QStringLiteral("A"), QStringLiteral("three.txt"), QStringLiteral("two.txt"),
                          QStringLiteral("one.txt"), QStringLiteral("B"), QStringLiteral("C")}));
    const QJsonObject dropped = topButton(after, QStringLiteral("two.txt"));
    QCOMPARE(dropped.value(QStringLiteral("action")).toString(), QStringLiteral("open"));
    QCOMPARE(dropped.value(QStringLiteral("argument")).toString(), files.at(1));
    // The bar shows what was saved.
    QVERIFY(waitForWidth(layoutOf(*ConfigReader::decode(after)).width));
}

void TestEditingEndToEnd::linkDropsBecomeNumberedUrlButtons()
{
    const QString link = QStringLiteral("https://www.example.org/page");
    const QJsonObject config = document(plainButtons({QStringLiteral("A"), QStringLiteral("B")}));
    QVERIFY(startBar(config));
    BarLayout layout = layoutOf(decoded(config));
    QVERIFY(waitForWidth(layout.width));

    QProcess* source = nullptr;
    const auto window =
        startHelper(QStringLiteral(DRAGSOURCE_BINARY), {link}, QStringLiteral("dragsource"), &source);
    QVERIFY2(window, "the drag source did not appear");

    QByteArray before = readAll(buttonsJson());
    QPoint target = gapAfter(layout, QStringLiteral("A"));
    QPoint marker(target.x(), m_barFrame.y() + 10);
    QVERIFY(!isWhite(pixelAt(marker)));
    QVERIFY(dropFromSource(source, *window, target, [&] { return isWhite(pixelAt(marker)); }));
    QVERIFY2(waitForSave(before), "the first drop changed nothing");
    QByteArray after = readAll(buttonsJson());
    QCOMPARE(topTitles(after),
             (QStringList{QStringLiteral("A"), QStringLiteral("example.org"), QStringLiteral("B")}));
    const QJsonObject first = topButton(after, QStringLiteral("example.org"));
    QCOMPARE(first.value(QStringLiteral("action")).toString(), QStringLiteral("url"));
    QCOMPARE(first.value(QStringLiteral("argument")).toString(), link);

    // Again, after the last chip: a second button, numbered.
    layout = layoutOf(*ConfigReader::decode(after));
    QVERIFY(waitForWidth(layout.width));
    before = after;
    target = gapAfter(layout, QStringLiteral("B"));
    marker = QPoint(target.x(), m_barFrame.y() + 10);
    QVERIFY(!isWhite(pixelAt(marker)));
    QVERIFY(dropFromSource(source, *window, target, [&] { return isWhite(pixelAt(marker)); }));
    QVERIFY2(waitForSave(before), "the second drop changed nothing");
    after = readAll(buttonsJson());
    QCOMPARE(topTitles(after), (QStringList{QStringLiteral("A"), QStringLiteral("example.org"),
                                            QStringLiteral("B"), QStringLiteral("example.org 2")}));
    const QJsonObject second = topButton(after, QStringLiteral("example.org 2"));
    QCOMPARE(second.value(QStringLiteral("action")).toString(), QStringLiteral("url"));
    QCOMPARE(second.value(QStringLiteral("argument")).toString(), link);
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

    const QJsonObject app = {{QStringLiteral("title"), QStringLiteral("Recorder")},
                             {QStringLiteral("symbol"), QStringLiteral("app")},
                             {QStringLiteral("action"), QStringLiteral("app")},
                             {QStringLiteral("argument"), entry}};
    const QJsonObject config = document({plain(QStringLiteral("A")), app, plain(QStringLiteral("B"))});
    QVERIFY(startBar(config));
    const BarLayout layout = layoutOf(decoded(config));
    QVERIFY(waitForWidth(layout.width));

    QProcess* source = nullptr;
    const auto window =
        startHelper(QStringLiteral(DRAGSOURCE_BINARY), {dropped}, QStringLiteral("dragsource"), &source);
    QVERIFY2(window, "the drag source did not appear");

    const QByteArray before = readAll(buttonsJson());
    const QRectF chip = layout.chips.value(QStringLiteral("Recorder"));
    // The chip's highlight: a white ring just inside its edge.
    const QPoint ring = m_barFrame.topLeft() + QPoint(qRound(chip.left()) + 1, qRound(chip.center().y()));
    QVERIFY(!isWhite(pixelAt(ring))); // so that white there shows the drag
    QVERIFY(dropFromSource(source, *window, chipCentre(layout, QStringLiteral("Recorder")),
                           [&] { return isWhite(pixelAt(ring)); }));
    QVERIFY2(waitFor([&] { return readAll(record).contains((dropped + QLatin1Char('\n')).toUtf8()); }),
             readAll(record).constData());
    QCOMPARE(readAll(record), (dropped + QLatin1Char('\n')).toUtf8());
    // Opening is all: no button was added.
    QCOMPARE(readAll(buttonsJson()), before);
    QCOMPARE(frameOf(m_bar).width(), layout.width);
}

// ---- the application in front ----

void TestEditingEndToEnd::frontApplicationChoosesTheSet()
{
    const QJsonArray alphaButtons = {plain(QStringLiteral("a1"))};
    const QJsonArray betaButtons =
        plainButtons({QStringLiteral("b1"), QStringLiteral("b2"), QStringLiteral("b3")});
    QJsonObject config = document({logChip(QStringLiteral("Log")), plain(QStringLiteral("1"))});
    config.insert(QStringLiteral("appSets"),
                  QJsonArray{QJsonObject{{QStringLiteral("app"), QStringLiteral("VantrilAlpha")},
                                         {QStringLiteral("name"), QStringLiteral("Alpha")},
                                         {QStringLiteral("buttons"), alphaButtons}},
                             QJsonObject{{QStringLiteral("app"), QStringLiteral("VantrilBeta")},
                                         {QStringLiteral("name"), QStringLiteral("Beta")},
                                         {QStringLiteral("buttons"), betaButtons}}});
    const BarConfig parsedConfig = decoded(config);
    QVERIFY(parsedConfig.appSets && parsedConfig.appSets->size() == 2);
    const BarLayout plainLayout = layoutOf(parsedConfig);
    const int alphaWidth = layoutOf(parsedConfig, parsedConfig.appSets->at(0).buttons).width;
    const int betaWidth = layoutOf(parsedConfig, parsedConfig.appSets->at(1).buttons).width;
    QVERIFY(plainLayout.width < alphaWidth && alphaWidth < betaWidth);

    QVERIFY(startBar(config));
    QVERIFY(waitForWidth(plainLayout.width));
    const QByteArray before = readAll(buttonsJson());

    const auto alpha = startHelper(QStringLiteral(APPWINDOW_BINARY), {QStringLiteral("VantrilAlpha")},
                                   QStringLiteral("VantrilAlpha"));
    QVERIFY2(alpha, "the first client did not appear");
    const auto beta = startHelper(QStringLiteral(APPWINDOW_BINARY), {QStringLiteral("VantrilBeta")},
                                  QStringLiteral("VantrilBeta"));
    QVERIFY2(beta, "the second client did not appear");

    QVERIFY(xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(*alpha)}));
    QVERIFY2(waitForWidth(alphaWidth), qPrintable(windowProperty(*alpha, QStringLiteral("WM_CLASS"))));
    QVERIFY(xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(*beta)}));
    QVERIFY2(waitForWidth(betaWidth), qPrintable(windowProperty(*beta, QStringLiteral("WM_CLASS"))));

    // A tap on the bar takes nothing from the application in front, so its set stays.
    QVERIFY2(tapAndWait(plainLayout, QStringLiteral("Log")), qPrintable(log()));
    QCOMPARE(activeWindow(), *beta);
    QTest::qWait(500);
    QCOMPARE(frameOf(m_bar).width(), betaWidth);

    // Still following: back to the first one.
    QVERIFY(xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(*alpha)}));
    QVERIFY(waitForWidth(alphaWidth));
    // Showing a set is no edit.
    QCOMPARE(readAll(buttonsJson()), before);
}

void TestEditingEndToEnd::contextFromEnvironmentIsFixed()
{
    QJsonObject config = document({plain(QStringLiteral("1"))});
    config.insert(
        QStringLiteral("appSets"),
        QJsonArray{QJsonObject{{QStringLiteral("app"), QStringLiteral("VantrilAlpha")},
                               {QStringLiteral("name"), QStringLiteral("Alpha")},
                               {QStringLiteral("buttons"), QJsonArray{plain(QStringLiteral("a1"))}}},
                   QJsonObject{{QStringLiteral("app"), QStringLiteral("VantrilBeta")},
                               {QStringLiteral("name"), QStringLiteral("Beta")},
                               {QStringLiteral("buttons"),
                                plainButtons({QStringLiteral("b1"), QStringLiteral("b2")})}}});
    const BarConfig parsedConfig = decoded(config);
    QVERIFY(parsedConfig.appSets && parsedConfig.appSets->size() == 2);
    const int alphaWidth = layoutOf(parsedConfig, parsedConfig.appSets->at(0).buttons).width;
    const int betaWidth = layoutOf(parsedConfig, parsedConfig.appSets->at(1).buttons).width;
    QVERIFY(alphaWidth != betaWidth);

    // The other application is in front when the program starts, and comes to the front again later.
    const auto alpha = startHelper(QStringLiteral(APPWINDOW_BINARY), {QStringLiteral("VantrilAlpha")},
                                   QStringLiteral("VantrilAlpha"));
    QVERIFY2(alpha, "the client did not appear");
    QVERIFY(xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(*alpha)}));

    QVERIFY(startBar(config, {{QStringLiteral("VANTRIL_CONTEXT_APP"), QStringLiteral("VantrilBeta|Beta")}}));
    QVERIFY(waitForWidth(betaWidth));

    const auto other = startHelper(QStringLiteral(APPWINDOW_BINARY), {QStringLiteral("VantrilGamma")},
                                   QStringLiteral("VantrilGamma"));
    QVERIFY2(other, "the second client did not appear");
    QVERIFY(xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(*other)}));
    QVERIFY(xdotool({QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(*alpha)}));
    QTest::qWait(1000);
    QCOMPARE(frameOf(m_bar).width(), betaWidth);
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
    const auto widthWith = [&](int count) { return layoutOf(decoded(configWith(count))).width; };

    QVERIFY(startBar(configWith(2)));
    QVERIFY(waitForWidth(widthWith(2)));
    // The backup every launch takes; reloads must not add to it.
    QCOMPARE(entries(backupsDir()).size(), 1);

    // One more button: the bar grows soon after the write.
    QElapsedTimer elapsed;
    elapsed.start();
    QVERIFY(writeConfig(configWith(3)));
    QVERIFY(waitForWidth(widthWith(3), 1000));
    qInfo("reloaded after %lld ms", elapsed.elapsed());

    // A burst of ten writes, each with another number of buttons: one reload, of the last. Every reload
    // resizes the bar, so the sizes it takes show how many there were. The program reloads once the file
    // has been quiet for a while; should this machine stall the writes for that long, the burst proves
    // nothing and is sent again, from the other end.
    int shown = 3;
    bool burstChecked = false;
    for (int attempt = 0; attempt < 3 && !burstChecked; ++attempt) {
        QList<int> counts;
        for (int i = 1; i <= 10; ++i)
            counts.append(attempt % 2 == 0 ? 3 + i : 13 - i);
        ResizeLog resizes(m_bar);
        QVERIFY(resizes.isValid());
        QElapsedTimer burst;
        burst.start();
        qint64 longestGap = 0;
        qint64 lastWrite = 0;
        for (const int count : std::as_const(counts)) {
            QVERIFY(writeConfig(configWith(count)));
            longestGap = std::max(longestGap, burst.elapsed() - lastWrite);
            lastWrite = burst.elapsed();
            // Not an event-loop wait: only the program is to react between the writes.
            if (count != counts.last())
                QThread::msleep(10);
        }
        shown = counts.last();
        QVERIFY(waitForWidth(widthWith(shown)));
        // Once more through the event loop, for any resize that would follow.
        QTest::qWait(600);
        QCOMPARE(frameOf(m_bar).width(), widthWith(shown));
        if (lastWrite >= 200 || longestGap >= 150) {
            qInfo("the writes were stalled (%lld ms in all, %lld ms apart at most); again", lastWrite,
                  longestGap);
            continue;
        }
        QCOMPARE(resizes.widths(), QList<int>{widthWith(shown)});
        burstChecked = true;
    }
    QVERIFY2(burstChecked, "the writes never came within 0.2 s of each other");
    QCOMPARE(entries(backupsDir()).size(), 1);

    // Not JSON: ignored, and kept as it is.
    const QByteArray broken = "{ \"buttons\": [ { \"title\": \"B1\", \n";
    QVERIFY(writeAll(buttonsJson(), broken));
    QTest::qWait(1000);
    QCOMPARE(frameOf(m_bar).width(), widthWith(shown));
    QCOMPARE(m_vantril->state(), QProcess::Running);
    QCOMPARE(readAll(buttonsJson()), broken);
    QCOMPARE(entries(backupsDir()).size(), 1);

    // Mended: followed again.
    QVERIFY(writeConfig(configWith(5)));
    QVERIFY(waitForWidth(widthWith(5)));

    // Saved the way editors save: a new file renamed over the old one.
    const QString temporary = QDir(configDir()).filePath(QStringLiteral(".buttons.json.edit"));
    QVERIFY(writeAll(temporary, QJsonDocument(configWith(6)).toJson()));
    QCOMPARE(
        std::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(buttonsJson()).constData()),
        0);
    QVERIFY(waitForWidth(widthWith(6)));
    // The replacement is watched in its turn: a write into it in place is followed too.
    QVERIFY(writeConfig(configWith(4)));
    QVERIFY(waitForWidth(widthWith(4)));
    QVERIFY(writeAll(temporary, QJsonDocument(configWith(7)).toJson()));
    QCOMPARE(
        std::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(buttonsJson()).constData()),
        0);
    QVERIFY(waitForWidth(widthWith(7)));
    QCOMPARE(entries(backupsDir()).size(), 1);
}

QTEST_MAIN(TestEditingEndToEnd)
#include "tst_editing_e2e.moc"
