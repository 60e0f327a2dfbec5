#pragma once

/// The short alert for a refused request.
class Beeper
{
public:
    Beeper() = default;
    virtual ~Beeper() = default;
    Beeper(const Beeper&) = delete;
    Beeper& operator=(const Beeper&) = delete;

    virtual void beep() = 0;
};
