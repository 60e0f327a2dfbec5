#include "SessionReport.h"

#include "platform/Platform.h"

namespace SessionReport {

namespace {

using Scope = FacilityReach::Scope;

struct Words
{
    const char* name;    // in the probe
    const char* subject; // in a start-up sentence
    bool plural;
};

Words wordsFor(Facility facility)
{
    switch (facility) {
    case Facility::Hotkey:
        return {"hot key", "the hot key", false};
    case Facility::KeyChips:
        return {"key and paste chips", "key and paste chips", true};
    case Facility::MouseMonitor:
        return {"click elsewhere and auto-hide", "closing a stack by a click elsewhere and auto-hide", true};
    case Facility::FrontApplication:
        return {"application sets", "application sets", true};
    }
    return {"", "", false};
}

QString shortcutSettings(Session::Desktop desktop)
{
    // The wording of the settings as Debian 12 ships them (GNOME 43, Plasma 5.27, Xfce 4.18, MATE 1.26).
    switch (desktop) {
    case Session::Desktop::Gnome:
        return QStringLiteral(
            "GNOME's Settings › Keyboard › Keyboard Shortcuts › View and Customize Shortcuts "
            "› Custom Shortcuts");
    case Session::Desktop::Plasma:
        return QStringLiteral("Plasma's System Settings › Shortcuts › Add Command…");
    case Session::Desktop::Xfce:
        return QStringLiteral("Xfce's Settings › Keyboard › Application Shortcuts");
    case Session::Desktop::Mate:
        return QStringLiteral("MATE's Control Center › Keyboard Shortcuts");
    default:
        return QStringLiteral("the desktop's keyboard settings");
    }
}

/// What works instead in a Wayland session, where only XWayland's windows see the X server.
QString instead(Facility facility, const Session& session)
{
    // GTK and Qt programs pick their display from these; in XWayland their windows are X11 windows again.
    const QString underXWayland = QStringLiteral(
        "start the application under XWayland (GDK_BACKEND=x11 for GTK, QT_QPA_PLATFORM=xcb for Qt)");
    switch (facility) {
    case Facility::Hotkey:
        return QStringLiteral("bind `vantril --toggle` in ") + shortcutSettings(session.desktop);
    case Facility::KeyChips:
        return underXWayland;
    case Facility::FrontApplication:
        // The program's own extension sees every window; it is installed with the program but only the
        // user can switch it on, and GNOME Shell reads new extensions at the next login.
        if (session.desktop == Session::Desktop::Gnome)
            return QStringLiteral(
                       "run \"gnome-extensions enable vantril@vantril.github.io\" and log in again, "
                       "or ") +
                   underXWayland;
        return underXWayland;
    case Facility::MouseMonitor:
        return QStringLiteral("close a stack by clicking its chip again");
    }
    return {};
}

/// The reach for this session: an X11 facility reaches everything only where everything is X11.
Scope effective(const FacilityReach& reach, const Session& session)
{
    if (reach.scope == Scope::X11 && session.type != Session::Type::Wayland)
        return Scope::AllWindows;
    return reach.scope;
}

bool missesWindows(const FacilityReach& reach, const Session& session)
{
    return session.type == Session::Type::Wayland &&
           (reach.scope == Scope::X11 || reach.scope == Scope::Unavailable);
}

QString detailOf(const FacilityReach& reach)
{
    return reach.detail.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(reach.detail);
}

} // namespace

QList<Entry> gather(Platform& platform)
{
    return {{Facility::Hotkey, platform.hotkey().reach()},
            {Facility::KeyChips, platform.input().reach()},
            {Facility::MouseMonitor, platform.clickMonitor().reach()},
            {Facility::FrontApplication, platform.frontApplication().reach()}};
}

QString sessionLine(const Session& session, bool display)
{
    QString line = QStringLiteral("session: ") + session.describe();
    if (session.type == Session::Type::Wayland)
        line += display ? QStringLiteral(", through XWayland") : QStringLiteral(", no XWayland display");
    return line;
}

QString probeLine(const Entry& entry, const Session& session)
{
    QString reach;
    switch (effective(entry.reach, session)) {
    case Scope::X11:
        reach = QStringLiteral("X11 windows only");
        break;
    case Scope::AllWindows:
        reach = QStringLiteral("all windows");
        break;
    case Scope::Portal:
        reach = QStringLiteral("through a portal");
        break;
    case Scope::Unavailable:
        reach = QStringLiteral("not available");
        break;
    }
    QString line = QString::fromLatin1(wordsFor(entry.facility).name) + QStringLiteral(": ") + reach +
                   detailOf(entry.reach);
    if (missesWindows(entry.reach, session))
        line += QStringLiteral("; instead ") + instead(entry.facility, session);
    return line;
}

QStringList startupLines(const QList<Entry>& entries, const Session& session)
{
    QStringList lines;
    for (const Entry& entry : entries) {
        if (!missesWindows(entry.reach, session))
            continue;
        const Words words = wordsFor(entry.facility);
        const QString verb =
            entry.reach.scope == Scope::X11
                ? (words.plural ? QStringLiteral("work in X11 windows only")
                                : QStringLiteral("works in X11 windows only"))
                : (words.plural ? QStringLiteral("are not available") : QStringLiteral("is not available"));
        lines.append(QStringLiteral("In this Wayland session %1 %2%3; instead %4")
                         .arg(QString::fromLatin1(words.subject), verb, detailOf(entry.reach),
                              instead(entry.facility, session)));
    }
    return lines;
}

} // namespace SessionReport
