#include "QtScreens.h"

#include "platform/DisplayNumber.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

qint64 area(const QRect& rect)
{
    return rect.isEmpty() ? 0 : qint64(rect.width()) * rect.height();
}

ScreenInfo describe(const QScreen* screen, const std::optional<QRect>& workArea)
{
    ScreenInfo info;
    info.number =
        displayNumber(screen->manufacturer(), screen->model(), screen->serialNumber(), screen->name());
    info.frame = screen->geometry();
    info.available = screen->availableGeometry();
    // With one monitor Qt already applies _NET_WORKAREA. With several, Qt 6.4 leaves it out altogether
    // (the property is per workspace, not per monitor), so a panel would be ignored; cutting each monitor
    // by the one spanning rectangle is right at least for panels on the outer edges.
    if (workArea) {
        const QRect cut = info.available.intersected(*workArea);
        if (!cut.isEmpty())
            info.available = cut;
    }
    return info;
}

} // namespace

QtScreens::QtScreens(std::function<std::optional<QRect>()> workArea)
    : m_workArea(std::move(workArea))
{}

QList<ScreenInfo> QtScreens::all()
{
    if (!qGuiApp)
        return {};
    const QList<QScreen*> screens = QGuiApplication::screens();
    QScreen* primary = QGuiApplication::primaryScreen();
    const std::optional<QRect> workArea = screens.size() > 1 ? m_workArea() : std::nullopt;

    QList<ScreenInfo> result;
    if (primary)
        result.append(describe(primary, workArea));
    for (const QScreen* screen : screens) {
        if (screen != primary)
            result.append(describe(screen, workArea));
    }
    return result;
}

std::optional<ScreenInfo> QtScreens::screenOf(const QRect& rect)
{
    std::optional<ScreenInfo> best;
    qint64 bestArea = 0;
    for (const ScreenInfo& screen : all()) {
        const qint64 shared = area(screen.frame.intersected(rect));
        if (shared > bestArea) {
            bestArea = shared;
            best = screen;
        }
    }
    return best;
}
