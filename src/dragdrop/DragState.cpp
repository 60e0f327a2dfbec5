#include "DragState.h"

void DragState::setFeedback(std::optional<double> markerX, std::optional<QString> highlightGroup)
{
    if (markerX == m_markerX && highlightGroup == m_highlightGroup)
        return;
    m_markerX = markerX;
    m_highlightGroup = std::move(highlightGroup);
    Q_EMIT changed();
}

void DragState::setCanUndo(bool canUndo)
{
    if (canUndo == m_canUndo)
        return;
    m_canUndo = canUndo;
    Q_EMIT changed();
}
