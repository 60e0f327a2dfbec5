#include "FrontApplication.h"

QString describe(FrontApplicationSource source, bool waylandSession)
{
    switch (source) {
    case FrontApplicationSource::KWinScript:
        return QStringLiteral("all windows, reported by a KWin script");
    case FrontApplicationSource::GnomeShellExtension:
        return QStringLiteral("all windows, reported by the GNOME Shell extension vantril@vantril.github.io");
    case FrontApplicationSource::X11Windows:
        break;
    }
    if (!waylandSession)
        return QStringLiteral("all windows (X11)");
    return QStringLiteral("X11 windows only; under GNOME, log in again after installing and run "
                          "\"gnome-extensions enable vantril@vantril.github.io\"");
}
