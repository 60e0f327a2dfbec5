#pragma once

#include <QHash>
#include <QImage>
#include <QString>

/// File icons for chips that show a file instead of a symbol, 16 × 16, kept for the whole run.
namespace IconCache {

/// The icon of the file's type from the icon theme; a generic icon for a missing file. Paths are
/// keyed after "~" expansion, so "~/x" and the full path share one entry.
QImage image(const QString& path);

} // namespace IconCache
