#pragma once

#include "config/BarConfig.h"

#include <QList>
#include <QString>
#include <optional>
#include <vector>

namespace FolderListing {

/// Most entries a listing shows; a row counts the others.
constexpr qsizetype shownEntries = 24;

/// The rows of the pop-up that browses `path`: a row opening the folder, a row going up unless the folder
/// is `root` (or `path` itself when there is no root), then the first 24 entries, folders first, in
/// natural order, and a row counting any others. "~" is expanded in both paths; an unreadable folder
/// lists as "(empty)". With `maxRows`, fewer entries are shown so that all rows, the counting one
/// included, number no more than that (the two leading rows are always there).
QList<ButtonSpec> items(const QString& path, const std::optional<QString>& root,
                        std::optional<qsizetype> maxRows = std::nullopt);

/// One entry of a folder: its name and whether it is a folder or a link to one.
struct Entry
{
    QString name;
    bool isFolder = false;
};

/// The rows for the entries of `folder` (a clean absolute path), whose listing started at `top`.
QList<ButtonSpec> rows(const QString& folder, const QString& top, std::vector<Entry> entries,
                       std::optional<qsizetype> maxRows = std::nullopt);

} // namespace FolderListing
