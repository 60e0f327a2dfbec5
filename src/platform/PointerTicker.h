#pragma once

#include <QObject>
#include <QPoint>

/// Where the pointer is, in the coordinates of the program's windows, and which mouse buttons are held.
struct PointerState
{
    QPoint position;
    /// Qt::MouseButtons bits.
    int buttons = 0;
};

/// The pointer, sampled on a steady beat for auto-hide. A bar waiting for the pointer on its place asks
/// where it is several times a second all day long, so each backend keeps that beat where it costs least.
class PointerTicker : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    Q_DISABLE_COPY_MOVE(PointerTicker)

    /// Samples the pointer every `intervalMs`, the first time one interval from now. A beat already
    /// running keeps its phase.
    virtual void start(int intervalMs) = 0;
    /// No further samples, until the next start().
    virtual void stop() = 0;
    virtual bool isActive() const = 0;

Q_SIGNALS:
    void sampled(const PointerState& pointer);
};
