#include "Scheduler.h"

#include <QCoreApplication>
#include <QTimer>

void QtScheduler::after(int milliseconds, std::function<void()> work)
{
    QTimer::singleShot(milliseconds, QCoreApplication::instance(), std::move(work));
}
