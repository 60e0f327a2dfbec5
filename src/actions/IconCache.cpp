#include "IconCache.h"

#include "actions/Paths.h"

#include <QFileInfo>
#include <QIcon>
#include <QMimeDatabase>
#include <QPainter>

namespace {

constexpr int iconSize = 16;

QImage themeImage(const QStringList& names)
{
    for (const QString& name : names) {
        const QIcon icon = QIcon::fromTheme(name);
        if (!icon.isNull())
            return icon.pixmap(iconSize, iconSize)
                .toImage()
                .scaled(iconSize, iconSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    }
    // No icon theme at all: a plain sheet of paper still says "a file".
    QImage sheet(iconSize, iconSize, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(Qt::transparent);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(200, 200, 200), 1));
    painter.setBrush(QColor(245, 245, 245));
    painter.drawRoundedRect(QRectF(3.5, 1.5, 9, 13), 1.5, 1.5);
    return sheet;
}

QImage iconFor(const QString& path)
{
    const QStringList generic = {QStringLiteral("text-x-generic"), QStringLiteral("unknown")};
    const QFileInfo info(path);
    if (!info.exists())
        return themeImage(generic);
    static const QMimeDatabase database;
    const QMimeType type = database.mimeTypeForFile(info);
    return themeImage(QStringList{type.iconName(), type.genericIconName()} + generic);
}

} // namespace

namespace IconCache {

QImage image(const QString& path)
{
    static QHash<QString, QImage> cache;
    const QString key = Paths::expandTilde(path);
    auto it = cache.constFind(key);
    if (it == cache.constEnd())
        it = cache.insert(key, iconFor(key));
    return it.value();
}

} // namespace IconCache
