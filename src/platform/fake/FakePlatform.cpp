#include "FakePlatform.h"

void FakePlatform::runPending()
{
    while (!pending.isEmpty()) {
        const Pending next = pending.takeFirst();
        calls.append(QStringLiteral("waited %1 ms").arg(next.milliseconds));
        next.work();
    }
}

void FakePlatform::post(const KeyStroke& combo)
{
    calls.append(QStringLiteral("post key=%1 flags=%2").arg(combo.keyCode).arg(combo.flags));
}

void FakePlatform::clear()
{
    clipboardText.reset();
    calls.append(QStringLiteral("clipboard clear"));
}

void FakePlatform::setText(const QString& text)
{
    clipboardText = text;
    calls.append(QStringLiteral("clipboard set ") + text);
}

void FakePlatform::startDetached(const QString& program, const QStringList& arguments)
{
    calls.append((QStringList{QStringLiteral("start"), program} + arguments).join(QLatin1Char(' ')));
}

void FakePlatform::open(const QUrl& url)
{
    calls.append(QStringLiteral("open ") + url.toString());
}

bool FakePlatform::launchApplication(const QString& name, const QStringList& files)
{
    calls.append((QStringList{QStringLiteral("launch"), name} + files).join(QLatin1Char(' ')));
    return knownApplications.contains(name);
}

void FakePlatform::reveal(const QString& path)
{
    calls.append(QStringLiteral("reveal ") + path);
}

void FakePlatform::beep()
{
    calls.append(QStringLiteral("beep"));
}

void FakePlatform::after(int milliseconds, std::function<void()> work)
{
    pending.append({milliseconds, std::move(work)});
}

void FakePlatform::prepareDock(quintptr windowId)
{
    calls.append(QStringLiteral("dock %1").arg(windowId));
}

void FakePlatform::setClickThrough(quintptr windowId, bool through)
{
    calls.append(QStringLiteral("click-through %1 %2")
                     .arg(windowId)
                     .arg(through ? QStringLiteral("on") : QStringLiteral("off")));
}

std::optional<ScreenInfo> FakePlatform::screenOf(const QRect& rect)
{
    std::optional<ScreenInfo> best;
    qint64 bestArea = 0;
    for (const ScreenInfo& screen : screenList) {
        const QRect shared = screen.frame.intersected(rect);
        const qint64 area = shared.isEmpty() ? 0 : qint64(shared.width()) * shared.height();
        if (area > bestArea) {
            bestArea = area;
            best = screen;
        }
    }
    return best;
}

bool FakePlatform::grab(const KeyStroke& combo)
{
    calls.append(QStringLiteral("grab key=%1 flags=%2").arg(combo.keyCode).arg(combo.flags));
    grabbed = combo;
    return !grabRefused;
}

void FakePlatform::release()
{
    if (grabbed)
        calls.append(QStringLiteral("release"));
    grabbed.reset();
}

std::optional<QString> FakePlatform::setEnabled(bool enabled)
{
    if (loginItemError)
        return loginItemError;
    loginItem = enabled;
    return std::nullopt;
}

void FakePlatform::ask(const QString& name, std::function<void(Answer)> answered)
{
    calls.append(QStringLiteral("ask ") + name);
    if (answer)
        answered(*answer);
    else
        unanswered = std::move(answered);
}
