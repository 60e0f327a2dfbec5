#pragma once

#include "bar/BarHandlers.h"
#include "bar/BarPanel.h"

#include <QObject>
#include <QPointer>
#include <QRectF>
#include <optional>

class DragState;
class Platform;

/// The one open flyout, if any: a stack's members or a folder listing, hung above or below its chip.
/// It closes on a click anywhere outside the bar and itself, in any application.
class FlyoutController : public QObject
{
    Q_OBJECT

public:
    FlyoutController(Platform& platform, const BarHandlers& handlers, const DragState& drag,
                     QObject* parent = nullptr);
    ~FlyoutController() override;

    /// The bar the flyouts hang from.
    void setBar(BarPanel* bar) { m_bar = bar; }

    void showFlyout(const QList<ButtonSpec>& items, const QString& id, const QRectF& anchor);
    void showFolder(const QString& path, const QString& id, const QRectF& anchor,
                    const std::optional<QString>& root);
    /// Safe to call when nothing is open.
    void closeFlyout();

    const std::optional<QString>& openGroup() const { return m_openGroup; }
    const std::optional<QString>& listingRoot() const { return m_listingRoot; }
    QRectF anchor() const { return m_anchor; }
    BarPanel* panel() const { return m_flyout; }

private:
    void open(const QList<ButtonSpec>& items, const QString& id, const QRectF& anchor,
              const std::optional<QString>& listingRoot);
    void pressedAt(const QPoint& position);
    /// The height a flyout of the bar may take; nothing without a bar or a screen.
    std::optional<int> room() const;

    Platform& m_platform;
    const BarHandlers& m_handlers;
    const DragState& m_drag;
    QPointer<BarPanel> m_bar;
    QPointer<BarPanel> m_flyout;
    std::optional<QString> m_openGroup;
    std::optional<QString> m_listingRoot;
    QRectF m_anchor;
};
