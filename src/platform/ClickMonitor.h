#pragma once

#include "platform/FacilityReach.h"

#include <QObject>
#include <QPoint>

/// Notices left and right mouse presses anywhere on the desktop, in any application, without taking
/// them: the application under the pointer still gets its click.
class ClickMonitor : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    Q_DISABLE_COPY_MOVE(ClickMonitor)

    /// Reports presses from now on; starting again while running changes nothing.
    virtual void start() = 0;
    /// No further presses, until the next start().
    virtual void stop() = 0;
    /// Whether presses can be noticed at all in this session.
    virtual bool isAvailable() = 0;
    /// Which windows presses and the pointer are seen over.
    virtual FacilityReach reach() = 0;

Q_SIGNALS:
    /// A press, at the global pointer position.
    void pressed(QPoint position);
};
