#pragma once

#include <QHash>
#include <QObject>
#include <QRectF>
#include <QString>
#include <optional>

/// What the bar shows while something is dragged over it, and what the controller needs to hit-test:
/// the chips' frames in bar coordinates, by title. Views repaint when `changed` fires.
class DragState : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    std::optional<double> markerX() const { return m_markerX; }
    std::optional<QString> highlightGroup() const { return m_highlightGroup; }
    bool canUndo() const { return m_canUndo; }
    const QHash<QString, QRectF>& barFrames() const { return m_barFrames; }

    void setFeedback(std::optional<double> markerX, std::optional<QString> highlightGroup);
    void setCanUndo(bool canUndo);
    /// Not announced: frames change on every layout, and nothing is drawn from them.
    void setBarFrames(QHash<QString, QRectF> frames) { m_barFrames = std::move(frames); }

Q_SIGNALS:
    void changed();

private:
    std::optional<double> m_markerX;
    std::optional<QString> m_highlightGroup;
    bool m_canUndo = false;
    QHash<QString, QRectF> m_barFrames;
};
