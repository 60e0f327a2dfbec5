#pragma once

#include <QByteArray>
#include <QHash>
#include <QImage>
#include <QString>
#include <future>

/// The symbols the bar drew, kept between runs in the user's cache folder: with them the bar shows without
/// loading the icon themes' indexes, the SVG icon engine and the SVG files, most of what stands between
/// its start and its first paint. Pictures are only taken back when they were drawn from the same themes:
/// the stamp names the program's version, the theme, its fallback and the search paths, with the times of
/// the index and icon cache of the theme, the fallback and hicolor in each path, which a package that
/// adds, removes or changes an icon updates. A theme that a chosen theme inherits from is not part of
/// the stamp; removing the file (or any change above) draws everything afresh.
namespace SymbolStore {

/// "$XDG_CACHE_HOME/vantril/symbols"; empty when the user has no cache folder.
QString path();
/// The file as it is, empty when there is none; callable from any thread, before the application exists.
QByteArray read();
/// The stamp of the icon themes as they are now; needs the application object and the chosen themes.
QByteArray stamp();

/// The pictures of `file` when it was written with `stamp`; none when it was not, or is not such a file.
QHash<QString, QImage> decode(const QByteArray& file, const QByteArray& stamp);
QByteArray encode(const QHash<QString, QImage>& pictures, const QByteArray& stamp);

/// Replaces the file with `contents` on a thread of its own, done when the future is ready; a cache that
/// cannot be written only makes the next start slower, so a failure is not reported.
std::future<void> write(QByteArray contents);

} // namespace SymbolStore
