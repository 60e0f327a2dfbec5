#include "SymbolView.h"

#include "bar/SymbolNames.h"

#include <QFile>
#include <QHash>
#include <QIcon>
#include <QPainter>
#include <QStandardPaths>

namespace {

/// The program's own picture of a symbol, for names no icon theme has.
QString ownPicture(const QString& name)
{
    return QStringLiteral(":/symbols/") + name + QStringLiteral(".svg");
}

QHash<QString, QPixmap>& pictures()
{
    static QHash<QString, QPixmap> drawn;
    return drawn;
}

bool& drewFresh()
{
    static bool fresh = false;
    return fresh;
}

} // namespace

namespace SymbolView {

void useIconThemes()
{
    // Platforms without a desktop theme (offscreen, minimal) look in no XDG data folder at all.
    QStringList paths = QIcon::themeSearchPaths();
    for (const QString& folder : QStandardPaths::locateAll(
             QStandardPaths::GenericDataLocation, QStringLiteral("icons"), QStandardPaths::LocateDirectory)) {
        if (!paths.contains(folder))
            paths.append(folder);
    }
    QIcon::setThemeSearchPaths(paths);
    // Outside GNOME and KDE Qt knows no icon theme; Adwaita has nearly every symbol the bar draws.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

QString source(const QString& name)
{
    for (const QString& themeName : SymbolNames::iconNames(name)) {
        if (QIcon::hasThemeIcon(themeName))
            return themeName;
    }
    if (!name.isEmpty() && !name.contains(QLatin1Char('/')) && QFile::exists(ownPicture(name)))
        return ownPicture(name);
    return {};
}

QPixmap icon(const QString& name, const QColor& color, int size, qreal devicePixelRatio)
{
    // Rebuilding the bar asks for the same few icons again and again; finding them in the theme is not free.
    QHash<QString, QPixmap>& cache = pictures();
    const QString key = name + QLatin1Char('|') + color.name(QColor::HexArgb) + QLatin1Char('|') +
                        QString::number(size * devicePixelRatio);
    if (const auto it = cache.constFind(key); it != cache.constEnd())
        return it.value();

    QPixmap result;
    const QString from = source(name);
    if (!from.isEmpty()) {
        const QIcon picture = from.startsWith(QLatin1Char(':')) ? QIcon(from) : QIcon::fromTheme(from);
        QPixmap pixmap = picture.pixmap(QSize(size, size), devicePixelRatio);
        if (!pixmap.isNull()) {
            // Symbolic icons are drawn in one colour; the chip wants its text colour, whatever the theme's.
            QPainter painter(&pixmap);
            painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
            painter.fillRect(QRect(QPoint(0, 0), pixmap.size()), color);
            painter.end();
            result = pixmap;
        }
    }
    cache.insert(key, result);
    drewFresh() = true;
    return result;
}

Drawn drawn()
{
    Drawn result;
    result.fresh = drewFresh();
    for (auto it = pictures().cbegin(); it != pictures().cend(); ++it)
        result.pictures.insert(it.key(), it.value().toImage());
    return result;
}

void remember(const QHash<QString, QImage>& earlier)
{
    for (auto it = earlier.cbegin(); it != earlier.cend(); ++it)
        pictures().insert(it.key(), QPixmap::fromImage(it.value()));
    drewFresh() = false;
}

} // namespace SymbolView
