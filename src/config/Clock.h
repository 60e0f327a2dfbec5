#pragma once

#include <QDateTime>
#include <functional>

/// Where "now" comes from, so that the backup throttle can be tested without waiting.
using Clock = std::function<QDateTime()>;

inline QDateTime systemNow()
{
    return QDateTime::currentDateTime();
}
