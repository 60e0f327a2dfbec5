#pragma once

#include "config/BarConfig.h"

#include <QList>
#include <QString>
#include <optional>

namespace FolderListing {

/// The rows of the pop-up that browses `path`: a row opening the folder, a row going up unless the folder
/// is `root` (or `path` itself when there is no root), then the first 24 entries, folders first, in
/// natural order, and a row counting any others. "~" is expanded in both paths; an unreadable folder
/// lists as "(empty)".
QList<ButtonSpec> items(const QString& path, const std::optional<QString>& root);

} // namespace FolderListing
