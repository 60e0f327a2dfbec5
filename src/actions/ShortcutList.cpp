#include "ShortcutList.h"

#include "actions/Actions.h"

#include <QCollator>
#include <QDir>
#include <QFileInfo>
#include <algorithm>

namespace ShortcutList {

const QStringList& names()
{
    static const QStringList list = namesIn(Actions::shortcutsFolder());
    return list;
}

QStringList namesIn(const QString& folder)
{
    // Hidden files are left out, as a file manager would: they are helpers, not commands to offer.
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Executable, QDir::Unsorted);
    QStringList list;
    for (const QFileInfo& file : files)
        list.append(file.fileName());
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(list.begin(), list.end(),
                     [&](const QString& a, const QString& b) { return collator.compare(a, b) < 0; });
    return list;
}

} // namespace ShortcutList
