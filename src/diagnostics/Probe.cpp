#include "Probe.h"

#include "actions/KeyCombo.h"
#include "config/Config.h"
#include "diagnostics/SessionReport.h"
#include "platform/Platform.h"

#include <QDir>
#include <QProcess>
#include <QSaveFile>
#include <QTemporaryFile>
#include <QTextStream>
#include <QUuid>
#include <cstdio>

namespace {

QString line(const QString& check, bool ok, const QString& detail = {})
{
    return QStringLiteral("%1: %2%3\n")
        .arg(check, ok ? QStringLiteral("yes") : QStringLiteral("no"),
             detail.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(detail));
}

QString configFolder()
{
    const QString folder = Config::dir();
    if (!QDir().mkpath(folder))
        return line(QStringLiteral("config folder writable"), false,
                    QStringLiteral("cannot create %1").arg(folder));
    QTemporaryFile file(QDir(folder).filePath(QStringLiteral(".probe-XXXXXX")));
    const bool ok = file.open() && file.write("probe") == 5 && file.flush();
    return line(QStringLiteral("config folder writable"), ok, folder);
}

QString processStart()
{
    QProcess process;
    process.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("exit 0")});
    const bool ok = process.waitForFinished(5000) && process.exitStatus() == QProcess::NormalExit &&
                    process.exitCode() == 0;
    return line(QStringLiteral("process start"), ok, ok ? QString() : process.errorString());
}

QString desktopChecks(Platform& platform, const Session& session)
{
    // Under XWayland the X server's facilities work, but native Wayland windows never see them.
    const QString reach =
        session.type == Session::Type::Wayland ? QStringLiteral("X11 windows only") : QString();
    QString report;
    const bool xtest = platform.input().isTrusted();
    report += line(QStringLiteral("input synthesis (XTest)"), xtest, xtest ? reach : QString());
    report += line(QStringLiteral("event posting"), xtest, xtest ? reach : QStringLiteral("needs XTest"));

    // An unlikely combination, let go at once: the probe must not take a key the user relies on.
    const auto combo = KeyCombo::parse(u"ctrl+alt+shift+super+f12");
    const bool grabbed = combo && platform.hotkey().grab(*combo);
    platform.hotkey().release();
    report += line(QStringLiteral("hot key grab"), grabbed, grabbed ? reach : QString());

    const bool monitor = platform.clickMonitor().isAvailable();
    report += line(QStringLiteral("global mouse monitor (XInput2)"), monitor, monitor ? reach : QString());

    const QString marker =
        QStringLiteral("vantril-probe-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
    const std::optional<QString> before = platform.clipboard().text();
    platform.clipboard().setText(marker);
    const bool clipboard = platform.clipboard().text() == marker;
    platform.clipboard().clear();
    if (before)
        platform.clipboard().setText(*before);
    report += line(QStringLiteral("clipboard"), clipboard);

    report +=
        QStringLiteral("launch at login: %1\n")
            .arg(platform.autostart().isEnabled() ? QStringLiteral("enabled") : QStringLiteral("disabled"));
    return report;
}

QString facilities(Platform* platform, const Session& session)
{
    QList<SessionReport::Entry> entries;
    if (platform) {
        entries = SessionReport::gather(*platform);
    } else {
        const FacilityReach none{FacilityReach::Scope::Unavailable, QStringLiteral("no X display")};
        for (const auto facility :
             {SessionReport::Facility::Hotkey, SessionReport::Facility::KeyChips,
              SessionReport::Facility::MouseMonitor, SessionReport::Facility::FrontApplication})
            entries.append({facility, none});
    }
    QString report = SessionReport::sessionLine(session, platform != nullptr) + QLatin1Char('\n');
    for (const SessionReport::Entry& entry : entries)
        report += SessionReport::probeLine(entry, session) + QLatin1Char('\n');
    return report;
}

} // namespace

namespace Probe {

QString run(Platform* platform, const Session& session)
{
    QString report = QStringLiteral("Vantril %1 probe\n").arg(QStringLiteral(VANTRIL_VERSION));
    report += configFolder();
    report += processStart();
    if (platform) {
        report += desktopChecks(*platform, session);
    } else {
        for (const char* check : {"input synthesis (XTest)", "event posting", "hot key grab",
                                  "global mouse monitor (XInput2)", "clipboard"})
            report += line(QString::fromUtf8(check), false, QStringLiteral("no X display"));
        report += QStringLiteral("launch at login: unknown\n");
    }
    return report + facilities(platform, session);
}

void publish(const QString& report)
{
    const QByteArray bytes = report.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stdout);
    std::fflush(stdout);
    QSaveFile file(QDir(QDir::tempPath()).filePath(QStringLiteral("probe.txt")));
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size())
        file.commit();
}

} // namespace Probe
