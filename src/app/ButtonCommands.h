#pragma once

#include "config/ConfigDocument.h"

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QUrl>
#include <optional>

class ContextTracker;
class DragState;
class Platform;

/// What the user does to buttons from the bar, its menus, drags and the editor: each change made on the
/// document and committed, or refused with a beep.
class ButtonCommands
{
public:
    ButtonCommands(ConfigDocument& document, Platform& platform, DragState& drag,
                   const ContextTracker& context);

    void remove(const ButtonSpec& spec);
    void toggleLock(const ButtonSpec& spec);
    void moveToGlobal(const ButtonSpec& spec);
    void moveToContext(const ButtonSpec& spec);
    /// The editor's result. `oldTitle`: the button it edited, none for a new one; `parent`: a stack's
    /// title, or "@context" for the set of the application in front.
    void saveEdited(ButtonSpec edited, const std::optional<QString>& oldTitle,
                    const std::optional<QString>& parent);

    /// A chip dragged to `point` (global) over a bar whose frame on screen is `bar`.
    void dragMoved(const ButtonSpec& spec, const QPointF& point, const QRectF& bar);
    void dragEnded(const ButtonSpec& spec, const QPointF& point, const QRectF& bar);
    /// Files or addresses dragged from another program to `local`, a point in the bar.
    void fileHover(const QPointF& local);
    void fileHoverEnd();
    void fileDrop(const QList<QUrl>& urls, const QPointF& local);

    /// The buttons of the front application's set.
    QList<ButtonSpec> contextButtons() const;

private:
    void clearFeedback();
    void openWith(const QString& title, const QList<QUrl>& urls);

    ConfigDocument& m_document;
    Platform& m_platform;
    DragState& m_drag;
    const ContextTracker& m_context;
};
