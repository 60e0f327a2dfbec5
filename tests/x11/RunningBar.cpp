#include "RunningBar.h"

#include "TestSupport.h"

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QScreen>
#include <QTest>
#include <cstdio>

TestHome::TestHome()
{
    if (m_dir.isValid() && !QDir().mkpath(xdgConfigHome()))
        m_dir.remove();
}

QByteArray TestHome::buttons() const
{
    return readAll(buttonsJson());
}

bool TestHome::writeButtons(const QByteArray& bytes) const
{
    return QDir().mkpath(configDir()) && writeAll(buttonsJson(), bytes);
}

QProcessEnvironment TestHome::environment(const Variables& variables) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        if (name.startsWith(QStringLiteral("VANTRIL_")) || name.endsWith(QStringLiteral("_proxy")) ||
            name.endsWith(QStringLiteral("_PROXY")))
            environment.remove(name);
    }
    environment.insert(QStringLiteral("VANTRIL_CONFIG_DIR"), configDir());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), xdgConfigHome());
    for (const auto& [name, value] : variables)
        environment.insert(name, value);
    return environment;
}

TestProcess::TestProcess(const QString& program, const QStringList& arguments,
                         const QProcessEnvironment& environment)
{
    m_process.setProcessEnvironment(environment);
    m_process.start(program, arguments);
    if (!m_process.waitForStarted(10000))
        qWarning("cannot start %s: %s", qPrintable(program), qPrintable(m_process.errorString()));
}

TestProcess::~TestProcess()
{
    stop();
}

QString TestProcess::log()
{
    m_log += QString::fromUtf8(m_process.readAllStandardError());
    return m_log;
}

std::optional<quintptr> TestProcess::shownWindow(const QString& name) const
{
    const auto window = findWindow(name, pid());
    if (!window || !isViewable(*window))
        return std::nullopt;
    return window;
}

std::optional<quintptr> TestProcess::waitForWindow(const QString& name, bool active)
{
    std::optional<quintptr> window;
    const bool shown = waitFor([&] {
        if (!isRunning())
            return true;
        window = shownWindow(name);
        return window && (!active || activeWindow() == *window);
    });
    if (!shown || !isRunning())
        return std::nullopt;
    return window;
}

void TestProcess::stop(bool gently)
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    const qint64 id = pid();
    if (gently)
        m_process.terminate();
    else
        m_process.kill();
    if (!m_process.waitForFinished(10000)) {
        m_process.kill();
        m_process.waitForFinished(10000);
    }
    // The window manager drops a dead client's windows from its list a moment later.
    waitFor([id] { return !hasClientWindows(id); });
}

RunningBar::RunningBar(const TestHome& home, const Variables& variables, const QString& program,
                       const QStringList& arguments)
    : TestProcess(program, arguments, home.environment(variables))
    , m_buttonsJson(home.buttonsJson())
{}

RunningBar::~RunningBar()
{
    if (QTest::currentTestFailed()) {
        std::fprintf(stderr, "--- program's standard error ---\n%s--- buttons.json ---\n%s\n",
                     qPrintable(log()), readAll(m_buttonsJson).constData());
    }
}

std::optional<quintptr> RunningBar::waitForBar(std::optional<int> width)
{
    std::optional<quintptr> bar;
    waitFor([&] {
        if (!isRunning())
            return true;
        bar = findWindow(QStringLiteral("Vantril"), pid());
        if (!bar)
            return false;
        const auto info = windowInfo(*bar);
        return info && info->viewable && (!width || info->frame.width() == *width);
    });
    if (bar) {
        m_bar = *bar;
        m_frame = frameOf(m_bar);
        waitUntilDrawn(m_frame); // a compositor may still be fading it in
    }
    return bar;
}

bool RunningBar::waitForWidth(int width, int timeoutMs)
{
    const bool done = waitFor(
        [&] {
            m_frame = frameOf(m_bar);
            return m_frame.width() == width;
        },
        timeoutMs);
    if (!done)
        qWarning("bar is %s, expected width %d", qPrintable(describe(m_frame)), width);
    return done;
}

std::optional<xcb_window_t> RunningBar::openMenu(const QPoint& global)
{
    // Two right presses closer than this are a double click to Qt, which opens no context menu.
    constexpr int doubleClickGapMs = 600;
    static QElapsedTimer sinceRightClick;
    if (sinceRightClick.isValid())
        waitFor([&] { return sinceRightClick.elapsed() >= doubleClickGapMs; });
    if (!clickAt(global, 3))
        return std::nullopt;
    sinceRightClick.start();
    std::optional<xcb_window_t> menu;
    waitFor([&] { return (menu = shownMenu()).has_value(); });
    return menu;
}
