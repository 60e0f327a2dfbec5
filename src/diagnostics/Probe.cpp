#include "Probe.h"

#include "actions/KeyCombo.h"
#include "config/Config.h"
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

QString desktopChecks(Platform& platform)
{
    QString report;
    const bool xtest = platform.input().isTrusted();
    report += line(QStringLiteral("input synthesis (XTest)"), xtest);
    report += line(QStringLiteral("event posting"), xtest, xtest ? QString() : QStringLiteral("needs XTest"));

    // An unlikely combination, let go at once: the probe must not take a key the user relies on.
    const auto combo = KeyCombo::parse(u"ctrl+alt+shift+super+f12");
    const bool grabbed = combo && platform.hotkey().grab(*combo);
    platform.hotkey().release();
    report += line(QStringLiteral("hot key grab"), grabbed);

    report += line(QStringLiteral("global mouse monitor (XInput2)"), platform.clickMonitor().isAvailable());

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

} // namespace

namespace Probe {

QString run(Platform* platform)
{
    QString report = QStringLiteral("Vantril %1 probe\n").arg(QStringLiteral(VANTRIL_VERSION));
    report += configFolder();
    report += processStart();
    if (platform) {
        report += desktopChecks(*platform);
    } else {
        for (const char* check : {"input synthesis (XTest)", "event posting", "hot key grab",
                                  "global mouse monitor (XInput2)", "clipboard"})
            report += line(QString::fromUtf8(check), false, QStringLiteral("no X display"));
        report += QStringLiteral("launch at login: unknown\n");
    }
    return report;
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
