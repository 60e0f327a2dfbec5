#pragma once

#include <QtGlobal>

/// The short alert for a refused request.
class Beeper
{
public:
    Beeper() = default;
    virtual ~Beeper() = default;
    Q_DISABLE_COPY_MOVE(Beeper)

    virtual void beep() = 0;
};
