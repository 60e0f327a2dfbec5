#pragma once

#include <QList>
#include <QRect>
#include <QtGlobal>
#include <optional>

/// One monitor: a stable number, its whole area and the part not taken by panels, in global pixels.
struct ScreenInfo
{
    quint32 number = 0;
    QRect frame;
    QRect available;

    bool operator==(const ScreenInfo&) const = default;
};

/// The monitors and where the pointer is.
class Screens
{
public:
    Screens() = default;
    virtual ~Screens() = default;
    Q_DISABLE_COPY_MOVE(Screens)

    /// Every monitor, the primary one first.
    virtual QList<ScreenInfo> all() = 0;
    /// The monitor holding most of `rect`, or nothing when it is on none.
    virtual std::optional<ScreenInfo> screenOf(const QRect& rect) = 0;
};
