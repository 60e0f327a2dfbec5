#include "DesktopEntryFile.h"

#include <QFile>
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
