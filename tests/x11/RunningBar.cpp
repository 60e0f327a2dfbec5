#include "RunningBar.h"

#include "bar/BarView.h"
#include "bar/SymbolView.h"
#include "config/ConfigReader.h"
#include "dragdrop/DragState.h"

#include <QDir>
#include <QTest>
#include <cstdio>
#include <limits>

bool TestHome::writeButtons(const QByteArray& bytes) const
{
    return QDir().mkpath(configDir()) && writeAll(buttonsJson(), bytes);
}

QProcessEnvironment TestHome::environment(const Variables& variables) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        if (name.startsWith(u"VANTRIL_"_s))
            environment.remove(name);
    }
    environment.insert(u"VANTRIL_CONFIG_DIR"_s, configDir());
    environment.insert(u"XDG_CONFIG_HOME"_s, xdgConfigHome());
    for (const auto& [name, value] : variables)
        environment.insert(name, value);
    return environment;
}

BarLayout layoutOf(const BarConfig& config, const QList<ButtonSpec>& context)
{
    // The icon theme the program sets up, so that chips laid out here have its icons' widths.
    static const bool themed = (SymbolView::useIconThemes(), true);
    Q_UNUSED(themed);
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(config, context, true, std::numeric_limits<int>::max());
    return {view.width(), view.chipFrames()};
}

namespace {

/// Writes `config` as the buttons.json the program is to read, and gives the environment it runs in.
QProcessEnvironment prepared(const TestHome& home, const BarConfig& config, const Variables& variables)
{
    // Where it cannot be written, the program finds the folder as unusable as this process did.
    home.writeButtons(Config::encoded(config));
    return home.environment(variables);
}

} // namespace

RunningBar::RunningBar(const TestHome& home, const BarConfig& config, const Variables& variables)
    : TestProcess(QStringLiteral(VANTRIL_BINARY), {}, prepared(home, config, variables))
    , m_buttonsJson(home.buttonsJson())
    , m_layout(layoutOf(config))
{}

RunningBar::~RunningBar()
{
    if (QTest::currentTestFailed()) {
        std::fprintf(stderr, "--- program's standard error ---\n%s--- buttons.json ---\n%s\n",
                     qPrintable(log()), readAll(m_buttonsJson).constData());
    }
}

bool RunningBar::waitForBar()
{
    std::optional<quintptr> bar;
    waitFor([&] {
        bar = isRunning() ? findWindow(u"Vantril"_s, pid()) : std::nullopt;
        return !isRunning() || (bar && isViewable(*bar) && frameOf(*bar).width() == m_layout.width);
    });
    if (!bar)
        return false;
    m_bar = *bar;
    m_frame = frameOf(m_bar);
    return waitUntilDrawn(m_frame); // a compositor may still be fading it in
}

bool RunningBar::waitForWidth(int width)
{
    if (waitFor([&] { return (m_frame = frameOf(m_bar)).width() == width; }))
        return true;
    qWarning("bar is %s, expected width %d", qPrintable(describe(m_frame)), width);
    return false;
}

BarConfig RunningBar::saved() const
{
    return ConfigReader::decode(readAll(m_buttonsJson)).value_or(BarConfig{});
}

bool RunningBar::waitForSave(const QByteArray& before)
{
    if (!waitFor([&] {
            const QByteArray now = readAll(m_buttonsJson);
            return now != before && ConfigReader::decode(now).has_value();
        }))
        return false;
    m_layout = layoutOf(saved());
    return waitForWidth(m_layout.width);
}

std::optional<quintptr> RunningBar::openFlyout(const QString& title)
{
    std::optional<quintptr> flyout;
    if (!waitFor([&] { return !shownFlyout(); }) || !clickAt(chip(title)) ||
        !waitFor([&] { return (flyout = shownFlyout()) && frameOf(*flyout).height() > 16; }))
        return std::nullopt;
    return flyout;
}

bool RunningBar::openMenu(const QPoint& global)
{
    // A popup is no managed window; tooltips, and the bar and its flyouts under a tiling manager, are not
    // either, and say what they are.
    const QList<quint32> notMenus = {atom("_NET_WM_WINDOW_TYPE_TOOLTIP"), atom("_NET_WM_WINDOW_TYPE_DOCK")};
    return clickAt(global, 3) && waitFor([&] {
               const QList<quintptr> windows = unmanagedWindows();
               return std::any_of(windows.begin(), windows.end(), [&](quintptr window) {
                   return pidOf(window) == pid() && isViewable(window) &&
                          !notMenus.contains(values(window, "_NET_WM_WINDOW_TYPE").value(0));
               });
           });
}

QPoint secondRowOf(const QRect& flyout)
{
    const int rowHeight = (flyout.height() - 2 * 8 - 6) / 2;
    return {flyout.center().x(), flyout.y() + 8 + rowHeight + 6 + rowHeight / 2};
}
