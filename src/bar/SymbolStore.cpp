#include "SymbolStore.h"

#include <QDataStream>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIcon>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

constexpr quint32 magic = 0x56534d31; // "VSM1"
// Symbols are drawn at a few dozen pixels, a few hundred of them at most; anything far larger is not
// this program's file.
constexpr int largestSide = 1024;
constexpr qint64 largestFile = 8 * 1024 * 1024;

QByteArray themeFilesStamp()
{
    QByteArray stamp;
    const QStringList themes = {QIcon::themeName(), QIcon::fallbackThemeName(), QStringLiteral("hicolor")};
    for (const QString& folder : QIcon::themeSearchPaths()) {
        stamp += folder.toUtf8() + '\n';
        for (const QString& theme : themes) {
            for (const char* file : {"index.theme", "icon-theme.cache"}) {
                const QFileInfo info(folder + QLatin1Char('/') + theme + QLatin1Char('/') +
                                     QLatin1String(file));
                if (info.exists())
                    stamp += info.filePath().toUtf8() + ' ' +
                             QByteArray::number(info.lastModified().toMSecsSinceEpoch()) + ' ' +
                             QByteArray::number(info.size()) + '\n';
            }
        }
    }
    return stamp;
}

} // namespace

namespace SymbolStore {

QString path()
{
    // Without a home folder there is no cache folder either, and nothing is kept.
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    return cache.isEmpty() ? QString() : cache + QStringLiteral("/vantril/symbols");
}

QByteArray read()
{
    // Only a plain file: opening a FIFO put there would wait for a writer, and the bar for it.
    QFile file(path());
    if (file.fileName().isEmpty() || !QFileInfo(file).isFile() || file.size() > largestFile ||
        !file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QByteArray stamp()
{
    return QByteArrayLiteral(VANTRIL_VERSION "\n") + QIcon::themeName().toUtf8() + '\n' +
           QIcon::fallbackThemeName().toUtf8() + '\n' + themeFilesStamp();
}

QByteArray encode(const QHash<QString, QImage>& pictures, const QByteArray& stamp)
{
    QByteArray file;
    QDataStream out(&file, QIODevice::WriteOnly);
    out << magic << stamp << quint32(pictures.size());
    for (auto it = pictures.cbegin(); it != pictures.cend(); ++it) {
        const QImage image = it.value().convertToFormat(QImage::Format_ARGB32_Premultiplied);
        out << it.key() << qint32(image.width()) << qint32(image.height()) << image.devicePixelRatio();
        out.writeRawData(reinterpret_cast<const char*>(image.constBits()), int(image.sizeInBytes()));
    }
    return file;
}

QHash<QString, QImage> decode(const QByteArray& file, const QByteArray& stamp)
{
    QDataStream in(file);
    quint32 fileMagic = 0;
    QByteArray fileStamp;
    quint32 count = 0;
    in >> fileMagic >> fileStamp >> count;
    if (in.status() != QDataStream::Ok || fileMagic != magic || fileStamp != stamp)
        return {};
    QHash<QString, QImage> pictures;
    for (quint32 i = 0; i < count; ++i) {
        QString key;
        qint32 width = 0;
        qint32 height = 0;
        qreal ratio = 1;
        in >> key >> width >> height >> ratio;
        if (in.status() != QDataStream::Ok || width < 0 || height < 0 || width > largestSide ||
            height > largestSide || !(ratio > 0 && ratio <= 16))
            return {};
        QImage image;
        if (width > 0 && height > 0) {
            image = QImage(width, height, QImage::Format_ARGB32_Premultiplied);
            const qsizetype size = image.sizeInBytes();
            if (in.readRawData(reinterpret_cast<char*>(image.bits()), int(size)) != size)
                return {};
            image.setDevicePixelRatio(ratio);
        }
        pictures.insert(key, image);
    }
    return in.status() == QDataStream::Ok && in.atEnd() ? pictures : QHash<QString, QImage>();
}

std::future<void> write(QByteArray contents)
{
    return std::async(std::launch::async, [contents = std::move(contents)] {
        const QString file = path();
        if (file.isEmpty() || !QDir().mkpath(QFileInfo(file).path()))
            return;
        QSaveFile out(file);
        if (out.open(QIODevice::WriteOnly) && out.write(contents) == contents.size())
            out.commit();
    });
}

} // namespace SymbolStore
