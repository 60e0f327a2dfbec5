#include "DesktopEntryFile.h"

#include <QFile>
#include <QList>
#include <QTextStream>

std::optional<QString> desktopEntryValue(const QString& path, const QString& key)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return std::nullopt;
    QTextStream in(&file);
    bool mainGroup = false;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.startsWith(QLatin1Char('[')))
            mainGroup = line == QLatin1String("[Desktop Entry]");
        else if (mainGroup && line.section(QLatin1Char('='), 0, 0).trimmed() == key)
            return line.section(QLatin1Char('='), 1).trimmed();
    }
    return std::nullopt;
}

std::optional<QByteArray> autostartEntryFrom(const QByteArray& entry)
{
    // Whether it starts is the autostart entry's own business, whatever the installed one says.
    const auto decidesStart = [](const QByteArray& line) {
        const QByteArray key = line.left(line.indexOf('=')).trimmed();
        return key == "Hidden" || key == "X-GNOME-Autostart-enabled";
    };
    QByteArray result;
    bool mainGroup = false;
    bool found = false;
    for (const QByteArray& line : entry.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.startsWith('[')) {
            mainGroup = trimmed == "[Desktop Entry]" && !found;
            found = found || mainGroup;
            if (mainGroup)
                result += "[Desktop Entry]\n";
        } else if (mainGroup && !trimmed.isEmpty() && !decidesStart(trimmed)) {
            result += trimmed + '\n';
        }
    }
    if (!found)
        return std::nullopt;
    return result + "X-GNOME-Autostart-enabled=true\n";
}
