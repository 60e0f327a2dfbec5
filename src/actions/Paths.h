#pragma once

#include <QString>
#include <optional>

namespace Paths {

/// "~" and "~/x" become the home folder, "~name/x" that user's home; anything else is left as it is.
QString expandTilde(const QString& path);
/// "~" for the home folder at the start of a path: shorter, and how the configuration writes paths.
QString abbreviateHome(const QString& path);
/// Makes "untitled folder" in `parent`, or "untitled folder 2", "untitled folder 3", … when the name is
/// taken by anything at all; never replaces what is there. The new folder's path, or nothing.
std::optional<QString> makeUntitledFolder(const QString& parent);

} // namespace Paths
