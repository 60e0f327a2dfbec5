#include "FlyoutController.h"

#include "bar/BarPanel.h"
#include "bar/FlyoutView.h"
#include "bar/FolderListing.h"
#include "bar/Geometry.h"
#include "bar/Overflow.h"
#include "platform/Platform.h"

#include <QGuiApplication>
#include <QTimer>
#include <limits>

namespace {

/// Long enough for our own windows to have seen a press that the desktop-wide notice reported.
constexpr int pressSettleMs = 50;

} // namespace

FlyoutController::FlyoutController(Platform& platform, const BarHandlers& handlers, const DragState& drag,
                                   QObject* parent)
    : QObject(parent)
    , m_platform(platform)
    , m_handlers(handlers)
    , m_drag(drag)
{
    connect(&m_platform.clickMonitor(), &ClickMonitor::pressed, this, &FlyoutController::pressedAt);
}

FlyoutController::~FlyoutController()
{
    closeFlyout();
}

void FlyoutController::showFlyout(const QList<ButtonSpec>& items, const QString& id, const QRectF& anchor)
{
    open(items, id, anchor, std::nullopt);
}

void FlyoutController::open(const QList<ButtonSpec>& items, const QString& id, const QRectF& anchor,
                            const std::optional<QString>& listingRoot)
{
    if (!m_bar)
        return;
    // Known before the rows are made: a listing's rows get no button menu.
    m_listingRoot = listingRoot;
    const QRect bar = m_bar->frameGeometry();
    const auto screen = m_platform.screens().screenOf(bar);
    const std::optional<QRect> frame = screen ? std::optional<QRect>(screen->frame) : std::nullopt;
    const std::optional<QRect> available = screen ? std::optional<QRect>(screen->available) : std::nullopt;
    // Long stacks and the overflow of a crowded bar take more columns rather than leave the screen.
    const int height = room().value_or(std::numeric_limits<int>::max());
    auto* panel = new BarPanel(m_platform.panelWindows(), QStringLiteral("Vantril flyout"));
    panel->setContent(new FlyoutView(items, m_handlers, &m_drag, height));
    panel->move(Geometry::flyoutOrigin(bar, anchor, panel->fittingSize(), frame, available));
    panel->showPanel();

    m_flyout = panel;
    m_anchor = anchor;
    m_openGroup = id;
    m_platform.clickMonitor().start();
}

void FlyoutController::showFolder(const QString& path, const QString& id, const QRectF& anchor,
                                  const std::optional<QString>& root)
{
    // A listing too long for the screen shows fewer entries; its last row counts the others.
    const std::optional<int> height = room();
    const QList<ButtonSpec> items = FolderListing::items(
        path, root, height ? std::optional<qsizetype>(FlyoutView::rowsFitting(*height)) : std::nullopt);
    closeFlyout();
    open(items, id, anchor, root ? root : std::optional<QString>(path));
}

std::optional<int> FlyoutController::room() const
{
    if (!m_bar)
        return std::nullopt;
    const QRect bar = m_bar->frameGeometry();
    const auto screen = m_platform.screens().screenOf(bar);
    if (!screen)
        return std::nullopt;
    return Geometry::flyoutRoom(bar, screen->frame, screen->available);
}

void FlyoutController::closeFlyout()
{
    if (m_flyout) {
        m_flyout->hide();
        m_flyout->deleteLater(); // the tap that closes it may come from one of its own rows
        m_flyout = nullptr;
    }
    m_openGroup.reset();
    m_listingRoot.reset();
    m_platform.clickMonitor().stop();
}

void FlyoutController::pressedAt(const QPoint& position)
{
    // Presses on the bar and the flyout are theirs to handle; only the rest of the desktop closes it.
    const auto ours = [this](const QPoint& at) {
        return (m_bar && m_bar->frameGeometry().contains(at)) ||
               (m_flyout && m_flyout->frameGeometry().contains(at));
    };
    if (ours(position))
        return;
    // The position is read when the notice arrives, not when the press happened: a quick drag out of
    // the flyout can already be between the flyout and the bar. A button still held in one of our
    // windows a moment later means the press was ours after all.
    QTimer::singleShot(pressSettleMs, this, [this] {
        if (m_flyout && QGuiApplication::mouseButtons() == Qt::NoButton)
            closeFlyout();
    });
}
