#include "Session.h"

#include <QRegularExpression>
#include <array>

namespace {

struct KnownDesktop
{
    const char* entry; // as XDG_CURRENT_DESKTOP spells it, compared without case
    Session::Desktop desktop;
    const char* name;
};

constexpr std::array knownDesktops{
    KnownDesktop{"GNOME", Session::Desktop::Gnome, "GNOME"},
    KnownDesktop{"KDE", Session::Desktop::Plasma, "KDE Plasma"},
    KnownDesktop{"XFCE", Session::Desktop::Xfce, "Xfce"},
    KnownDesktop{"MATE", Session::Desktop::Mate, "MATE"},
    KnownDesktop{"X-Cinnamon", Session::Desktop::Cinnamon, "Cinnamon"},
    KnownDesktop{"Cinnamon", Session::Desktop::Cinnamon, "Cinnamon"},
    KnownDesktop{"LXQt", Session::Desktop::Lxqt, "LXQt"},
};

Session::Type typeOf(const QProcessEnvironment& environment)
{
    const QString declared = environment.value(QStringLiteral("XDG_SESSION_TYPE")).trimmed().toLower();
    // A Wayland compositor sets WAYLAND_DISPLAY for its clients even where the login manager said nothing.
    if (declared == QLatin1String("wayland") ||
        !environment.value(QStringLiteral("WAYLAND_DISPLAY")).trimmed().isEmpty())
        return Session::Type::Wayland;
    if (declared == QLatin1String("x11") || !environment.value(QStringLiteral("DISPLAY")).trimmed().isEmpty())
        return Session::Type::X11;
    return Session::Type::Unknown;
}

} // namespace

Session Session::detect(const QProcessEnvironment& environment)
{
    Session session;
    session.type = typeOf(environment);
    // "ubuntu:GNOME", "GNOME-Flashback:GNOME": the desktop whose settings the user sees is the known entry.
    const QStringList entries =
        environment.value(QStringLiteral("XDG_CURRENT_DESKTOP")).split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (const QString& entry : entries) {
        for (const KnownDesktop& known : knownDesktops) {
            if (entry.trimmed().compare(QLatin1String(known.entry), Qt::CaseInsensitive) == 0) {
                session.desktop = known.desktop;
                session.desktopName = QString::fromLatin1(known.name);
                return session;
            }
        }
    }
    // Any other name goes into a one-line report as it is, so only a plain word is taken.
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9._+-]{1,32}$"));
    for (const QString& entry : entries) {
        if (plain.match(entry.trimmed()).hasMatch()) {
            session.desktopName = entry.trimmed();
            break;
        }
    }
    return session;
}

QString Session::describe() const
{
    QString kind;
    switch (type) {
    case Type::X11:
        kind = QStringLiteral("X11");
        break;
    case Type::Wayland:
        kind = QStringLiteral("Wayland");
        break;
    case Type::Unknown:
        kind = QStringLiteral("unknown");
        break;
    }
    return desktopName.isEmpty() ? kind : QStringLiteral("%1 (%2)").arg(kind, desktopName);
}

bool isWaylandSession()
{
    return Session::detect(QProcessEnvironment::systemEnvironment()).type == Session::Type::Wayland;
}
